// Where the program of a process lies.
#include <windows.h>

#include <psapi.h>

#include "foundation/kernel_function.h"
#include "foundation/processes.h"
#include "foundation/unique_handle.h"

namespace {

using QueryImageName = BOOL(WINAPI*)(HANDLE, DWORD, LPWSTR, PDWORD);

constexpr DWORD kFullAccess = PROCESS_QUERY_INFORMATION | PROCESS_VM_READ;

bool StartsWith(const WString& path, const wchar_t* start) {
  return path.Find(start, false, 1, 1, UnitCount(start)) == 1;
}

bool QueryPath(uint32_t processId, wchar_t* output) {
  const auto query = KernelFunction<QueryImageName>("QueryFullProcessImageNameW");
  UniqueHandle process;
  if (query != nullptr) {
    process.Reset(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId));
    DWORD units = kImagePathCapacity;
    if (process) return query(process.Get(), 0, output, &units) && units < kImagePathCapacity;
  }
  process.Reset(OpenProcess(kFullAccess, FALSE, processId));
  if (!process) return false;
  const DWORD units = K32GetModuleFileNameExW(process.Get(), nullptr, output, kImagePathCapacity);
  return units > 0 && units < kImagePathCapacity;
}

}  // namespace

void FromKernelPath(WString& path) {
  if (StartsWith(path, L"\\SystemRoot\\")) {
    wchar_t windows[MAX_PATH];
    const UINT units = GetSystemWindowsDirectoryW(windows, MAX_PATH);
    if (units == 0 || units >= MAX_PATH) return;
    path.RemoveLeft(UnitCount(L"\\SystemRoot"));
    path.Prepend(windows);
  } else if (StartsWith(path, L"\\??\\")) {
    path.RemoveLeft(UnitCount(L"\\??\\"));
  }
}

bool GetProcessImagePath(uint32_t processId, wchar_t* output) {
  output[0] = 0;
  if (!QueryPath(processId, output)) {
    output[0] = 0;
    return false;
  }
  WString path(output);
  FromKernelPath(path);
  const int32_t units = path.Length();
  if (units >= kImagePathCapacity) {
    output[0] = 0;
    return false;
  }
  CopyMemory(output, path.CStr(), (static_cast<size_t>(units) + 1) * sizeof(wchar_t));
  return true;
}
