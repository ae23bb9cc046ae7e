#include "support/operation_run.h"

#include "operations/copy_move_selection.h"
#include "support/copy_run.h"

namespace {

OperationRun& RunOf(void* owner) { return *static_cast<OperationRun*>(owner); }

}  // namespace

OperationRun::OperationRun(OperationKind kind, TestSystem system)
    : machine(system), files(machine.files), kind_(kind) {
  app.logPath = files / "log.txt";
  app.logSection = static_cast<int32_t>(kLogBackup) + static_cast<int32_t>(kind);
  app.windowsVersion = 10.0;
  observer_.owner = this;
  observer_.phaseBegins = [](void* owner, const wchar_t*, const wchar_t* target) {
    OperationRun& run = RunOf(owner);
    run.told.push_back(run.files.Shown(Utf8(target)));
    if (++run.phases == run.stopAtPhase) run.context->stop = 1;
  };
  observer_.itemFailed = [](void* owner, const wchar_t* text, uint32_t) {
    RunOf(owner).told.push_back(RunOf(owner).files.Shown(Utf8(text)));
  };
  NewRecord();
}

OperationContext& OperationRun::NewRecord() {
  const double version = context ? context->sourceVersion : 0.0;
  const bool moves = context && context->moveFiles;
  told.clear();
  phases = 0;
  context = NewContext(app, &observer_);
  context->kind = kind_;
  context->document = &document;
  context->sourceVersion = version;
  context->moveFiles = moves;
  return *context;
}

int32_t OperationRun::Run() {
  switch (kind_) {
    case kBackupOperation:
      return app.RunBackupWorker(*context);
    case kRestoreOperation:
    case kRestoreFromOperation:
      return app.RunRestoreWorker(*context);
    case kCopyMoveOperation:
      return app.RunCopyMoveWorker(*context);
  }
  return 0;
}

bool OperationRun::IsTold(const std::string& part) const {
  for (const std::string& line : told) {
    if (line.find(part) != std::string::npos) return true;
  }
  return false;
}

RestoreRun::RestoreRun(bool isSet, double version, TestSystem system)
    : OperationRun(isSet ? kRestoreOperation : kRestoreFromOperation, system), isSet_(isSet) {
  context->sourceVersion = version;
  files.File(isSet ? "set/BackupInfo.grxsv" : "old/BackupInfo.grxsv", "");
  document.path = Root() + L"\\BackupInfo.grxsv";
}

void RestoreRun::Select(uint32_t mask, std::initializer_list<std::pair<const char*, const char*>> targets) {
  document.SetValue(L"Settings", L"RTUserFolders", Wide(std::to_string(mask)).CStr());
  for (const auto& [source, target] : targets) {
    document.SetValue(L"RTBackupUsers", Wide(source).CStr(), Wide(target).CStr());
  }
}

void RestoreRun::SelectExtra(const std::string& key, const WString& target) {
  document.SetValue(isSet_ ? L"RTExtraFolders" : L"RTExtraFolders2", Wide(key).CStr(), target.CStr());
}

CopyMoveRun::CopyMoveRun(uint32_t mask, bool isProfile, bool isMove) : OperationRun(kCopyMoveOperation) {
  files.Folder("from");
  WriteCopyMoveSelection(document, {files / "from", files / "to", isProfile, mask, false});
  context->moveFiles = isMove;
}
