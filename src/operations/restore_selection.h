// restore_selection.h
//
// What a restore is to do, and its way into the info document. The screens and the console fill one and
// the same selection. Its rows may be as many as a stranger's file has room for, so that what goes through
// them can be stopped; `stop` may be null.
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/ini_document.h"
#include "foundation/wstring_array.h"
#include "operations/backup_set.h"
#include "operations/left_out_keys.h"
#include "operations/restore_trees.h"
#include "operations/stop_word.h"
#include "users/user_table.h"

struct RestoreUserRow {
  WString source;  // name of the account in the set, or of its folder in the other installation
  WString target;  // a local account, or a name with the mark that has the account made
  bool isTicked = true;
};

struct RestoreFolderRow {
  WString source;  // of a set: the place before the backup; otherwise the full path below the root
  WString target;
  bool isTicked = true;
  bool isMissing = false;  // nothing is there any more; only in rows of another installation
};

struct RestoreSelection {
  std::vector<RestoreUserRow> users;
  uint32_t folderMask = kMaskAll;
  std::vector<RestoreFolderRow> extraFolders;
  bool onlyMissing = true;
  uint32_t skipAttributes = kSkipHiddenFiles | kSkipSystemFiles;  // of another installation only
};

// The rows that a set offers: its accounts whose folders are there, each with its target account, and its
// extra folders whose folders are there, each back to its place. All are ticked. What `selection` held
// as rows before is gone. Keys that no backup wrote are added to `leftOut`; one whose folder isn't there
// is none of them.
void ReadSetRows(IniDocument& document, const RestoreRoot& root, const UserTable& accounts,
                 RestoreSelection& selection, LeftOutKeys* leftOut = nullptr, const StopWord* stop = nullptr);

// The rows that another installation offers, by ScanSource. An extra folder that is gone has no tick.
void ReadInstallationRows(const RestoreRoot& root, const UserTable& accounts, RestoreSelection& selection,
                          LeftOutKeys* leftOut = nullptr, const StopWord* stop = nullptr);

// Makes the profile of a row's target account, if it has one, a place where this run may write.
void AddTargetProfile(const WString& target, ProtectedPlaces& places);

// The same for all ticked rows.
void AddTargetProfiles(const RestoreSelection& selection, ProtectedPlaces& places);

// Takes the ticks from extra folders that would go where a restore doesn't write of its own accord; a
// person can put them back.
void UntickProtected(const ProtectedPlaces& places, RestoreSelection& selection,
                     const StopWord* stop = nullptr);

// The key of an extra folder: its name in the set, or its path below the root. Empty if there is none.
WString ExtraFolderKey(const RestoreRoot& root, const RestoreFolderRow& row);

// Writes the selection in the order of the format. The sections RTBackupUsers and RTExtraFolders (or
// RTExtraFolders2, for another installation, with SkipAttributes behind it) are made anew. Ticked rows
// that can't be written as a key are added to `leftOut`.
void WriteRestoreSelection(IniDocument& document, const RestoreRoot& root, const RestoreSelection& selection,
                           WStringArray* leftOut = nullptr);

// Takes an extra folder that a person has removed from the rows out of the info file of the root, so that
// the next visit doesn't offer it again. True if the file held it.
bool RemoveExtraFolderRow(IniDocument& document, const RestoreRoot& root, const RestoreFolderRow& row);

// The trees of one row, ticked or not, for the bits of `mask`. The account counts as in ListRestoreRun.
void ListRestoreRow(const RestoreRoot& root, const RestoreUserRow& row, uint32_t mask,
                    const ProtectedPlaces& places, RestoreTrees& found);

// All trees of a run, to be looked at beforehand. An account that is to be made counts with the folders
// that a new profile has. Accounts that can't be found are passed over.
std::vector<RunTree> ListRestoreRun(const RestoreRoot& root, const RestoreSelection& selection,
                                    const ProtectedPlaces& places, const StopWord* stop = nullptr);

// Where the profile of an account of this name would be made.
WString NewProfilePath(const wchar_t* account);
