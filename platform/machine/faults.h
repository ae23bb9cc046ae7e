// faults.h
//
// Faults on demand: the one means by which tests make calls fail, disks fill up, and the program end
// in the middle of its work. Described in docs/machine-folder.md.
#pragma once
#include <windows.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace machine {

struct FaultPlan {
  std::string call;          // name of the call that fails, such as "WriteFile"; empty: any call
  std::string path;          // pattern with * on the Windows path, without case; empty: any path
  uint64_t nth = 0;          // the n-th matching call from now on fails, from 1; 0: none
  bool andAllLater = false;  // every later matching call fails, too
  DWORD error = 0;           // the last error of a failing call
  int64_t bytesLeft = -1;    // what the disks still take before ERROR_DISK_FULL; -1: no limit
  uint64_t endAtChange = 0;  // the process ends by _exit(99) before the n-th change of a disk; 0: never
  // Called before each matching call, such as to swap a folder under way. Not read from a file.
  std::function<void(std::string_view call, std::string_view path)> before;
};

void SetFaults(const FaultPlan& plan);  // starts counting anew
void ClearFaults();
uint64_t FaultCalls();    // matching calls since SetFaults
uint64_t FaultChanges();  // changes of a disk since SetFaults

// Whether a plan is set. Callers ask this first, so that no path is turned into UTF-8 without need.
extern std::atomic<bool> faultsAreSet;
inline bool FaultsAreSet() { return faultsAreSet.load(std::memory_order_relaxed); }

// For the calls themselves. `path` is the Windows path as UTF-8. True if the call is to fail, with the
// last error set. Costs one comparison while no plan is set.
bool FaultHits(const char* call, std::string_view path);

// As FaultHits, for a call that is about to change a disk.
bool FaultHitsChange(const char* call, std::string_view path);

// A change of a disk within a call that was already asked about, such as each block of a file copy.
void CountChange();

// How many of `bytes` the disk still takes under the plan; counts them as taken.
uint64_t TakeDiskSpace(uint64_t bytes);

uint64_t DiskSpaceLeft();  // UINT64_MAX without a limit

// Reads the plan from the file faults.ini of a machine folder and sets it. True also if there is no such
// file; false with a sentence in `error` if it can't be read. The form of the file:
//   [Faults]
//   Call=WriteFile        name of the call; missing: any call
//   Path=C:\Users\*        pattern on the Windows path, without case; missing: any path
//   Nth=3                 the third matching call fails
//   AndAllLater=1         and every later one
//   Error=23              the error that it gives (decimal); missing: 1117 (I/O device error)
//   BytesLeft=1000000     what the disks still take
//   EndAtChange=7         the process ends (exit code 99) before the seventh change of a disk
bool LoadFaults(const std::string& file, std::string* error);

}  // namespace machine
