// process_snapshot.cc
//
// A list of all processes and their threads, as they are at one moment.
#include <windows.h>

#include <tlhelp32.h>

#include <algorithm>
#include <cstring>

#include "machine/call.h"
#include "machine/names.h"
#include "machine/process_table.h"

using namespace machine;

namespace {

struct Snapshot : Object {
  std::vector<std::shared_ptr<MachineProcess>> processes;
  bool hasProcesses = false, hasThreads = false;
  size_t nextProcess = 0, nextThread = 0;
};

BOOL NextProcess(HANDLE handle, PROCESSENTRY32W* entry, bool isFirst) {
  EnterCall();
  const auto snapshot = HandleTo<Snapshot>(handle);
  if (!snapshot) return FALSE;
  if (!entry || entry->dwSize < sizeof(PROCESSENTRY32W)) return Fail(ERROR_INSUFFICIENT_BUFFER);
  if (isFirst) snapshot->nextProcess = 0;
  if (!snapshot->hasProcesses || snapshot->nextProcess >= snapshot->processes.size()) {
    return Fail(ERROR_NO_MORE_FILES);
  }
  const MachineProcess& process = *snapshot->processes[snapshot->nextProcess++];
  *entry = {};
  entry->dwSize = sizeof(PROCESSENTRY32W);
  entry->th32ProcessID = process.id;
  entry->th32ParentProcessID = process.parent;
  entry->cntThreads = 1;
  entry->pcPriClassBase = 8;
  const std::u16string name = ToUtf16(process.ImageName());
  memcpy(entry->szExeFile, name.c_str(), std::min<size_t>(name.size(), MAX_PATH - 1) * sizeof(wchar_t));
  return TRUE;
}

// One thread for each process, by a number that no thread of this process has.
BOOL NextThread(HANDLE handle, THREADENTRY32* entry, bool isFirst) {
  EnterCall();
  const auto snapshot = HandleTo<Snapshot>(handle);
  if (!snapshot) return FALSE;
  if (!entry || entry->dwSize < sizeof(THREADENTRY32)) return Fail(ERROR_INSUFFICIENT_BUFFER);
  if (isFirst) snapshot->nextThread = 0;
  if (!snapshot->hasThreads || snapshot->nextThread >= snapshot->processes.size()) {
    return Fail(ERROR_NO_MORE_FILES);
  }
  const MachineProcess& process = *snapshot->processes[snapshot->nextThread++];
  *entry = {};
  entry->dwSize = sizeof(THREADENTRY32);
  entry->th32OwnerProcessID = process.id;
  entry->th32ThreadID = process.id == GetCurrentProcessId() ? GetCurrentThreadId() : process.id + 1;
  entry->tpBasePri = 8;
  return TRUE;
}

}  // namespace

HANDLE WINAPI CreateToolhelp32Snapshot(DWORD flags, DWORD) {
  EnterCall();
  if (flags & ~static_cast<DWORD>(TH32CS_SNAPPROCESS | TH32CS_SNAPTHREAD)) {
    Unsupported("CreateToolhelp32Snapshot", "anything but processes and threads");
  }
  const auto snapshot = std::make_shared<Snapshot>();
  snapshot->processes = Processes();
  snapshot->hasProcesses = (flags & TH32CS_SNAPPROCESS) != 0;
  snapshot->hasThreads = (flags & TH32CS_SNAPTHREAD) != 0;
  return AddHandle(snapshot);
}

BOOL WINAPI Process32FirstW(HANDLE handle, PROCESSENTRY32W* entry) {
  return NextProcess(handle, entry, true);
}
BOOL WINAPI Process32NextW(HANDLE handle, PROCESSENTRY32W* entry) {
  return NextProcess(handle, entry, false);
}
BOOL WINAPI Thread32First(HANDLE handle, THREADENTRY32* entry) { return NextThread(handle, entry, true); }
BOOL WINAPI Thread32Next(HANDLE handle, THREADENTRY32* entry) { return NextThread(handle, entry, false); }
