// environment.cc
//
// What the system tells about itself: its variables, its folders and its name. All of it comes from the
// machine folder, nothing from the environment that this process was started in.
#include <windows.h>

#include <algorithm>
#include <optional>
#include <optional>
#include <string>
#include <vector>

#include "machine/accounts_file.h"
#include "machine/call.h"
#include "machine/create_machine.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/profile_list.h"

using namespace machine;

namespace {

// The account that runs the program; without a name where it is the system itself.
Account Own() {
  const AccountsHold hold;
  const Account* account = ThisMachine().RunningAccount();
  return account ? *account : Account();
}

std::string OwnProfile() {
  const Account own = Own();
  if (own.name.empty()) return SystemDriveText() + "\\Windows\\system32\\config\\systemprofile";
  const std::string profile = ProfileOf(own.sid);
  return profile.empty() ? ProfilePath(ThisMachine().settings.major, own.name) : profile;
}

std::string OwnName() {
  const Account own = Own();
  return own.name.empty() ? "SYSTEM" : own.name;
}

struct Variable {
  const char* name;
  std::string (*value)();
};

// A 32-bit process on a 64-bit system, so the program files are those of 32-bit programs.
const Variable kVariables[] = {
    {"ALLUSERSPROFILE",
     [] {
       return SystemDriveText() + (ThisMachine().settings.HasOldLayout()
                                       ? "\\Documents and Settings\\All Users"
                                       : "\\ProgramData");
     }},
    {"APPDATA",
     [] {
       return OwnProfile() +
              (ThisMachine().settings.HasOldLayout() ? "\\Application Data" : "\\AppData\\Roaming");
     }},
    {"CommonProgramFiles", [] { return SystemDriveText() + "\\Program Files (x86)\\Common Files"; }},
    {"CommonProgramFiles(x86)", [] { return SystemDriveText() + "\\Program Files (x86)\\Common Files"; }},
    {"CommonProgramW6432", [] { return SystemDriveText() + "\\Program Files\\Common Files"; }},
    {"COMPUTERNAME", [] { return ThisMachine().settings.computerName; }},
    {"ComSpec", [] { return SystemDriveText() + "\\Windows\\system32\\cmd.exe"; }},
    {"HOMEDRIVE", [] { return OwnProfile().substr(0, 2); }},
    {"HOMEPATH", [] { return OwnProfile().substr(2); }},
    {"OS", [] { return std::string("Windows_NT"); }},
    {"ProgramFiles", [] { return SystemDriveText() + "\\Program Files (x86)"; }},
    {"ProgramFiles(x86)", [] { return SystemDriveText() + "\\Program Files (x86)"; }},
    {"ProgramW6432", [] { return SystemDriveText() + "\\Program Files"; }},
    {"SystemDrive", SystemDriveText},
    {"SystemRoot", [] { return SystemDriveText() + "\\Windows"; }},
    {"USERDOMAIN", [] { return ThisMachine().settings.computerName; }},
    {"USERNAME", OwnName},
    {"USERPROFILE", OwnProfile},
    {"windir", [] { return SystemDriveText() + "\\Windows"; }},
};
const Variable kVariablesSince6[] = {
    {"LOCALAPPDATA", [] { return OwnProfile() + "\\AppData\\Local"; }},
    {"ProgramData", [] { return SystemDriveText() + "\\ProgramData"; }},
    {"PUBLIC", [] { return SystemDriveText() + "\\Users\\Public"; }},
    {"TEMP", [] { return OwnProfile() + "\\AppData\\Local\\Temp"; }},
    {"TMP", [] { return OwnProfile() + "\\AppData\\Local\\Temp"; }},
};

template <size_t N>
const Variable* FindIn(const Variable (&variables)[N], std::u16string_view name) {
  const auto* found =
      std::find_if(std::begin(variables), std::end(variables),
                   [name](const Variable& variable) { return SameName(ToUtf16(variable.name), name); });
  return found == std::end(variables) ? nullptr : found;
}

std::optional<std::u16string> ValueOf(std::u16string_view name) {
  const Variable* variable = FindIn(kVariables, name);
  if (!variable && !ThisMachine().settings.HasOldLayout()) variable = FindIn(kVariablesSince6, name);
  if (!variable) return std::nullopt;
  return ToUtf16(variable->value());
}

// Each name between two "%"; one that is no variable stays as it stands, with both.
std::u16string Expand(std::u16string_view text) {
  std::u16string result;
  for (;;) {
    size_t start = text.find(u'%');
    size_t end = start == text.npos ? text.npos : text.find(u'%', start + 1);
    if (end == text.npos) return result.append(text);
    result.append(text.substr(0, start));
    result.append(ValueOf(text.substr(start + 1, end - start - 1))
                      .value_or(std::u16string(text.substr(start, end - start + 1))));
    text.remove_prefix(end + 1);
  }
}

// What the calls give that fill a buffer: the length without the terminator, or with too little room the
// size that it needs with it.
UINT Fill(const std::u16string& text, wchar_t* buffer, UINT room) {
  if (text.size() + 1 > room) return static_cast<UINT>(text.size() + 1);
  std::copy_n(AsWide(text), text.size() + 1, buffer);
  return static_cast<UINT>(text.size());
}

}  // namespace

DWORD WINAPI ExpandEnvironmentStringsW(const wchar_t* source, wchar_t* buffer, DWORD room) {
  EnterCall();
  std::u16string text = Expand(reinterpret_cast<const char16_t*>(source));
  if (text.size() + 1 <= room) std::copy_n(AsWide(text), text.size() + 1, buffer);
  return static_cast<DWORD>(text.size() + 1);
}

DWORD WINAPI GetEnvironmentVariableW(const wchar_t* name, wchar_t* buffer, DWORD room) {
  EnterCall();
  auto value = ValueOf(reinterpret_cast<const char16_t*>(name));
  if (!value) return Fail(ERROR_ENVVAR_NOT_FOUND);
  SetLastError(ERROR_SUCCESS);  // tells an empty value from none
  return Fill(*value, buffer, room);
}

UINT WINAPI GetSystemWindowsDirectoryW(wchar_t* buffer, UINT room) {
  EnterCall();
  return Fill(ToUtf16(SystemDriveText() + "\\Windows"), buffer, room);
}
UINT WINAPI GetWindowsDirectoryW(wchar_t* buffer, UINT room) {
  return GetSystemWindowsDirectoryW(buffer, room);
}

BOOL WINAPI GetComputerNameW(wchar_t* buffer, DWORD* size) {
  EnterCall();
  std::u16string name = ToUtf16(ThisMachine().settings.computerName);
  DWORD needed = static_cast<DWORD>(name.size());
  bool fits = needed < *size;
  if (fits) std::copy_n(AsWide(name), name.size() + 1, buffer);
  *size = fits ? needed : needed + 1;
  return fits ? TRUE : Fail(ERROR_BUFFER_OVERFLOW);
}
