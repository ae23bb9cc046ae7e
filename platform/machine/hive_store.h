// hive_store.h
//
// The hives of the machine in use and where they hang in the registry. The machine's own are opened
// when they are first asked for: SOFTWARE, SYSTEM, SAM, SECURITY below HKEY_LOCAL_MACHINE; .DEFAULT and
// the hives of who sits at the console and who runs the program below HKEY_USERS. Others come and go by
// RegLoadKeyW and RegUnLoadKeyW.
//
// All of it, and every use of a Hive that it gives, happens under RegistryLock().
#pragma once
#include <windows.h>

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "machine/hive.h"

namespace machine {

std::recursive_mutex& RegistryLock();

enum class HiveRoot { kLocalMachine, kUsers };

// The hive of HKLM\<name> or HKU\<name>, without regard to case. ERROR_FILE_NOT_FOUND if none hangs
// there; the error of its file where one of the machine's own can't be read.
DWORD FindHive(HiveRoot root, std::string_view name, std::shared_ptr<Hive>& hive);

// Names of what hangs below a root, in order.
std::vector<std::string> HiveNames(HiveRoot root);

// Hangs the file of a Windows path below a root, and makes an empty hive where there is no file yet, as
// Windows does. A file that isn't on a drive of ours is never made, and its hive refuses changes.
DWORD LoadHive(HiveRoot root, const std::string& name, const wchar_t* path);

// Writes and drops a hive that LoadHive brought. ERROR_ACCESS_DENIED while a key of it is open and for
// the machine's own.
DWORD UnloadHive(HiveRoot root, std::string_view name);

// Writes one changed hive. Every write of a hive passes here.
DWORD FlushHive(Hive& hive);

// Whether a file, by device and inode, is the file of a hive in use, which Windows keeps to itself.
bool IsHiveInUse(uint64_t device, uint64_t number);

// The Linux path of a hive's file, and whether it may be changed. ERROR_SUCCESS also where the file
// itself is missing.
DWORD LocateHiveFile(const wchar_t* path, std::string& file, bool& isWritable);

}  // namespace machine
