// restore_extra_folders.h
//
// The extra folders of a restore: which of them a run brings back, and to where.
#pragma once
#include <windows.h>

#include <vector>

#include "foundation/ini_document.h"
#include "operations/restore_trees.h"

// The tree of an extra folder, whose key in the info file is `key`: a name in the set, or a path below
// the root of another installation. False if the key leads elsewhere or the target is no full path.
bool ExtraFolderTree(const RestoreRoot& root, const wchar_t* key, const wchar_t* target, RunTree& tree);

// An extra folder of a run, or why there is nothing to do for it.
struct RestoreFolder {
  RunTree tree;
  const wchar_t* failure = nullptr;  // the log's text; null where the tree is to be run
  WString failedItem;                // stands behind it
  DWORD error = NO_ERROR;            // the system's code
};

// Those of the info file, each target with the links of this moment resolved: a run asks before it writes
// anything, since an account in it may change what leads to a later target. `chosen` has the targets that a
// person asked for although a restore doesn't write there of its own accord; it may be null.
std::vector<RestoreFolder> ListRestoreFolders(const RestoreRoot& root, IniDocument& document,
                                              const ProtectedPlaces& places, const WStringArray* chosen);
