// restore_trees.h
//
// The trees of a restore: what goes from a set or another installation into the folders of an account,
// in the order of the run.
#pragma once
#include <vector>

#include "foundation/wstring_array.h"
#include "operations/protected_places.h"
#include "operations/run_tree.h"

// Where the data comes from. Everything below `folder` may be a stranger's work.
struct RestoreRoot {
  WString folder;        // a set, or the root of another installation; without a trailing backslash
  bool isSet = true;     // false for another installation
  double version = 0.0;  // Windows version of the other installation
};

// The folder of the accounts before Windows Vista.
inline constexpr wchar_t kOldUsersFolder[] = L"Documents and Settings";

// The folder below the root that holds the accounts' folders, as it is called there.
const wchar_t* UsersFolderName(const RestoreRoot& root);

// <root>\<folder of the accounts>\<name>
WString UserFolderInRoot(const RestoreRoot& root, const wchar_t* name);

// Whose folders receive the data.
struct RestoreTarget {
  WString sid, profile;
};

// The trees of one account, and the folders that have none.
struct RestoreTrees {
  std::vector<RunTree> trees;
  WStringArray notFound;         // folders that the target account's hive doesn't name
  WStringArray protectedPlaces;  // folders that it puts where a restore doesn't write: value, path, reason
};

// The trees of the account `source` of the root for the bits of `mask`, into the folders that the target
// account's own hive names. Loads that hive.
void ListRestoreTrees(const RestoreRoot& root, const wchar_t* source, const RestoreTarget& target,
                      uint32_t mask, const ProtectedPlaces& places, RestoreTrees& trees);

// The same for an account that is yet to be made, with the folders that a new profile has.
void ListNewAccountTrees(const RestoreRoot& root, const wchar_t* source, const wchar_t* profile,
                         uint32_t mask, RestoreTrees& trees);

// Whether the folder `name` belongs to one of the named folders, and so not to "All other folders".
bool IsNamedRestoreFolder(const wchar_t* name);
