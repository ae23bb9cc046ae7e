#include "operations/restore_extra_folders.h"

#include "operations/backup_set.h"
#include "operations/copy_failure.h"
#include "operations/document_keys.h"
#include "operations/held_place.h"
#include "operations/path_queries.h"
#include "operations/plain_path.h"

namespace {

bool IsChosen(const WString& target, const WStringArray* chosen) {
  for (uint32_t i = 0; chosen && i < chosen->count; i++) {
    if (chosen->items[i] == target) return true;
  }
  return false;
}

RestoreFolder MakeRestoreFolder(const RestoreRoot& root, const KeyEntry& entry, const ProtectedPlaces& places,
                                const WStringArray* chosen) {
  RestoreFolder folder;
  if (!ExtraFolderTree(root, entry.key.CStr(), entry.value.CStr(), folder.tree)) {
    folder.failure = kCannotReadDirectory;
    folder.failedItem = entry.key;
    folder.error = ERROR_INVALID_NAME;
    return folder;
  }
  const HeldPlace place = FindHeldPlace(entry.value);
  folder.tree.target = place.folder;
  folder.tree.targetBase = place.base;
  // Where it leads by now is what counts, and not where it led when the choice was made.
  const PlaceProtection protection = places.ProtectionOf(place.folder.CStr());
  if (protection == PlaceProtection::kFree || IsChosen(entry.value, chosen)) return folder;
  folder.failure = kProtectedPlace;
  folder.failedItem.Concat(entry.value.CStr(), L", which ", ProtectionText(protection));
  return folder;
}

}  // namespace

bool ExtraFolderTree(const RestoreRoot& root, const wchar_t* key, const wchar_t* target, RunTree& tree) {
  if (!IsPlainRelativePath(key) || !IsPlainFullPath(target)) return false;
  if (root.isSet && !IsPlainName(WString(key))) return false;
  const WString folder = root.isSet ? PathBelow(root.folder, kExtraFoldersFolder) : root.folder;
  tree.source = PathBelow(folder, key);
  tree.sourceBase = root.folder;
  tree.target = target;
  return true;
}

std::vector<RestoreFolder> ListRestoreFolders(const RestoreRoot& root, IniDocument& document,
                                              const ProtectedPlaces& places, const WStringArray* chosen) {
  std::vector<RestoreFolder> folders;
  const wchar_t* section = root.isSet ? kRestoreExtraFoldersSection : kRestoreFromExtraFoldersSection;
  for (const KeyEntry& entry : ReadKeys(document, section)) {
    folders.push_back(MakeRestoreFolder(root, entry, places, chosen));
  }
  return folders;
}
