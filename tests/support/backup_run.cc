#include "support/backup_run.h"

#include "operations/backup_set.h"

namespace {

BackupRun& RunOf(void* owner) { return *static_cast<BackupRun*>(owner); }

}  // namespace

BackupRun::BackupRun() {
  app.logPath = machine.files / "log.txt";
  app.logSection = kLogBackup;
  app.windowsVersion = 10.0;
  document.path = machine.files / "set/BackupInfo.grxsv";
  observer_.owner = this;
  observer_.phaseBegins = [](void* owner, const wchar_t*, const wchar_t* target) {
    BackupRun& run = RunOf(owner);
    run.told.push_back(Utf8(target).substr(Utf8(run.machine.files / "set\\").size()));
    if (run.told.size() == run.stopAtPhase) run.context->stop = 1;
  };
  observer_.itemFailed = [](void* owner, const wchar_t* text, uint32_t) {
    RunOf(owner).told.push_back(Utf8(text));
  };
  NewRecord();
}

OperationContext& BackupRun::NewRecord() {
  told.clear();
  context = std::make_unique<OperationContext>();
  context->app = &app;
  context->document = &document;
  context->observer = &observer_;
  context->copyBuffer = new uint8_t[kCopyBufferSize];
  context->copyBufferSize = kCopyBufferSize;
  return *context;
}

void BackupRun::Select(const wchar_t* mask, std::initializer_list<const wchar_t*> names) {
  document.SetValue(kSettingsSection, kUserFoldersKey, mask);
  for (const wchar_t* name : names) document.SetValue(kBackupUsersSection, name, L"1");
}
