// other_threads.cc
//
// The threads of the machine's other processes: one for each, which runs nothing and can only be ended.
#include <windows.h>

#include "machine/call.h"
#include "machine/process_table.h"

using namespace machine;

namespace {

struct OtherThread : Object {
  std::shared_ptr<MachineProcess> process;
};

}  // namespace

HANDLE WINAPI OpenThread(DWORD, BOOL, DWORD id) {
  EnterCall();
  // A snapshot numbers them so; those of this process are multiples of 4.
  if (id % 4 == 0) Unsupported("OpenThread", "threads of this process");
  // Who may end the process may end its thread.
  HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, id - 1);
  if (!process) return nullptr;
  auto thread = std::make_shared<OtherThread>();
  thread->process = ProcessOf(process);
  CloseHandle(process);
  return AddHandle(thread);
}

// A process ends with its last thread.
BOOL WINAPI TerminateThread(HANDLE handle, DWORD exitCode) {
  EnterCall();
  auto thread = HandleTo<OtherThread>(handle);
  if (!thread) return FALSE;
  EndProcess(*thread->process, exitCode);
  return TRUE;
}
