// call.h
//
// What every call of the platform does first, and how a part that isn't there says so.
#pragma once
#include <windows.h>

namespace machine {

// To be called at the head of each call, before any lock is taken: a thread that was suspended waits
// here until it is resumed.
void EnterCall();

// Ends the program with the name of the call and of the part of it that isn't there.
[[noreturn]] void Unsupported(const char* call, const char* what);

// Sets the last error; for `return Fail(ERROR_…)` in calls that give FALSE.
inline BOOL Fail(DWORD error) {
  SetLastError(error);
  return FALSE;
}

// The Windows error that tells what a kernel error (errno) means for files.
DWORD ErrorFromErrno(int error);

}  // namespace machine
