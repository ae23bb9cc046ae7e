// shell.cc
#include <windows.h>
#include <shellapi.h>
#include <shlobj.h>

#include "machine/call.h"

using namespace machine;

// No shell runs that would listen.
void WINAPI SHChangeNotify(LONG, UINT, const void*, const void*) { EnterCall(); }

// There are no programs that a file of the machine could be opened with.
BOOL WINAPI ShellExecuteExW(SHELLEXECUTEINFOW* info) {
  EnterCall();
  info->hInstApp = reinterpret_cast<HINSTANCE>(static_cast<INT_PTR>(SE_ERR_NOASSOC));
  info->hProcess = nullptr;
  return Fail(ERROR_NO_ASSOCIATION);
}
