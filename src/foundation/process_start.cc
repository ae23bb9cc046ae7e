// Starting programs.
#include <windows.h>

#include <shellapi.h>

#include "foundation/processes.h"
#include "foundation/unique_handle.h"
#include "foundation/waiting_messages.h"

namespace {

constexpr int32_t kCommandLineCapacity = 32000;
constexpr DWORD kPollInterval = 10;  // milliseconds

const wchar_t* TextOrNull(const wchar_t* text) { return text != nullptr && text[0] != 0 ? text : nullptr; }

}  // namespace

HANDLE StartProcess(const wchar_t* application, const wchar_t* commandLine, const wchar_t* workingFolder,
                    uint32_t options) {
  STARTUPINFOW startup = {};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = SW_SHOW;
  // The call may write into its command line.
  WString line;
  wchar_t* writable = nullptr;
  if (TextOrNull(commandLine) != nullptr) {
    if (UnitCount(commandLine) >= kCommandLineCapacity) {
      SetLastError(ERROR_FILENAME_EXCED_RANGE);
      return nullptr;
    }
    writable = line.Reserve(kCommandLineCapacity, commandLine);
  }

  void* saved = nullptr;
  const bool isDisabled = (options & kProcessWithoutRedirection) != 0 && DisableRedirection(saved);
  PROCESS_INFORMATION process = {};
  const BOOL started = CreateProcessW(TextOrNull(application), writable, nullptr, nullptr, FALSE, 0, nullptr,
                                      TextOrNull(workingFolder), &startup, &process);
  const DWORD error = GetLastError();
  if (isDisabled) RestoreRedirection(saved);
  SetLastError(error);
  if (!started) return nullptr;
  CloseHandle(process.hThread);
  return process.hProcess;
}

int32_t RunProcess(const wchar_t* application, const wchar_t* commandLine, const wchar_t* workingFolder,
                   uint32_t options) {
  const bool waits = (options & kProcessWait) != 0;
  const UniqueHandle process(StartProcess(application, commandLine, workingFolder, options));
  if (!process) return waits ? -1 : 0;
  if (!waits) return static_cast<int32_t>(GetProcessId(process.Get()));
  while (WaitForSingleObject(process.Get(), 0) == WAIT_TIMEOUT) {
    if (!HandleWaitingMessages()) Sleep(kPollInterval);
  }
  DWORD exitCode = 0;
  return GetExitCodeProcess(process.Get(), &exitCode) ? static_cast<int32_t>(exitCode) : -1;
}

uint32_t ShellOpen(const wchar_t* file) {
  SHELLEXECUTEINFOW info = {};
  info.cbSize = sizeof(info);
  info.fMask = SEE_MASK_NOCLOSEPROCESS;
  info.lpFile = file;
  info.nShow = SW_SHOW;
  if (!ShellExecuteExW(&info)) return 0;
  if (info.hProcess == nullptr) return 1;
  const UniqueHandle process(info.hProcess);
  return GetProcessId(process.Get());
}
