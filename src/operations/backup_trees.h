// backup_trees.h
//
// The trees of a backup: what is copied where, in the order in which the worker goes through them.
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/wstring_array.h"
#include "operations/backup_selection.h"
#include "operations/run_tree.h"

// The trees of one account.
struct UserTrees {
  WString sid, profile;
  WString target;  // <set>\Users\<name>
  std::vector<RunTree> trees;
  WStringArray notFound;  // names of the folders whose place isn't known
};

// The trees of the account `name` for the bits of `mask`. Loads the account's hive. False if the account
// has no SID or no profile.
bool ListUserTrees(const wchar_t* name, const wchar_t* setFolder, uint32_t mask, double windowsVersion,
                   UserTrees& user);

// The names of profile folders that don't belong to "All other folders", each between bars. Taken from
// the folders of the account that the program runs as, and the console user's Downloads.
WString OtherFolderExclusions(const wchar_t* consoleSid, const wchar_t* consoleProfile);

// All trees of a run: the ticked accounts, then the ticked extra folders. Accounts that can't be found
// are passed over.
std::vector<RunTree> ListBackupTrees(const BackupSelection& selection, const wchar_t* setFolder,
                                     double windowsVersion);
