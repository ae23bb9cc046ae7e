#include "operations/restore_trees.h"

#include <windows.h>

#include <functional>
#include <utility>

#include "foundation/windows_version.h"
#include "operations/backup_set.h"
#include "operations/held_place.h"
#include "operations/path_queries.h"
#include "operations/plain_path.h"
#include "users/user_folders.h"

namespace {

constexpr wchar_t kFolderLocalAppDataLow[] = L"Local AppData Low";  // a name of this file's own
constexpr int32_t kLongestShownPath = 300;                          // a hive can hold any text
constexpr wchar_t kNamedFolders[] =
    L"|AppData|LocalAppData|Desktop|Documents|Downloads|Music|Pictures|Videos|Local Settings|Application "
    L"Data|";

bool HasOldLayout(const RestoreRoot& root) { return !root.isSet && root.version < kFirstNewLayout; }

bool Exists(const WString& path) { return PathAttributes(path.CStr()) != INVALID_FILE_ATTRIBUTES; }

struct DataSources {
  WString roaming, local;
};

DataSources FindApplicationData(const RestoreRoot& root, const WString& user) {
  const WString setRoaming = PathBelow(user, kAppDataFolder), setLocal = PathBelow(user, kLocalAppDataFolder);
  if (root.isSet) return {setRoaming, setLocal};
  const bool isOld = HasOldLayout(root);
  DataSources found{PathBelow(user, isOld ? L"Application Data" : L"AppData\\Roaming"),
                    PathBelow(user, isOld ? L"Local Settings\\Application Data" : L"AppData\\Local")};
  // A root may hold a set instead of an installation.
  if (IsRealFolderPath(setRoaming.CStr()) && IsRealFolderPath(setLocal.CStr())) {
    if (!Exists(found.roaming)) found.roaming = setRoaming;
    if (!Exists(found.local)) found.local = setLocal;
  }
  return found;
}

class TreeList {
 public:
  // The place of a folder of the target account; false if it has none.
  using Place = std::function<bool(const wchar_t* logicalName, HeldPlace& place)>;

  TreeList(const RestoreRoot& root, const wchar_t* source, Place place, std::vector<RunTree>& trees)
      : root_(root), user_(UserFolderInRoot(root, source)), place_(std::move(place)), trees_(trees) {}

  void Add(uint32_t mask, const wchar_t* profile);

 private:
  RunTree Tree(const WString& source, const HeldPlace& target) const;
  void AddData();

  const RestoreRoot& root_;
  const WString user_;
  const Place place_;
  std::vector<RunTree>& trees_;
};

RunTree TreeList::Tree(const WString& source, const HeldPlace& target) const {
  RunTree tree;
  tree.source = source;
  tree.sourceBase = root_.folder;
  tree.target = target.folder;
  tree.targetBase = target.base;
  return tree;
}

void TreeList::AddData() {
  const DataSources data = FindApplicationData(root_, user_);
  HeldPlace target;
  if (place_(kFolderAppData, target)) {
    AddApplicationData(trees_, Tree(data.roaming, target), ApplicationData::kRoaming);
  }
  if (!place_(kFolderLocalAppData, target)) return;
  AddApplicationData(trees_, Tree(data.local, target), ApplicationData::kLocal);
  if (place_(kFolderLocalAppDataLow, target)) {
    RunTree low = Tree(PathBelow(user_, L"AppData\\LocalLow"), target);
    low.fast = true;
    low.bit = kMaskAppData;
    trees_.push_back(low);
  }
}

void TreeList::Add(uint32_t mask, const wchar_t* profile) {
  if (mask & kMaskAppData) AddData();
  HeldPlace target;
  for (const FolderRow& row : kFolderRows) {
    if (!(mask & row.bit) || row.bit == kMaskAppData || row.bit == kMaskOther) continue;
    if (!place_(row.logicalName, target)) continue;
    trees_.push_back(Tree(PathBelow(user_, row.setFolder), target));
    trees_.back().bit = row.bit;
  }
  if (!(mask & kMaskOther)) return;
  // The profile's owner may have put a link where one of them belongs.
  RunTree others = Tree(user_, {WString(profile), WString(profile)});
  others.bit = kMaskOther;
  others.otherFolders = true;
  trees_.push_back(others);
}

// The system names no folder for it; it lies beside the local application data.
bool FindFolder(const RestoreTarget& target, const wchar_t* logicalName, WString& folder) {
  const bool isLow = WString(logicalName) == kFolderLocalAppDataLow;
  if (!GetUserFolder(target.sid.CStr(), isLow ? kFolderLocalAppData : logicalName, folder,
                     target.profile.CStr()) ||
      !IsAbsolutePath(folder)) {
    return false;
  }
  if (isLow) folder.StripTrailingBackslashes().Append(L"Low");
  return true;
}

// What a new profile has, by the logical names.
const wchar_t* NewProfileFolder(const wchar_t* logicalName) {
  const WString name(logicalName);
  if (name == kFolderAppData) return L"AppData\\Roaming";
  if (name == kFolderLocalAppData) return L"AppData\\Local";
  if (name == kFolderLocalAppDataLow) return L"AppData\\LocalLow";
  for (const FolderRow& row : kFolderRows) {
    if (row.logicalName && name == row.logicalName) return row.setFolder;
  }
  return nullptr;
}

WString ProtectedLine(const wchar_t* sid, const wchar_t* logicalName, const WString& folder,
                      PlaceProtection protection) {
  const bool isLow = WString(logicalName) == kFolderLocalAppDataLow;
  const WString value = ShellFolderValue(sid, isLow ? kFolderLocalAppData : logicalName);
  WString line;
  WString shown(folder);
  shown.Truncate(kLongestShownPath);
  line.Concat(L"HKU\\", sid, L"\\...\\", value.CStr(), isLow ? L" leads to " : L" = ", shown.CStr(),
              L", which ");
  line.Append(ProtectionText(protection));
  return line;
}

}  // namespace

const wchar_t* UsersFolderName(const RestoreRoot& root) {
  return HasOldLayout(root) ? kOldUsersFolder : kUsersFolder;
}

WString UserFolderInRoot(const RestoreRoot& root, const wchar_t* name) {
  return PathBelow(PathBelow(root.folder, UsersFolderName(root)), name);
}

void ListRestoreTrees(const RestoreRoot& root, const wchar_t* source, const RestoreTarget& target,
                      uint32_t mask, const ProtectedPlaces& places, RestoreTrees& trees) {
  const auto place = [&](const wchar_t* logicalName, HeldPlace& place) {
    WString folder;
    if (!FindFolder(target, logicalName, folder)) {
      trees.notFound.Add(logicalName);
      return false;
    }
    PlaceProtection protection = places.ProtectionOf(folder.CStr());
    if (protection == PlaceProtection::kFree) {
      place = FindHeldPlace(folder);
      // Once more, since it may lead elsewhere by now.
      protection = places.ProtectionOf(place.folder.CStr());
    }
    if (protection == PlaceProtection::kFree) return true;
    trees.protectedPlaces.Add(ProtectedLine(target.sid.CStr(), logicalName, folder, protection).CStr());
    return false;
  };
  TreeList(root, source, place, trees.trees).Add(mask, target.profile.CStr());
}

void ListNewAccountTrees(const RestoreRoot& root, const wchar_t* source, const wchar_t* profile,
                         uint32_t mask, RestoreTrees& trees) {
  const auto place = [&](const wchar_t* logicalName, HeldPlace& place) {
    const wchar_t* relative = NewProfileFolder(logicalName);
    if (relative) place = {PathBelow(WString(profile), relative), WString()};
    return relative != nullptr;
  };
  TreeList(root, source, place, trees.trees).Add(mask, profile);
}

bool IsNamedRestoreFolder(const wchar_t* name) { return IsNameInBars(WString(kNamedFolders), name); }
