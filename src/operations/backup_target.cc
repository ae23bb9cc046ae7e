#include "operations/backup_target.h"

#include <windows.h>

#include <initializer_list>

#include "foundation/file_object.h"
#include "operations/path_queries.h"
#include "users/expand_variables.h"

namespace {

constexpr int32_t kDriveLength = 2;  // "C:"

// Reserved in every folder, whatever extension follows. A folder of such a name can be made by way of
// the long path prefix, and then be neither opened nor deleted by other programs.
bool IsDeviceName(const WString& name) {
  WString stem(name);
  int32_t dot = stem.Find(L".");
  if (dot > 0) stem.Truncate(dot - 1);
  stem.Trim(kTrimTrailing);
  for (const wchar_t* device : {L"CON", L"PRN", L"AUX", L"NUL"}) {
    if (stem.EqualsNoCase(device)) return true;
  }
  if (stem.Length() != 4 || stem.buffer[3] < L'1' || stem.buffer[3] > L'9') return false;
  stem.Truncate(3);
  return stem.EqualsNoCase(L"COM") || stem.EqualsNoCase(L"LPT");
}

void StripTrailingDotsAndBlanks(WString& name) {
  int32_t length = name.Length();
  while (length > 0 && (name.buffer[length - 1] == L'.' || name.buffer[length - 1] == L' ')) length--;
  name.Truncate(length);
}

// No field takes them, but a command line does; no file system of Windows takes them in a name.
void StripControlCharacters(WString& name) {
  int32_t kept = 0;
  for (int32_t i = 0; i < name.Length(); i++) {
    if (name.buffer[i] >= L' ') name.buffer[kept++] = name.buffer[i];
  }
  name.Truncate(kept);
}

}  // namespace

WString DefaultBackupName(const wchar_t* computerName, const wchar_t* consoleUserName) {
  if (!consoleUserName || !*consoleUserName) return WString(computerName);
  WString name;
  name.Concat(computerName, L" (", consoleUserName, L")");
  return name;
}

WString CleanBackupName(const wchar_t* text) {
  WString name(text);
  name.StripFileNameChars();
  StripControlCharacters(name);
  name.Trim(kTrimLeading | kTrimTrailing);
  StripTrailingDotsAndBlanks(name);
  if (IsDeviceName(name)) name.Assign(L"");
  return name;
}

WString ExpandParentFolder(const wchar_t* text) {
  WString parent(text);
  parent.StripTrailingBackslashes();
  ExpandVariables(parent);
  // A variable may stand for the root of a drive.
  parent.StripTrailingBackslashes();
  return parent;
}

WString BackupTargetFolder(const wchar_t* parent, const wchar_t* name) {
  WString last(parent);
  last.LastComponent();
  if (last.EqualsNoCase(name)) return WString(parent);
  WString target;
  target.Concat(parent, L"\\", name);
  return target;
}

void SplitSetFolder(const wchar_t* setFolder, WString& name, WString& parent) {
  WString folder(setFolder);
  folder.StripTrailingBackslashes();
  name = folder;
  name.LastComponent();
  parent = folder;
  parent.ParentPath();
}

bool MakeBackupTarget(const wchar_t* target, WString& firstMade) {
  firstMade.Assign(L"");
  WString path(target);
  path.StripTrailingBackslashes();
  WString missing(path);
  while (missing.Length() > kDriveLength && IsMissingPath(missing.CStr())) {
    firstMade = missing;
    missing.ParentPath();
  }
  // A file of that name is no reason for MakeDirectoryPath to fail.
  if (MakeDirectoryPath(path.CStr()) && IsFolderPath(path.CStr())) return true;
  DWORD error = GetLastError();
  UnmakeBackupTarget(path.CStr(), firstMade);
  SetLastError(error);
  return false;
}

void UnmakeBackupTarget(const wchar_t* target, const WString& firstMade) {
  if (firstMade.IsEmpty()) return;
  WString path(target);
  path.StripTrailingBackslashes();
  while (path.Length() >= firstMade.Length() && path.Length() > kDriveLength) {
    WString name(path);
    // A folder that isn't empty stays, and with it all above it.
    if (!RemoveDirectoryW(name.AddLongPathPrefix().CStr()) && GetLastError() == ERROR_DIR_NOT_EMPTY) return;
    path.ParentPath();
  }
}
