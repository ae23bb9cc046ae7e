// backup_run.h
//
// A run of the backup worker in a test, into the folder "set" of its place.
#pragma once
#include "operations/backup_set.h"
#include "support/operation_run.h"

class BackupRun : public OperationRun {
 public:
  BackupRun() : OperationRun(kBackupOperation) { document.path = files / "set/BackupInfo.grxsv"; }

  void Select(const wchar_t* mask, std::initializer_list<const wchar_t*> names) {
    document.SetValue(kSettingsSection, kUserFoldersKey, mask);
    for (const wchar_t* name : names) document.SetValue(kBackupUsersSection, name, L"1");
  }
};
