#include "operations/protected_places.h"

#include <windows.h>
// The headers below need windows.h before them.
#include <shlobj.h>
#include <userenv.h>

#include "foundation/directory_enumerator.h"
#include "operations/path_queries.h"
#include "operations/plain_path.h"
#include "operations/real_path.h"
#include "users/expand_variables.h"

namespace {

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
  const WString real = ResolveForComparison(folder.CStr(), ShareServer::kAnyMachine);
  return real.IsEmpty() ? PlaceProtection::kNoPath : ProtectionOfReal(real);
}

PlaceProtection ProtectedPlaces::ProtectionOfReal(const WString& path) const {
  if (IsSameOrInside(systemRoot_, path)) return PlaceProtection::kSystemRoot;
  if (IsSameOrInside(profilesFolder_, path)) return PlaceProtection::kProfilesFolder;
  if (IsInOneOf(path, windowsFolders_)) return PlaceProtection::kWindowsFolder;
  if (IsInOneOf(path, programFolders_)) return PlaceProtection::kProgramFolder;
  if (IsInOneOf(path, targetProfiles_)) return PlaceProtection::kFree;
  if (IsInOneOf(path, foreignProfiles_)) return PlaceProtection::kForeignProfile;
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
