#include "operations/backup_trees.h"

#include <windows.h>
// The header below needs windows.h before it.
#include <shlobj.h>

#include <initializer_list>

#include "foundation/windows_version.h"
#include "operations/path_queries.h"
#include "users/account_lookup.h"
#include "users/user_folders.h"

namespace {

// An empty or a relative path in the registry, or one with a variable that only the account has, names
// no folder.
bool FindFolder(const UserTrees& user, const wchar_t* logicalName, WString& source) {
  return GetUserFolder(user.sid.CStr(), logicalName, source, user.profile.CStr()) && IsAbsolutePath(source);
}

void AddFolder(UserTrees& user, const wchar_t* setFolder, const FolderRow& row) {
  RunTree tree;
  tree.targetBase = setFolder;
  tree.bit = row.bit;
  if (FindFolder(user, row.logicalName, tree.source)) {
    tree.target = PathBelow(user.target, row.setFolder);
    user.trees.push_back(tree);
  } else {
    user.notFound.Add(row.text);
  }
}

void AddData(UserTrees& user, const wchar_t* setFolder, const wchar_t* logicalName, ApplicationData part) {
  RunTree tree;
  tree.targetBase = setFolder;
  if (FindFolder(user, logicalName, tree.source)) {
    tree.target =
        PathBelow(user.target, part == ApplicationData::kRoaming ? kAppDataFolder : kLocalAppDataFolder);
    AddApplicationData(user.trees, tree, part);
  } else {
    user.notFound.Add(logicalName);
  }
}

WString LeafBetweenBars(WString path) {
  path.LastComponent();
  path.Append(L"|");
  return path;
}

}  // namespace

bool ListUserTrees(const wchar_t* name, const wchar_t* setFolder, uint32_t mask, double windowsVersion,
                   UserTrees& user) {
  user.trees.clear();
  user.notFound.Clear();
  user.target = UserFolderInSet(setFolder, name);
  if (!GetAccountSidAndProfile(name, user.sid, &user.profile)) return false;
  if (mask & kMaskAppData) {
    AddData(user, setFolder, kFolderAppData, ApplicationData::kRoaming);
    AddData(user, setFolder, kFolderLocalAppData, ApplicationData::kLocal);
  }
  // Before Windows Vista, Downloads lies in Documents and would be copied twice.
  bool downloadsInDocuments = windowsVersion <= kFirstNewLayout && (mask & kMaskDocuments);
  for (const FolderRow& row : kFolderRows) {
    if (!(mask & row.bit) || row.bit == kMaskAppData || row.bit == kMaskOther) continue;
    if (row.bit == kMaskDownloads && downloadsInDocuments) continue;
    AddFolder(user, setFolder, row);
  }
  if (mask & kMaskOther) {
    RunTree others;
    others.source = user.profile;
    others.target = user.target;
    others.targetBase = setFolder;
    others.bit = kMaskOther;
    others.otherFolders = true;
    user.trees.push_back(others);
  }
  return true;
}

WString OtherFolderExclusions(const wchar_t* consoleSid, const wchar_t* consoleProfile) {
  WString list(L"|");
  for (int folder :
       {CSIDL_PERSONAL, CSIDL_DESKTOPDIRECTORY, CSIDL_MYMUSIC, CSIDL_MYPICTURES, CSIDL_MYVIDEO}) {
    wchar_t path[MAX_PATH] = {};
    // Only the name counts, so the folder needn't be there: the system's own account has none of them.
    if (FAILED(SHGetFolderPathW(nullptr, folder | CSIDL_FLAG_DONT_VERIFY, nullptr, 0, path))) path[0] = 0;
    list.Append(LeafBetweenBars(path).CStr());
  }
  // Where nobody sits at the console, as in a rescue, the name that every system gives it.
  WString downloads;
  if (!GetUserFolder(consoleSid, kFolderDownloads, downloads, consoleProfile)) downloads = L"Downloads";
  list.Append(LeafBetweenBars(downloads).CStr());
  list.Append(L"Appdata|");
  return list;
}

std::vector<RunTree> ListBackupTrees(const BackupSelection& selection, const wchar_t* setFolder,
                                     double windowsVersion) {
  std::vector<RunTree> trees;
  for (uint32_t row = 0; row < selection.users.count; row++) {
    if (!selection.IsUserTicked(row) || !(selection.folderMask & kMaskAll)) continue;
    UserTrees user;
    if (!ListUserTrees(selection.users[row].CStr(), setFolder, selection.folderMask, windowsVersion, user)) {
      continue;
    }
    trees.insert(trees.end(), user.trees.begin(), user.trees.end());
  }
  for (uint32_t row = 0; row < selection.extraFolders.count; row++) {
    WString name;
    const WString& path = selection.extraFolders[row];
    if (!selection.IsExtraTicked(row) || !Md5Name(path.CStr(), name)) continue;
    RunTree tree;
    tree.source = path;
    tree.target = ExtraFolderInSet(setFolder, name.CStr());
    trees.push_back(tree);
  }
  return trees;
}
