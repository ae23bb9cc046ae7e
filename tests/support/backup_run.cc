#include "support/backup_run.h"

#include "operations/backup_set.h"

BackupRun::BackupRun() : OperationRun(kBackupOperation) { document.path = files / "set/BackupInfo.grxsv"; }

void BackupRun::Select(const wchar_t* mask, std::initializer_list<const wchar_t*> names) {
  document.SetValue(kSettingsSection, kUserFoldersKey, mask);
  for (const wchar_t* name : names) document.SetValue(kBackupUsersSection, name, L"1");
}
