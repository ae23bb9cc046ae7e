// source_discovery.h
//
// What lies under a root that no program prepared: another volume, a Windows.old folder, the disk of a
// dead machine. Which Windows it held, which of its folders are accounts, and what an earlier run there
// left as its extra folders. Nothing here changes the root. Whoever made it may mean ill: no link below
// it is followed, and a hive or an info file that makes no sense counts as none.
#pragma once
#include "foundation/wstring_array.h"
#include "operations/left_out_keys.h"
#include "operations/stop_word.h"
#include "users/user_table.h"

// Windows version of the installation under `root`, as major + minor / 10; 0.0 if nothing is recognised.
// Asks the installation's own registry first, and its folders otherwise. Needs the backup and restore
// privileges for the former. `silentHive`, which may be null, gets the path of a registry that is there and
// doesn't tell its version, such as a damaged one; it becomes empty otherwise.
double GetInstallationVersion(const wchar_t* root, WString* silentHive = nullptr);

// Whether the folder has at least 4 entries that are neither hidden nor system files nor links.
bool IsPopulatedFolder(const wchar_t* folder);

// Whether the folder is a user's profile: it holds a hive or application data.
bool IsUserProfileFolder(const wchar_t* folder);

// Rows for a person to choose from.
struct SourceScan {
  WStringArray users, userTargets;          // folder name and the account that it goes to
  WStringArray extraFolders, extraTargets;  // full source path and target of an earlier run
};

// `version` is that of GetInstallationVersion; `accounts` are those of this machine. What `scan` held
// before is gone. A root that can't be read gives empty lists. Extra folders that would lead out of the root
// are added to `leftOut` instead. `stop` may be null.
void ScanSource(const wchar_t* root, double version, const UserTable& accounts, SourceScan& scan,
                LeftOutKeys* leftOut = nullptr, const StopWord* stop = nullptr);
