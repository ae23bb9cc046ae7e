#include "operations/restore_selection.h"

#include <windows.h>
// The header below needs windows.h before it.
#include <userenv.h>

#include <set>

#include "operations/document_keys.h"
#include "operations/held_way.h"
#include "operations/path_queries.h"
#include "operations/restore_extra_folders.h"
#include "operations/restore_targets.h"
#include "operations/set_accounts.h"
#include "operations/source_discovery.h"
#include "users/account_lookup.h"

namespace {

// Names of accounts and folders as the system tells them apart.
struct NameOrder {
  bool operator()(const WString& a, const WString& b) const {
    return CompareStringOrdinal(a.CStr(), -1, b.CStr(), -1, TRUE) == CSTR_LESS_THAN;
  }
};
using NameSet = std::set<WString, NameOrder>;

void ReadSetUsers(IniDocument& document, const RestoreRoot& root, const UserTable& accounts,
                  RestoreSelection& selection, LeftOutKeys* leftOut, const StopWord* stop) {
  NameSet seen;
  for (const SetAccount& account : ReadSetAccounts(document, root.folder.CStr(), leftOut, stop)) {
    if (IsStopAsked(stop)) return;
    if (!account.hasFolder) continue;
    // A file that names one twice still has one folder for it.
    if (!seen.insert(account.name).second) {
      if (leftOut) leftOut->repeated.Add(account.name.CStr());
      continue;
    }
    RestoreUserRow row;
    row.source = account.name;
    row.target = ChooseTarget(accounts, account.name.CStr(), account.fullName.CStr());
    selection.users.push_back(row);
  }
}

void ReadSetFolders(IniDocument& document, const RestoreRoot& root, RestoreSelection& selection,
                    LeftOutKeys* leftOut, const StopWord* stop) {
  NameSet seen;  // by the names in the set, which differ with the case of a path
  VisitKeys(document, kExtraFoldersSection, [&](const WString& path, const WString&) {
    WString name;
    if (IsStopAsked(stop) || !Md5Name(path.CStr(), name)) return;
    if (!IsFolderPath(ExtraFolderInSet(root.folder.CStr(), name.CStr()).CStr())) return;
    if (!seen.insert(name).second) {
      if (leftOut) leftOut->repeated.Add(path.CStr());
      return;
    }
    RestoreFolderRow row;
    row.source = path;
    row.target = path;
    selection.extraFolders.push_back(row);
  });
}

// No link on the way is followed. One that stands there is something: the run tells of it.
bool IsMissing(const RestoreRoot& root, const WString& key) {
  HeldWay way;
  return way.Hold(root.folder.CStr(), key.CStr(), false) == HeldWay::Result::kMissing;
}

void LeaveOut(const WString& row, WStringArray* leftOut) {
  if (leftOut) leftOut->Add(row.CStr());
}

void WriteUsers(IniDocument& document, const RestoreSelection& selection, WStringArray* leftOut) {
  document.RemoveSections(kRestoreUsersSection);
  for (const RestoreUserRow& row : selection.users) {
    if (!row.isTicked) continue;
    if (CanBeKey(row.source.CStr()) && CanBeKey(row.target.CStr())) {
      document.SetValue(kRestoreUsersSection, row.source.CStr(), row.target.CStr());
    } else {
      LeaveOut(row.source, leftOut);
    }
  }
}

const wchar_t* ExtraFoldersSection(const RestoreRoot& root) {
  return root.isSet ? kRestoreExtraFoldersSection : kRestoreFromExtraFoldersSection;
}

void WriteExtraFolders(IniDocument& document, const RestoreRoot& root, const RestoreSelection& selection,
                       WStringArray* leftOut) {
  const wchar_t* section = ExtraFoldersSection(root);
  document.RemoveSections(section);
  for (const RestoreFolderRow& row : selection.extraFolders) {
    if (!row.isTicked) continue;
    const WString key = ExtraFolderKey(root, row);
    RunTree tree;
    if (CanBeKey(key.CStr()) && ExtraFolderTree(root, key.CStr(), row.target.CStr(), tree)) {
      document.SetValue(section, key.CStr(), row.target.CStr());
    } else {
      LeaveOut(row.source, leftOut);
    }
  }
}

}  // namespace

void ReadSetRows(IniDocument& document, const RestoreRoot& root, const UserTable& accounts,
                 RestoreSelection& selection, LeftOutKeys* leftOut, const StopWord* stop) {
  selection.users.clear();
  selection.extraFolders.clear();
  ReadSetUsers(document, root, accounts, selection, leftOut, stop);
  ReadSetFolders(document, root, selection, leftOut, stop);
}

void ReadInstallationRows(const RestoreRoot& root, const UserTable& accounts, RestoreSelection& selection,
                          LeftOutKeys* leftOut, const StopWord* stop) {
  SourceScan scan;
  ScanSource(root.folder.CStr(), root.version, accounts, scan, leftOut, stop);
  selection.users.clear();
  selection.extraFolders.clear();
  for (uint32_t i = 0; i < scan.users.count; i++) {
    RestoreUserRow row;
    row.source = scan.users[i];
    row.target = scan.userTargets[i];
    selection.users.push_back(row);
  }
  NameSet seen;
  for (uint32_t i = 0; i < scan.extraFolders.count && !IsStopAsked(stop); i++) {
    RestoreFolderRow row;
    row.source = scan.extraFolders[i];
    row.target = scan.extraTargets[i];
    const WString key = ExtraFolderKey(root, row);
    if (!seen.insert(key).second) {
      if (leftOut) leftOut->repeated.Add(key.CStr());
      continue;
    }
    row.isMissing = IsMissing(root, key);
    row.isTicked = !row.isMissing;
    selection.extraFolders.push_back(row);
  }
}

void AddTargetProfile(const WString& target, ProtectedPlaces& places) {
  WString account, sid, profile;
  if (IsToBeCreated(target.CStr(), account) && StateOfTarget(account) != TargetState::kReady) return;
  if (GetAccountSidAndProfile(account.CStr(), sid, &profile)) places.AddTargetProfile(profile.CStr());
}

void AddTargetProfiles(const RestoreSelection& selection, ProtectedPlaces& places) {
  for (const RestoreUserRow& row : selection.users) {
    if (row.isTicked) AddTargetProfile(row.target, places);
  }
}

void UntickProtected(const ProtectedPlaces& places, RestoreSelection& selection, const StopWord* stop) {
  for (RestoreFolderRow& row : selection.extraFolders) {
    if (IsStopAsked(stop)) return;
    if (places.ProtectionOf(row.target.CStr()) != PlaceProtection::kFree) row.isTicked = false;
  }
}

WString ExtraFolderKey(const RestoreRoot& root, const RestoreFolderRow& row) {
  WString key;
  if (root.isSet) {
    if (!Md5Name(row.source.CStr(), key)) key.Clear();
    return key;
  }
  if (!IsSameOrInside(row.source, root.folder)) return key;
  key = row.source;
  key.RemoveLeft(root.folder.Length());
  while (!key.IsEmpty() && key.buffer[0] == L'\\') key.RemoveLeft(1);
  return key;
}

void WriteRestoreSelection(IniDocument& document, const RestoreRoot& root, const RestoreSelection& selection,
                           WStringArray* leftOut) {
  WriteUsers(document, selection, leftOut);
  SetNumber(document, kRestoreUserFoldersKey, selection.folderMask & kMaskAll);
  SetNumber(document, kRestoreOptionsKey, selection.onlyMissing ? 2 : 0);
  WriteExtraFolders(document, root, selection, leftOut);
  if (root.isSet) return;
  SetNumber(document, kSkipAttributesKey, selection.skipAttributes & (kSkipHiddenFiles | kSkipSystemFiles));
}

bool RemoveExtraFolderRow(IniDocument& document, const RestoreRoot& root, const RestoreFolderRow& row) {
  return document.DeleteKey(ExtraFoldersSection(root), ExtraFolderKey(root, row).CStr()) == 1;
}

void ListRestoreRow(const RestoreRoot& root, const RestoreUserRow& row, uint32_t mask,
                    const ProtectedPlaces& places, RestoreTrees& found) {
  WString account;
  RestoreTarget target;
  if (IsToBeCreated(row.target.CStr(), account) && StateOfTarget(account) != TargetState::kReady) {
    ListNewAccountTrees(root, row.source.CStr(), NewProfilePath(account.CStr()).CStr(), mask, found);
  } else if (GetAccountSidAndProfile(account.CStr(), target.sid, &target.profile)) {
    ListRestoreTrees(root, row.source.CStr(), target, mask, places, found);
  }
}

std::vector<RunTree> ListRestoreRun(const RestoreRoot& root, const RestoreSelection& selection,
                                    const ProtectedPlaces& places, const StopWord* stop) {
  RestoreTrees found;
  for (const RestoreUserRow& row : selection.users) {
    if (IsStopAsked(stop)) break;
    if (row.isTicked) ListRestoreRow(root, row, selection.folderMask & kMaskAll, places, found);
  }
  for (const RestoreFolderRow& row : selection.extraFolders) {
    RunTree tree;
    if (IsStopAsked(stop)) break;
    if (!row.isTicked) continue;
    if (ExtraFolderTree(root, ExtraFolderKey(root, row).CStr(), row.target.CStr(), tree)) {
      found.trees.push_back(tree);
    }
  }
  return found.trees;
}

WString NewProfilePath(const wchar_t* account) {
  wchar_t folder[MAX_PATH] = {};
  DWORD size = MAX_PATH;
  if (!GetProfilesDirectoryW(folder, &size)) return WString();
  return PathBelow(WString(folder), account);
}
