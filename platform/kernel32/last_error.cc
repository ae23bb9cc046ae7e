// last_error.cc
#include <windows.h>

namespace {
thread_local DWORD last_error = ERROR_SUCCESS;
}

// Not calls that a suspension takes hold of: they are asked between a call and the look at its result.
DWORD WINAPI GetLastError() { return last_error; }
void WINAPI SetLastError(DWORD error) { last_error = error; }
