// Ending a process, and the windows by which it is asked first.
#include <windows.h>

#include <tlhelp32.h>

#include "foundation/processes.h"
#include "foundation/unique_handle.h"

namespace {

constexpr uint32_t kSystemProcess = 4;
constexpr int kTries = 30;
constexpr DWORD kTryInterval = 20;  // milliseconds

BOOL CALLBACK PostDestroy(HWND window, LPARAM processId) {
  DWORD owner = 0;
  GetWindowThreadProcessId(window, &owner);
  if (owner == static_cast<DWORD>(processId)) PostMessageW(window, WM_DESTROY, 0, 0);
  return TRUE;
}

struct WindowSearch {
  uint32_t processId;
  HWND found;
};

BOOL CALLBACK StopAtVisible(HWND window, LPARAM parameter) {
  const auto search = reinterpret_cast<WindowSearch*>(parameter);
  DWORD owner = 0;
  GetWindowThreadProcessId(window, &owner);
  if (owner != search->processId || !IsWindowVisible(window)) return TRUE;
  search->found = window;
  return FALSE;
}

void TryToTerminate(uint32_t processId) {
  for (int attempt = 0; attempt < kTries && IsProcessAlive(processId); ++attempt) {
    const UniqueHandle process(OpenProcess(PROCESS_TERMINATE, FALSE, processId));
    if (process) TerminateProcess(process.Get(), 0);
    SleepEx(kTryInterval, FALSE);
  }
}

void TerminateThreads(uint32_t processId) {
  // UniqueFile: no snapshot is INVALID_HANDLE_VALUE, not null.
  const UniqueFile snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
  if (!snapshot) return;
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof(entry);
  for (BOOL more = Thread32First(snapshot.Get(), &entry); more; more = Thread32Next(snapshot.Get(), &entry)) {
    if (entry.th32OwnerProcessID != processId) continue;
    const UniqueHandle thread(OpenThread(THREAD_TERMINATE, FALSE, entry.th32ThreadID));
    if (thread) TerminateThread(thread.Get(), 0);
  }
}

}  // namespace

bool IsProcessAlive(uint32_t processId) {
  if (processId <= kSystemProcess) return processId == kSystemProcess;
  const UniqueHandle process(OpenProcess(SYNCHRONIZE, FALSE, processId));
  return process && WaitForSingleObject(process.Get(), 0) == WAIT_TIMEOUT;
}

void TerminateProcessHard(uint32_t processId) {
  EnumWindows(PostDestroy, static_cast<LPARAM>(processId));
  TryToTerminate(processId);
  if (!IsProcessAlive(processId)) return;
  TerminateThreads(processId);
  TryToTerminate(processId);
}

HWND FindVisibleWindow(uint32_t processId) {
  WindowSearch search = {processId, nullptr};
  EnumWindows(StopAtVisible, reinterpret_cast<LPARAM>(&search));
  return search.found;
}
