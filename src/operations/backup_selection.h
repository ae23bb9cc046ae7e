// backup_selection.h
//
// What a backup is to hold, and its way into the info document and back. The Backup screen and the
// console fill one and the same selection.
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/ini_document.h"
#include "foundation/wstring_array.h"
#include "operations/backup_set.h"
#include "operations/backup_target.h"

struct BackupSelection {
  WStringArray users;            // the names of all accounts shown
  std::vector<bool> userTicked;  // one for each of them; missing ones are unticked
  uint32_t folderMask = kMaskAll;
  WStringArray extraFolders;      // all rows of the list
  std::vector<bool> extraTicked;  // one for each of them; missing ones are unticked
  bool updateOnly = false;        // copy only new and outdated files
  uint32_t skipAttributes = kSkipHiddenFiles | kSkipSystemFiles;

  bool IsUserTicked(uint32_t row) const { return row < userTicked.size() && userTicked[row]; }
  bool IsExtraTicked(uint32_t row) const { return row < extraTicked.size() && extraTicked[row]; }
};

// Chooses the info file of the folder `target`, which exists, saves what `document` held, and loads the
// file or makes it empty. False if it can't be made or isn't one, with a sentence for a person in
// `problem`; `document` isn't touched then. `fileMade` tells whether the file is new.
bool PrepareBackupDocument(const wchar_t* target, IniDocument& document, WString* problem = nullptr,
                           bool* fileMade = nullptr);

// Writes the selection in the order of the format: settings, accounts, extra folders. The sections
// BackupUsers and NewExtraFolders are made anew; Users and ExtraFolders keep keys of earlier runs.
// Accounts that the account database doesn't know get no key, and extra folders without a digest or with
// a path that can't be a key aren't backed up; the ticked ones among them are added to `leftOut`.
void WriteBackupSelection(IniDocument& document, const BackupSelection& selection,
                          WStringArray* leftOut = nullptr);

// Reads a document back: ticks the accounts of `selection.users` that the document backs up and takes
// all else from it. Accounts of the document that aren't among the rows don't count.
void ReadBackupSelection(IniDocument& document, BackupSelection& selection);
