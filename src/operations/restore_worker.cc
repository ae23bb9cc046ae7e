// The restore worker: which account, and which of its folders, receives what.
#include <windows.h>

#include "core/app_object.h"
#include "operations/copy_failure.h"
#include "operations/copy_walk.h"
#include "operations/document_keys.h"
#include "operations/drive_presence.h"
#include "operations/operation_context.h"
#include "operations/path_queries.h"
#include "operations/phase_runner.h"
#include "operations/protected_places.h"
#include "operations/restore_extra_folders.h"
#include "operations/restore_selection.h"
#include "operations/restore_targets.h"
#include "operations/restore_trees.h"
#include "operations/run_overlap.h"
#include "operations/status_lines.h"
#include "users/account_creation.h"
#include "users/account_facts.h"
#include "users/account_lookup.h"
#include "users/local_groups.h"
#include "users/user_hives.h"
#include "users/user_table.h"

namespace {

class RestoreWorker {
 public:
  explicit RestoreWorker(OperationContext& context)
      : context_(context), document_(*context.document), runner_(context), places_(*LoadUserTable()) {
    root_.folder = SetFolderOf(document_.path.CStr());
    root_.isSet = context.kind == kRestoreOperation;
    root_.version = context.sourceVersion;
  }

  int32_t Run() { return runner_.End(RunAll()); }

 private:
  // False if the run was stopped, here and below.
  bool RunAll();
  bool RunUsers(const std::vector<KeyEntry>& entries, uint32_t mask);
  bool RunUser(const KeyEntry& entry, uint32_t mask);
  bool RunExtraFolders(const std::vector<RestoreFolder>& folders);

  bool MakeAccount(const KeyEntry& entry, const WString& account);
  DWORD AddAccount(const AccountToCreate& wanted, const WString& account);
  bool HasSource(const WString& source);
  void ReportFolders(const RestoreTrees& trees, const WString& account, const RestoreTarget& target);
  bool IsOverlapping(const std::vector<RunTree>& trees);

  OperationContext& context_;
  IniDocument& document_;
  PhaseRunner runner_;
  ProtectedPlaces places_;
  RestoreRoot root_;
};

bool RestoreWorker::RunAll() {
  context_.copyOptions = document_.GetNumber(kSettingsSection, kRestoreOptionsKey);
  // A set holds what the backup let through, so that nothing of it is left out again.
  if (root_.isSet) context_.attributeMask = 0;
  const uint32_t mask = document_.GetNumber(kSettingsSection, kRestoreUserFoldersKey);
  const std::vector<KeyEntry> users = ReadKeys(document_, kRestoreUsersSection);
  for (const KeyEntry& entry : users) AddTargetProfile(entry.value, places_);
  const std::vector<RestoreFolder> folders =
      ListRestoreFolders(root_, document_, places_, context_.chosenPlaces);
  if (mask != 0 && !RunUsers(users, mask)) return false;
  return !IsStopped(context_) && RunExtraFolders(folders);
}

bool RestoreWorker::RunUsers(const std::vector<KeyEntry>& entries, uint32_t mask) {
  for (const KeyEntry& entry : entries) {
    if (IsStopped(context_) || !RunUser(entry, mask)) return false;
  }
  return true;
}

bool RestoreWorker::RunUser(const KeyEntry& entry, uint32_t mask) {
  WString account;
  if (!IsPlainName(entry.key)) {
    ReportFailure(context_, kCannotFindProfile, entry.key.CStr(), ERROR_INVALID_NAME);
    return true;
  }
  if (IsToBeCreated(entry.value.CStr(), account) && !MakeAccount(entry, account)) return true;
  RestoreTarget target;
  if (!GetAccountSidAndProfile(account.CStr(), target.sid, &target.profile)) {
    ReportFailure(context_, kCannotFindProfile, account.CStr(), ERROR_NO_SUCH_USER);
    return true;
  }
  places_.AddTargetProfile(target.profile.CStr());
  if (!HasSource(entry.key)) return true;
  RestoreTrees found;
  ListRestoreTrees(root_, entry.key.CStr(), target, mask, places_, found);
  ReportFolders(found, account, target);
  if (IsOverlapping(found.trees)) return true;
  return runner_.RunTrees(found.trees, IsNamedRestoreFolder);
}

// An account without a folder passes by without a word; one that is there and can't be looked at doesn't.
bool RestoreWorker::HasSource(const WString& source) {
  const WString folder = UserFolderInRoot(root_, source.CStr());
  const DWORD attributes = PathAttributes(folder.CStr());
  DWORD error = ERROR_DIRECTORY;
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    error = GetLastError();
    if (IsMissingOnItsDrive(folder.CStr(), error)) return false;
  } else if (attributes & FILE_ATTRIBUTE_DIRECTORY) {
    return true;
  }
  ReportFailure(context_, kCannotReadDirectory, folder.CStr(), error);
  return false;
}

// False if there is no account with a profile then, which has been told.
bool RestoreWorker::MakeAccount(const KeyEntry& entry, const WString& account) {
  ShowAccountCreation(context_, entry.key.CStr(), account.CStr());
  const WString value(document_.GetValue(kUsersSection, entry.key.CStr()));
  const AccountToCreate wanted =
      DescribeAccountToCreate(value.CStr(), entry.key, account, context_.administrators);
  DWORD error = NO_ERROR;
  switch (StateOfTarget(account)) {
    case TargetState::kReady:
      return true;
    case TargetState::kLacksProfile:
      CompleteUserAccount(account.CStr(), wanted.fullName.CStr(), wanted.type);
      break;
    case TargetState::kNew:
    case TargetState::kGroup:  // the system tells why not
      error = AddAccount(wanted, account);
      break;
    case TargetState::kImpossible:
      ReportFailure(context_, kCannotCreateAccount, account.CStr(), ERROR_INVALID_ACCOUNT_NAME);
      return false;
  }
  if (LacksGroup(account.CStr())) ReportFailure(context_, kCannotSetGroup, account.CStr(), NO_ERROR);
  const TargetState state = StateOfTarget(account);
  if (state == TargetState::kReady) return true;
  if (error == NO_ERROR) {
    error = state == TargetState::kLacksProfile ? ERROR_PATH_NOT_FOUND : ERROR_NO_SUCH_USER;
  }
  ReportFailure(context_, kCannotFindProfile, account.CStr(), error);
  return false;
}

// Why that failed, where the system told.
DWORD RestoreWorker::AddAccount(const AccountToCreate& wanted, const WString& account) {
  SetLastError(NO_ERROR);
  const bool isMade = CreateUserAccount(account.CStr(), wanted.fullName.CStr(), wanted.type, nullptr);
  const DWORD error = isMade ? NO_ERROR : GetLastError();
  AccountFacts facts;
  if (GetAccountFacts(account.CStr(), facts)) context_.createdAccounts.Add(account.CStr());
  return error;
}

// A folder of the target account whose place nobody knows, or where a restore doesn't write.
void RestoreWorker::ReportFolders(const RestoreTrees& trees, const WString& account,
                                  const RestoreTarget& target) {
  HiveProblem problem;
  if (trees.notFound.count != 0 && FindHiveProblem(target.sid.CStr(), target.profile.CStr(), problem)) {
    ReportFailure(context_, kCannotLoadHive, problem.file.CStr(), static_cast<DWORD>(problem.status));
  }
  for (uint32_t i = 0; i < trees.notFound.count; i++) {
    ReportFailure(context_, kCannotFindFolder, PathBelow(account, trees.notFound[i].CStr()).CStr(), NO_ERROR);
  }
  for (uint32_t i = 0; i < trees.protectedPlaces.count; i++) {
    ReportFailure(context_, kProtectedFolder, trees.protectedPlaces[i].CStr(), NO_ERROR);
  }
}

// Whoever starts a run looks at this, too; only here are the folders of a new account known.
bool RestoreWorker::IsOverlapping(const std::vector<RunTree>& trees) {
  WString source, target;
  if (!FindOverlap(trees, source, target)) return false;
  ReportFailure(context_, kSourceIsTarget, source.CStr(), NO_ERROR);
  return true;
}

bool RestoreWorker::RunExtraFolders(const std::vector<RestoreFolder>& folders) {
  for (const RestoreFolder& folder : folders) {
    if (folder.failure) {
      ReportFailure(context_, folder.failure, folder.failedItem.CStr(), folder.error);
    } else if (!IsOverlapping({folder.tree})) {
      runner_.RunOne(folder.tree);
    }
    if (IsStopped(context_)) return false;
  }
  return true;
}

}  // namespace

int32_t AppObject::RunRestoreWorker(OperationContext& context) {
  if (!context.document) return 0;
  // Of another installation the selection may be in memory alone, since its disk needn't be writable.
  if (context.kind == kRestoreOperation && !IsFilePath(context.document->path.CStr())) return 0;
  return RestoreWorker(context).Run();
}
