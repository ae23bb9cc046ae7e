// The backup worker: what goes where.
#include <windows.h>

#include "core/app_object.h"
#include "foundation/file_object.h"
#include "operations/backup_set.h"
#include "operations/backup_trees.h"
#include "operations/copy_failure.h"
#include "operations/copy_walk.h"
#include "operations/document_keys.h"
#include "operations/operation_context.h"
#include "operations/path_queries.h"
#include "operations/phase_runner.h"
#include "users/user_hives.h"

namespace {

class BackupWorker {
 public:
  BackupWorker(AppObject& app, OperationContext& context)
      : app_(app),
        context_(context),
        document_(*context.document),
        setFolder_(SetFolderOf(context.document->path.CStr())),
        runner_(context) {}

  int32_t Run() { return runner_.End(RunAll()); }

 private:
  // False if the run was stopped, here and below.
  bool RunAll();
  bool RunUsers(uint32_t mask);
  bool RunUser(const wchar_t* name, uint32_t mask);
  bool RunExtraFolders();
  void ReportFolders(const UserTrees& user, const wchar_t* name);

  AppObject& app_;
  OperationContext& context_;
  IniDocument& document_;
  WString setFolder_;
  WString exclusions_;
  PhaseRunner runner_;
};

bool BackupWorker::RunAll() {
  context_.copyOptions = document_.GetNumber(kSettingsSection, kBackupOptionsKey);
  context_.attributeMask = document_.GetNumber(kSettingsSection, kSkipAttributesKey);
  if (!runner_.HoldRunTarget(setFolder_)) return true;
  exclusions_ = OtherFolderExclusions(app_.consoleUserSid.CStr(), app_.consoleUserProfile.CStr());
  uint32_t mask = document_.GetNumber(kSettingsSection, kUserFoldersKey);
  if (mask != 0 && !RunUsers(mask)) return false;
  return !IsStopped(context_) && RunExtraFolders();
}

bool BackupWorker::RunUsers(uint32_t mask) {
  for (const KeyEntry& user : ReadKeys(document_, kBackupUsersSection)) {
    if (IsStopped(context_) || !RunUser(user.key.CStr(), mask)) return false;
  }
  return true;
}

bool BackupWorker::RunUser(const wchar_t* name, uint32_t mask) {
  UserTrees user;
  if (!ListUserTrees(name, setFolder_.CStr(), mask, app_.windowsVersion, user)) {
    ReportFailure(context_, kCannotFindProfile, name,
                  user.sid.IsEmpty() ? ERROR_NO_SUCH_USER : ERROR_PATH_NOT_FOUND);
    return true;
  }
  // Also where nothing of the account is found, as a word that it was in the run.
  HeldWay way;
  const HeldWay::Result result = way.Hold(setFolder_.CStr(), user.target.CStr() + setFolder_.Length(), true);
  if (result != HeldWay::Result::kHeld) {
    ReportTargetFailure(context_, kCannotMakeDirectory, user.target.CStr(), HeldWay::ErrorOf(result));
    return true;
  }
  ReportFolders(user, name);
  return runner_.RunTrees(user.trees,
                          [this](const wchar_t* name) { return IsNameInBars(exclusions_, name); });
}

// A folder of a chosen account whose place nobody knows isn't in the set, and that has to be told.
void BackupWorker::ReportFolders(const UserTrees& user, const wchar_t* name) {
  HiveProblem problem;
  if (user.notFound.count != 0 && FindHiveProblem(user.sid.CStr(), user.profile.CStr(), problem)) {
    ReportFailure(context_, kCannotLoadHive, problem.file.CStr(), static_cast<DWORD>(problem.status));
  }
  for (uint32_t i = 0; i < user.notFound.count; i++) {
    WString folder;
    folder.Concat(name, L"\\", user.notFound[i].CStr());
    ReportFailure(context_, kCannotFindFolder, folder.CStr(), NO_ERROR);
  }
}

bool BackupWorker::RunExtraFolders() {
  for (const KeyEntry& folder : ReadKeys(document_, kNewExtraFoldersSection)) {
    RunTree tree;
    tree.source = folder.key;
    tree.targetBase = setFolder_;
    tree.target = ExtraFolderDestination(document_, setFolder_.CStr(), folder.key.CStr());
    if (tree.target.IsEmpty()) {
      ReportFailure(context_, kCannotReadDirectory, folder.key.CStr(), NO_ERROR);
    } else {
      runner_.RunOne(tree);
    }
    if (IsStopped(context_)) return false;
  }
  return true;
}

}  // namespace

int32_t AppObject::RunBackupWorker(OperationContext& context) {
  return context.document ? BackupWorker(*this, context).Run() : 0;
}
