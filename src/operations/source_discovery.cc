#include "operations/source_discovery.h"

#include <windows.h>

#include "foundation/directory_enumerator.h"
#include "operations/document_keys.h"
#include "operations/installation_hive.h"
#include "operations/path_queries.h"
#include "operations/plain_path.h"
#include "operations/restore_targets.h"
#include "operations/restore_trees.h"

namespace {

constexpr double kOldestBelievable = 4.0;
constexpr int kVisibleEntries = 4;
// Folders beside the accounts' that belong to nobody.
constexpr const wchar_t* kNobodysFolders[] = {L"Default", L"Default.migrated", L"Public"};

WString WithoutBackslash(const wchar_t* path) {
  WString text(path);
  text.StripTrailingBackslashes();
  return text;
}

// The pattern of a walk over a folder.
WString EntriesOf(const WString& folder) {
  WString pattern(folder);
  pattern.AddLongPathPrefix();
  pattern += L"\\*";
  return pattern;
}

double VersionFromFolders(const WString& root) {
  if (IsRealFolderPath(PathBelow(root, L"ProgramData\\Microsoft\\Windows").CStr())) {
    return IsRealFolderPath(PathBelow(root, L"ProgramData\\Microsoft\\Windows\\AppRepository").CStr()) ? 10.0
                                                                                                       : 6.2;
  }
  if (IsRealFolderPath(PathBelow(root, kOldUsersFolder).CStr())) return 5.1;
  if (IsRealFolderPath(PathBelow(root, kUsersFolder).CStr())) return 6.1;
  return 0.0;
}

bool IsNobodysFolder(const wchar_t* name) {
  for (const wchar_t* other : kNobodysFolders) {
    if (WString(name).EqualsNoCase(other)) return true;
  }
  return false;
}

void ScanUsers(const WString& root, double version, const UserTable& accounts, SourceScan& scan,
               const StopWord* stop) {
  const WString users = PathBelow(root, UsersFolderName({root, false, version}));
  // On a newer Windows "Documents and Settings" is a junction, and it leads to the accounts of the machine
  // that runs now.
  if (!IsRealFolderPath(users.CStr())) return;
  DirectoryEnumerator folders;
  for (bool found = folders.First(EntriesOf(users).CStr(), kSkipReparsePoints | kOnlyDirectories);
       found && !IsStopAsked(stop); found = folders.Next()) {
    const wchar_t* name = folders.data.cFileName;
    if (IsNobodysFolder(name) || !IsPopulatedFolder(PathBelow(users, name).CStr())) continue;
    scan.users.Add(name);
    scan.userTargets.Add(ChooseTargetByName(accounts, name).CStr());
  }
}

// What an earlier run with this root left in its info file. A key that leads out of the root isn't
// offered.
void ScanExtraFolders(const WString& root, SourceScan& scan, LeftOutKeys* leftOut, const StopWord* stop) {
  const WString file = FindScannedInfoFile(root.CStr());
  if (file.IsEmpty() || CheckInfoFile(file.CStr()) != InfoFileState::kReadable) return;
  IniDocument document(file.CStr());
  VisitKeys(document, kRestoreFromExtraFoldersSection, [&](const WString& key, const WString& target) {
    if (IsStopAsked(stop)) return;
    if (!IsPlainRelativePath(key.CStr())) {
      if (leftOut) leftOut->notPlain.Add(key.CStr());
      return;
    }
    scan.extraFolders.Add(PathBelow(root, key.CStr()).CStr());
    scan.extraTargets.Add(target.CStr());
  });
}

}  // namespace

double GetInstallationVersion(const wchar_t* root, WString* silentHive) {
  const WString folder = WithoutBackslash(root);
  const double version = ReadHiveVersion(folder.CStr());
  if (silentHive) *silentHive = version == 0.0 ? InstallationHive(folder.CStr()) : WString();
  return version > kOldestBelievable ? version : VersionFromFolders(folder);
}

bool IsPopulatedFolder(const wchar_t* folder) {
  int visible = 0;
  DirectoryEnumerator entries;
  for (bool found = entries.First(EntriesOf(WithoutBackslash(folder)).CStr(), kSkipReparsePoints); found;
       found = entries.Next()) {
    if (entries.data.dwFileAttributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM)) continue;
    if (++visible == kVisibleEntries) return true;
  }
  return false;
}

bool IsUserProfileFolder(const wchar_t* folder) {
  const WString profile = WithoutBackslash(folder);
  return IsFilePath(PathBelow(profile, L"ntuser.dat").CStr()) ||
         IsFolderPath(PathBelow(profile, L"AppData\\Local\\Microsoft").CStr());
}

void ScanSource(const wchar_t* root, double version, const UserTable& accounts, SourceScan& scan,
                LeftOutKeys* leftOut, const StopWord* stop) {
  const WString folder = WithoutBackslash(root);
  scan.users.Clear();
  scan.userTargets.Clear();
  scan.extraFolders.Clear();
  scan.extraTargets.Clear();
  ScanUsers(folder, version, accounts, scan, stop);
  ScanExtraFolders(folder, scan, leftOut, stop);
}
