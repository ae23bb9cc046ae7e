// backup_trees.h
//
// The trees of a backup: what is copied where, in the order in which the worker goes through them.
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/wstring_array.h"
#include "operations/backup_selection.h"

struct BackupTree {
  WString source;
  WString target;
  bool fast = false;          // application data
  bool otherFolders = false;  // not the source itself, but each of its other folders by its name
  uint32_t bit = 0;           // of the folder mask; 0 for an extra folder
};

// The trees of one account.
struct UserTrees {
  WString sid, profile;
  WString target;  // <set>\Users\<name>
  std::vector<BackupTree> trees;
  WStringArray notFound;  // names of the folders whose place isn't known
};

// The trees of the account `name` for the bits of `mask`. Loads the account's hive. False if the account
// has no SID or no profile.
bool ListUserTrees(const wchar_t* name, const wchar_t* setFolder, uint32_t mask, double windowsVersion,
                   UserTrees& user);

// The names of profile folders that don't belong to "All other folders", each between bars. Taken from
// the folders of the account that the program runs as, and the console user's Downloads.
WString OtherFolderExclusions(const wchar_t* consoleSid, const wchar_t* consoleProfile);

// Whether the folder `name` of a profile is named in such a list.
bool IsExcludedFolder(const WString& exclusions, const wchar_t* name);

// All trees of a run: the ticked accounts, then the ticked extra folders. Accounts that can't be found
// are passed over.
std::vector<BackupTree> ListBackupTrees(const BackupSelection& selection, const wchar_t* setFolder,
                                        double windowsVersion);
