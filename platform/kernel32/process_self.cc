// process_self.cc
//
// What this process is: its ids and its settings.
#include <unistd.h>
#include <windows.h>

#include <atomic>

#include "machine/call.h"
#include "machine/handles.h"

using namespace machine;

// Windows' pseudo handle.
HANDLE WINAPI GetCurrentProcess() { return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)); }

// A multiple of 4, as on Windows, and above all ids of the machine's own processes.
DWORD WINAPI GetCurrentProcessId() { return 0x10000 + static_cast<DWORD>(getpid()) * 4; }

// No error of the layer opens a box, so the mode is kept and nothing else.
UINT WINAPI SetErrorMode(UINT mode) {
  EnterCall();
  static std::atomic<UINT> errorMode{0};
  return errorMode.exchange(mode);
}

// This process counts as a 32-bit one on a 64-bit system, and the machine's other processes as its own.
BOOL WINAPI IsWow64Process(HANDLE process, BOOL* isWow64) {
  EnterCall();
  *isWow64 = process == GetCurrentProcess();
  return *isWow64 || FindHandle(process) ? TRUE : Fail(ERROR_INVALID_HANDLE);
}

// The layer redirects no path, so there is nothing to turn off or on again.
BOOL WINAPI Wow64DisableWow64FsRedirection(void** state) {
  EnterCall();
  *state = nullptr;
  return TRUE;
}
BOOL WINAPI Wow64RevertWow64FsRedirection(void*) {
  EnterCall();
  return TRUE;
}
