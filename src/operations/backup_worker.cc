// The backup worker: what goes where. Every tree goes through the copy phase, which does all logging and
// counting of what happens inside it.
#include <windows.h>
// The header below needs windows.h before it.
#include <objbase.h>

#include "core/app_object.h"
#include "foundation/directory_enumerator.h"
#include "operations/backup_set.h"
#include "operations/backup_trees.h"
#include "operations/copy_engine.h"
#include "operations/copy_failure.h"
#include "operations/copy_walk.h"
#include "operations/held_way.h"
#include "operations/operation_context.h"
#include "operations/path_queries.h"
#include "operations/target_flush.h"

namespace {

class BackupWorker {
 public:
  BackupWorker(AppObject& app, OperationContext& context)
      : app_(app),
        context_(context),
        document_(*context.document),
        setFolder_(SetFolderOf(context.document->path.CStr())),
        phases_(0) {}

  // False if the run was stopped.
  bool Run();
  int32_t Phases() const { return phases_; }  // those that gave true
  const WString& SetFolder() const { return setFolder_; }

 private:
  bool RunUsers(uint32_t mask);
  bool RunUser(const wchar_t* name, uint32_t mask);
  bool RunExtraFolders();
  void RunPhase(const WString& source, const WString& target, bool fast);
  void RunInnerPhase(const BackupTree& outer, const BackupTree& tree);
  void RunOtherFolders(const BackupTree& tree);
  void RunOtherFolder(const BackupTree& tree, const wchar_t* name);
  void ReportFolders(const UserTrees& user, const wchar_t* name);
  void CountLink() { context_.linksSkipped.fetch_add(1, std::memory_order_relaxed); }

  AppObject& app_;
  OperationContext& context_;
  IniDocument& document_;
  WString setFolder_;
  WString exclusions_;
  int32_t phases_;
};

bool BackupWorker::Run() {
  context_.copyOptions = document_.GetNumber(kSettingsSection, kBackupOptionsKey);
  context_.attributeMask = document_.GetNumber(kSettingsSection, kSkipAttributesKey);
  exclusions_ = OtherFolderExclusions(app_.consoleUserSid.CStr(), app_.consoleUserProfile.CStr());
  uint32_t mask = document_.GetNumber(kSettingsSection, kUserFoldersKey);
  if (mask != 0 && !RunUsers(mask)) return false;
  return !IsStopped(context_) && RunExtraFolders();
}

bool BackupWorker::RunUsers(uint32_t mask) {
  uint32_t first, end;
  document_.FindSection(kBackupUsersSection, first, end);
  if (first == 0) return true;
  for (uint32_t line = document_.NextKeyLine(first, end); line != 0;
       line = document_.NextKeyLine(line, end)) {
    WString name, value;
    if (IsStopped(context_)) return false;
    if (document_.ParseKeyLine(line, name, value) && !RunUser(name.CStr(), mask)) return false;
  }
  return true;
}

bool BackupWorker::RunUser(const wchar_t* name, uint32_t mask) {
  UserTrees user;
  if (!ListUserTrees(name, setFolder_.CStr(), mask, app_.windowsVersion, user)) {
    ReportFailure(context_, kCannotFindProfile, name, ERROR_NO_SUCH_USER);
    return true;
  }
  if (!MakeDirectoryPath(user.target.CStr())) {
    ReportTargetFailure(context_, kCannotMakeDirectory, user.target.CStr(), GetLastError());
    return true;
  }
  ReportFolders(user, name);
  const BackupTree* outer = nullptr;
  for (const BackupTree& tree : user.trees) {
    if (tree.otherFolders) {
      RunOtherFolders(tree);
    } else if (outer && IsSameOrInside(tree.source, outer->source) &&
               IsSameOrInside(tree.target, outer->target)) {
      RunInnerPhase(*outer, tree);
    } else {
      outer = &tree;
      RunPhase(tree.source, tree.target, tree.fast);
    }
    if (IsStopped(context_)) return false;
  }
  return true;
}

// A folder of a chosen account whose place nobody knows isn't in the set, and that has to be told.
void BackupWorker::ReportFolders(const UserTrees& user, const wchar_t* name) {
  for (uint32_t i = 0; i < user.notFound.count; i++) {
    WString folder;
    folder.Concat(name, L"\\", user.notFound[i].CStr());
    ReportFailure(context_, kCannotFindFolder, folder.CStr(), NO_ERROR);
  }
}

void BackupWorker::RunPhase(const WString& source, const WString& target, bool fast) {
  if (RunCopyPhase(source.CStr(), target.CStr(), context_, fast)) phases_++;
}

// The root of such a phase lies inside the tree of `outer`, where the account itself could have put a
// link, in the source as in the set.
void BackupWorker::RunInnerPhase(const BackupTree& outer, const BackupTree& tree) {
  HeldWay sourceWay, targetWay;
  switch (sourceWay.Hold(outer.source.CStr(), tree.source.CStr() + outer.source.Length(), false)) {
    case HeldWay::Result::kHeld:
      break;
    case HeldWay::Result::kMissing:
      return;
    case HeldWay::Result::kLink:
      return CountLink();
    case HeldWay::Result::kFailed:
      return ReportFailure(context_, kCannotReadDirectory, tree.source.CStr(), GetLastError());
  }
  HeldWay::Result made =
      targetWay.Hold(outer.target.CStr(), tree.target.CStr() + outer.target.Length(), true);
  if (made == HeldWay::Result::kHeld) return RunPhase(tree.source, tree.target, tree.fast);
  DWORD error = made == HeldWay::Result::kLink ? ERROR_CANT_ACCESS_FILE : GetLastError();
  ReportTargetFailure(context_, kCannotMakeDirectory, tree.target.CStr(), error);
}

void BackupWorker::RunOtherFolders(const BackupTree& tree) {
  WalkPath pattern(tree.source.CStr());
  pattern.Push(L"*");
  DirectoryEnumerator search;
  for (bool found = search.First(pattern.CStr(), kOnlyDirectories); found; found = search.Next()) {
    if (IsExcludedFolder(exclusions_, search.data.cFileName)) continue;
    if (IsLink(search.data)) {
      CountLink();
      continue;
    }
    RunOtherFolder(tree, search.data.cFileName);
    if (IsStopped(context_)) return;
  }
  if (!ListingEnded()) ReportFailure(context_, kCannotReadDirectory, tree.source.CStr(), GetLastError());
}

void BackupWorker::RunOtherFolder(const BackupTree& tree, const wchar_t* name) {
  WString source, target;
  source.Concat(tree.source.CStr(), L"\\", name);
  target.Concat(tree.target.CStr(), L"\\", name);
  HeldWay way;
  // Held, so that it is still the directory that was listed. What else is wrong, the phase tells.
  if (way.Hold(tree.source.CStr(), name, false) == HeldWay::Result::kLink) return CountLink();
  RunPhase(source, target, tree.fast);
}

bool BackupWorker::RunExtraFolders() {
  uint32_t first, end;
  document_.FindSection(kNewExtraFoldersSection, first, end);
  if (first == 0) return true;
  for (uint32_t line = document_.NextKeyLine(first, end); line != 0;
       line = document_.NextKeyLine(line, end)) {
    WString path, value;
    if (!document_.ParseKeyLine(line, path, value)) continue;
    WString target = ExtraFolderDestination(document_, setFolder_.CStr(), path.CStr());
    if (target.IsEmpty()) {
      ReportFailure(context_, kCannotReadDirectory, path.CStr(), NO_ERROR);
    } else {
      RunPhase(path, target, false);
    }
    if (IsStopped(context_)) return false;
  }
  return true;
}

OperationOutcome OutcomeOf(const OperationContext& context, bool isComplete) {
  if (!isComplete) return OperationOutcome::kStopped;
  return context.failures > 0 ? OperationOutcome::kFailures : OperationOutcome::kComplete;
}

}  // namespace

int32_t AppObject::RunBackupWorker(OperationContext& context) {
  if (!context.document) return 0;
  bool hasCom = SUCCEEDED(CoInitialize(nullptr));
  BackupWorker worker(*this, context);
  bool isComplete = worker.Run();
  FlushTarget(worker.SetFolder().CStr(), context);
  if (hasCom) CoUninitialize();
  context.outcome = OutcomeOf(context, isComplete);
  const OperationObserver* observer = context.observer;
  if (observer && observer->ended) observer->ended(observer->owner, context.outcome);
  return isComplete ? worker.Phases() : -1;
}
