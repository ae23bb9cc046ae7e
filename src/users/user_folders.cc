#include "users/user_folders.h"

#include <windows.h>

#include "foundation/registry.h"
#include "foundation/unique_handle.h"
#include "foundation/windows_version.h"
#include "users/account_lookup.h"
#include "users/expand_variables.h"
#include "users/user_hives.h"

namespace {

constexpr wchar_t kShellFolders[] =
    L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
constexpr wchar_t kUserShellFolders[] =
    L"\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
constexpr wchar_t kEnvironment[] = L"\\Environment";
constexpr wchar_t kProfileVariable[] = L"%USERPROFILE%";
constexpr int32_t kProfileVariableLength = 13;

UniqueKey OpenUserKey(const wchar_t* sid, const wchar_t* path) {
  WString full;
  full.Concat(L"HKU\\", sid, path);
  return UniqueKey(OpenKey(full.CStr(), KEY_READ));
}

// The given profile, or ProfileList's. Empty if there is none.
bool ProfileOf(const wchar_t* sid, const wchar_t* given, WString& profile) {
  if (!given) return GetProfilePathFromSid(sid, &profile);
  profile.Assign(given);
  return true;
}

bool ReadTemporaryFolder(const wchar_t* sid, WString& text) {
  UniqueKey key = OpenUserKey(sid, kEnvironment);
  if (!key) return false;
  if (QueryStringValue(key.Get(), L"TMP", text) && !text.IsEmpty()) return true;
  return QueryStringValue(key.Get(), L"TEMP", text);
}

bool ReadShellFolder(const wchar_t* sid, const wchar_t* logicalName, WString& text) {
  UniqueKey key = OpenUserKey(sid, kShellFolders);
  if (!key) return false;
  // An empty text counts as read.
  if (QueryStringValue(key.Get(), logicalName, text)) return true;
  key = OpenUserKey(sid, kUserShellFolders);
  return key && QueryStringValue(key.Get(), logicalName, text);
}

// A leading %USERPROFILE% is the account's, never this process's; all other variables are this
// process's, for want of the account's own environment.
bool ResolveVariables(const wchar_t* sid, const wchar_t* profile, WString& text) {
  if (text.Find(kProfileVariable, false, 1, 1, kProfileVariableLength) != 1) {
    ExpandVariables(text);
    return true;
  }
  WString base;
  if (!ProfileOf(sid, profile, base)) return false;
  text.RemoveLeft(kProfileVariableLength);
  text.Prepend(base.CStr());
  return true;
}

// Where the folder is on systems before Windows Vista, if it has a place of its own there.
bool IsOldLayoutFolder(const WString& logicalName) {
  return logicalName.EqualsNoCase(kFolderLocalAppData) || logicalName.EqualsNoCase(kFolderDownloads);
}

bool GetOldLayoutFolder(const wchar_t* sid, const WString& logicalName, WString& output,
                        const wchar_t* profile) {
  const wchar_t* relative = nullptr;
  if (logicalName.EqualsNoCase(kFolderLocalAppData)) {
    if (!ProfileOf(sid, profile, output)) return false;
    relative = L"\\Local Settings\\Application Data";
  } else {
    if (!GetUserFolder(sid, kFolderDocuments, output, profile)) return false;
    relative = L"\\Downloads";
  }
  output.Append(relative);
  return true;
}

}  // namespace

bool GetUserFolder(const wchar_t* sid, const wchar_t* logicalName, WString& output, const wchar_t* profile) {
  output.Assign(L"");
  WString name(logicalName);
  WString text;
  if (GetWindowsVersion() < kFirstNewLayout && IsOldLayoutFolder(name)) {
    if (!GetOldLayoutFolder(sid, name, text, profile)) return false;
  } else {
    if (!EnsureUserHiveLoaded(sid)) return false;
    bool read = name.EqualsNoCase(kFolderTemp) ? ReadTemporaryFolder(sid, text)
                                               : ReadShellFolder(sid, name.CStr(), text);
    if (!read || !ResolveVariables(sid, profile, text)) return false;
  }
  output = text;
  return true;
}

WString ShellFolderValue(const wchar_t* sid, const wchar_t* logicalName) {
  WString value, ignored;
  const UniqueKey key = OpenUserKey(sid, kShellFolders);
  const bool isFirst = key && QueryStringValue(key.Get(), logicalName, ignored);
  value.Concat(isFirst ? L"Shell Folders" : L"User Shell Folders", L"\\", logicalName);
  return value;
}
