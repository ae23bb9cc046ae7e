// backup_start.h
//
// The steps between a selection and a running backup.
#pragma once
#include "foundation/ini_document.h"
#include "operations/backup_selection.h"

// Makes the folder `target` with its parents, chooses its info file, saves what `document` held, loads
// the file or makes it, writes the selection, and saves: from here on, whatever happens to the run, the
// set can be opened. Accounts and folders that were ticked and can't be backed up are added to `leftOut`.
//
// False if the target can't be made or written to, with a sentence for a person in `problem`. What was
// made until then is taken back, an info file that was there stays as it is, and `document` is empty and
// without a path, unless it wasn't touched yet.
bool StartBackupSet(const wchar_t* target, const BackupSelection& selection, IniDocument& document,
                    WString& problem, WStringArray* leftOut = nullptr);
