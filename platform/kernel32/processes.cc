// processes.cc
//
// The processes of the machine: listed, opened, asked, ended. None can be started: its programs are
// those of another system.
#include <windows.h>

#include <psapi.h>
#include <unistd.h>

#include <cstring>

#include "machine/call.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/process_table.h"

using namespace machine;

namespace {

// Rights that an administrator's token gives without the debug privilege.
constexpr DWORD kHarmless = PROCESS_QUERY_LIMITED_INFORMATION | SYNCHRONIZE;

bool MayOpen(MachineProcess& process, DWORD access) {
  const auto token = ThreadToken();
  if (process.isProtected && (access & PROCESS_TERMINATE)) return false;
  if (token->IsEnabled(kDebugPrivilege)) return true;
  if (process.isProtected) return token->IsAdministrator() && (access & ~kHarmless) == 0;
  const auto owner = process.token ? process.token : MakeToken(process.account, process.session);
  if (owner->user == token->user) return true;
  return token->IsAdministrator() && (access & ~kHarmless) == 0;
}

// Copies a path with its terminator. False with ERROR_INSUFFICIENT_BUFFER.
bool CopyPath(const std::string& path, wchar_t* buffer, DWORD room, DWORD& length) {
  const std::u16string text = ToUtf16(path);
  if (room <= text.size()) return Fail(ERROR_INSUFFICIENT_BUFFER);
  memcpy(buffer, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
  length = static_cast<DWORD>(text.size());
  return true;
}

// The program that a command line names: what stands in quotes, or what stands before the first blank.
std::u16string ProgramOf(const wchar_t* commandLine) {
  const std::u16string line = reinterpret_cast<const char16_t*>(commandLine);
  if (line.starts_with(u'"')) return line.substr(1, line.find(u'"', 1) - 1);
  return line.substr(0, line.find_first_of(u" \t"));
}

bool IsFile(const std::u16string& path) {
  const DWORD attributes = GetFileAttributesW(AsWide(path));
  return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

}  // namespace

BOOL WINAPI K32EnumProcesses(DWORD* ids, DWORD size, DWORD* used) {
  EnterCall();
  DWORD count = 0;
  for (const auto& process : Processes()) {
    if ((count + 1) * sizeof(DWORD) > size) break;
    ids[count++] = process->id;
  }
  *used = count * static_cast<DWORD>(sizeof(DWORD));
  return TRUE;
}

BOOL WINAPI ProcessIdToSessionId(DWORD id, DWORD* session) {
  EnterCall();
  const auto process = FindProcess(id);
  if (!process || !session) return Fail(ERROR_INVALID_PARAMETER);
  *session = process->session;
  return TRUE;
}

HANDLE WINAPI OpenProcess(DWORD access, BOOL, DWORD id) {
  EnterCall();
  const auto process = FindProcess(id);
  if (process && MayOpen(*process, access)) return AddHandle(process);
  SetLastError(process ? ERROR_ACCESS_DENIED : ERROR_INVALID_PARAMETER);
  return nullptr;
}

DWORD WINAPI GetProcessId(HANDLE handle) {
  EnterCall();
  const auto process = ProcessOf(handle);
  return process ? process->id : 0;
}

BOOL WINAPI GetExitCodeProcess(HANDLE handle, DWORD* code) {
  EnterCall();
  const auto process = ProcessOf(handle);
  if (!process) return FALSE;
  *code = process->exitCode;
  return TRUE;
}

BOOL WINAPI TerminateProcess(HANDLE handle, UINT code) {
  EnterCall();
  const auto process = ProcessOf(handle);
  if (!process) return FALSE;
  if (process->isProtected || process->exitCode != STILL_ACTIVE) return Fail(ERROR_ACCESS_DENIED);
  if (process->id == GetCurrentProcessId()) {
    LeaveMachine();  // the registry belongs to the system and outlives a process
    _exit(static_cast<int>(code));
  }
  EndProcess(*process, code);
  return TRUE;
}

BOOL WINAPI QueryFullProcessImageNameW(HANDLE handle, DWORD flags, wchar_t* buffer, DWORD* size) {
  EnterCall();
  if (flags != 0) Unsupported("QueryFullProcessImageNameW", "kernel paths");
  const auto process = ProcessOf(handle);
  return process && CopyPath(process->image, buffer, *size, *size);
}

DWORD WINAPI K32GetModuleFileNameExW(HANDLE handle, HMODULE module, wchar_t* buffer, DWORD size) {
  EnterCall();
  if (module) Unsupported("K32GetModuleFileNameExW", "another module than the program");
  const auto process = ProcessOf(handle);
  DWORD length = 0;
  return process && CopyPath(process->image, buffer, size, length) ? length : 0;
}

BOOL WINAPI CreateProcessW(const wchar_t* application, wchar_t* commandLine, SECURITY_ATTRIBUTES*,
                           SECURITY_ATTRIBUTES*, BOOL, DWORD, void*, const wchar_t*, STARTUPINFOW*,
                           PROCESS_INFORMATION*) {
  EnterCall();
  if (!application && !commandLine) return Fail(ERROR_INVALID_PARAMETER);
  const std::u16string program =
      application ? reinterpret_cast<const char16_t*>(application) : ProgramOf(commandLine);
  const bool exists = IsFile(program) || IsFile(program + u".exe");
  return Fail(exists ? ERROR_BAD_EXE_FORMAT : ERROR_FILE_NOT_FOUND);
}
