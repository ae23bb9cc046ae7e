// Acting in another process's name.
#include <windows.h>

#include <tlhelp32.h>

#include "foundation/processes.h"
#include "foundation/unique_handle.h"

namespace {

uint32_t FindProcess(const wchar_t* fileName) {
  const UniqueFile snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  if (!snapshot) return 0;
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof(entry);
  for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more;
       more = Process32NextW(snapshot.Get(), &entry)) {
    if (WString(entry.szExeFile).EqualsNoCase(fileName)) return entry.th32ProcessID;
  }
  return 0;
}

}  // namespace

HANDLE ImpersonateProcess(const wchar_t* fileName) {
  const uint32_t processId = FindProcess(fileName);
  if (processId == 0) return nullptr;
  const UniqueHandle process(OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, processId));
  UniqueHandle token, copy;
  if (!process || !OpenProcessToken(process.Get(), TOKEN_DUPLICATE | TOKEN_QUERY, token.Receive())) {
    return nullptr;
  }
  if (!DuplicateToken(token.Get(), SecurityImpersonation, copy.Receive())) return nullptr;
  return ImpersonateLoggedOnUser(copy.Get()) ? copy.Release() : nullptr;
}
