#include "operations/protected_places.h"

#include <windows.h>
// The headers below need windows.h before them.
#include <shlobj.h>
#include <userenv.h>

#include "foundation/directory_enumerator.h"
#include "operations/path_queries.h"
#include "operations/plain_path.h"
#include "operations/run_overlap.h"
#include "users/expand_variables.h"

namespace {

constexpr int32_t kDriveRootLength = 3;

void AddFolder(WStringArray& folders, const wchar_t* path) {
  const WString folder(path);
  if (IsAbsolutePath(folder)) folders.Add(ResolveRealPath(path).CStr());
}

void AddSystemFolder(WStringArray& folders, int folder) {
  wchar_t path[MAX_PATH] = {};
  if (SUCCEEDED(SHGetFolderPathW(nullptr, folder | CSIDL_FLAG_DONT_VERIFY, nullptr, 0, path))) {
    AddFolder(folders, path);
  }
}

bool IsInAny(const WString& path, const WStringArray& folders) {
  for (uint32_t row = 0; row < folders.count; row++) {
    if (IsSameOrInside(path, folders[row])) return true;
  }
  return false;
}

}  // namespace

ProtectedPlaces::ProtectedPlaces(const UserTable& accounts) {
  wchar_t path[MAX_PATH] = {};
  if (GetSystemWindowsDirectoryW(path, MAX_PATH) != 0) AddFolder(windowsFolders_, path);
  AddSystemFolder(windowsFolders_, CSIDL_WINDOWS);
  systemRoot_.AssignMid(path, 1, 2);
  AddSystemFolder(programFolders_, CSIDL_PROGRAM_FILES);
  AddSystemFolder(programFolders_, CSIDL_PROGRAM_FILESX86);
  AddSystemFolder(programFolders_, CSIDL_COMMON_APPDATA);
  // A 32-bit program asks for Program Files and gets its own; the other one has a variable.
  WString programs(L"%ProgramW6432%");
  if (ExpandVariables(programs)) AddFolder(programFolders_, programs.CStr());
  DWORD size = MAX_PATH;
  if (GetProfilesDirectoryW(path, &size)) profilesFolder_ = ResolveRealPath(path);
  AddProfilesOnDisk();
  for (uint32_t row = 0; row < accounts.count; row++) {
    AddFolder(foreignProfiles_, accounts.profilePaths[row].CStr());
  }
}

// Folders beside the profiles count as profiles, too: those of accounts of a domain, which aren't
// listed, and the pattern of new ones. What is public is there for everybody.
void ProtectedPlaces::AddProfilesOnDisk() {
  if (profilesFolder_.IsEmpty()) return;
  WString pattern;
  pattern.Concat(profilesFolder_.CStr(), L"\\*");
  DirectoryEnumerator folders;
  for (bool found = folders.First(pattern.AddLongPathPrefix().CStr(), kOnlyDirectories); found;
       found = folders.Next()) {
    if (WString(folders.data.cFileName).EqualsNoCase(L"Public")) continue;
    WString profile;
    profile.Concat(profilesFolder_.CStr(), L"\\", folders.data.cFileName);
    AddFolder(foreignProfiles_, profile.CStr());
  }
}

void ProtectedPlaces::AddTargetProfile(const wchar_t* profile) { AddFolder(targetProfiles_, profile); }

PlaceProtection ProtectedPlaces::ProtectionOf(const wchar_t* path) const {
  WString folder(path);
  if (folder.Length() > kDriveRootLength) folder.StripTrailingBackslashes();
  if (!IsPlainFullPath(folder.CStr())) return PlaceProtection::kNoPath;
  const WString real = ResolveRealPath(folder.CStr());
  return real.IsEmpty() ? PlaceProtection::kNoPath : ProtectionOfReal(BehindAdministrativeShare(real));
}

// "\\server\C$\Data" is C:\Data of a machine that may well be this one. Other paths stay.
WString ProtectedPlaces::BehindAdministrativeShare(const WString& path) const {
  if (path.Find(L"\\\\", true, 1, 1, 2) != 1) return path;
  const int32_t share = path.Find(L"\\", true, 1, 3);
  if (share == 0) return path;
  const int32_t behind = path.Find(L"\\", true, 1, share + 1);
  WString name;
  name.AssignMid(path.CStr(), share + 1, (behind ? behind : path.Length() + 1) - share - 1);
  WString local;
  if (name.Length() == 2 && name.buffer[1] == L'$') {
    local.Concat(name.CStr());
    local.buffer[1] = L':';
  } else if (name.EqualsNoCase(L"ADMIN$") && windowsFolders_.count > 0) {
    local = windowsFolders_[0];
  } else {
    return path;
  }
  if (behind) local.Append(path.CStr() + behind - 1);
  return local;
}

PlaceProtection ProtectedPlaces::ProtectionOfReal(const WString& path) const {
  if (IsSameOrInside(systemRoot_, path)) return PlaceProtection::kSystemRoot;
  if (IsSameOrInside(profilesFolder_, path)) return PlaceProtection::kProfilesFolder;
  if (IsInAny(path, windowsFolders_)) return PlaceProtection::kWindowsFolder;
  if (IsInAny(path, programFolders_)) return PlaceProtection::kProgramFolder;
  if (IsInAny(path, targetProfiles_)) return PlaceProtection::kFree;
  if (IsInAny(path, foreignProfiles_)) return PlaceProtection::kForeignProfile;
  return PlaceProtection::kFree;
}

const wchar_t* ProtectionText(PlaceProtection protection) {
  switch (protection) {
    case PlaceProtection::kFree:
      return L"";
    case PlaceProtection::kWindowsFolder:
      return L"lies in the Windows folder";
    case PlaceProtection::kProgramFolder:
      return L"lies in a folder of installed programs";
    case PlaceProtection::kProfilesFolder:
      return L"is or holds the folder of all profiles";
    case PlaceProtection::kSystemRoot:
      return L"is the root of the system drive";
    case PlaceProtection::kForeignProfile:
      return L"lies in the profile of an account that is no target of this run";
    case PlaceProtection::kNoPath:
      return L"is no full path of a folder";
  }
  return L"";
}
