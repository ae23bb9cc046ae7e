#include "backup_plan.h"

#include <windows.h>

#include "folder_list.h"
#include "foundation/file_object.h"
#include "foundation/unique_handle.h"
#include "interrupt.h"
#include "operations/backup_target.h"
#include "operations/backup_trees.h"
#include "operations/extra_folders.h"
#include "operations/path_queries.h"
#include "operations/real_path.h"
#include "operations/run_overlap.h"
#include "profile_list.h"
#include "same_name.h"
#include "system_reason.h"
#include "users/account_lookup.h"
#include "users/listed_profiles.h"
#include "users/user_table.h"
#include "utf8_text.h"

namespace {

// What a backup of the chosen accounts leaves behind in folders that look like theirs.
void TellOtherProfiles(const UserTable& table, bool isWhole, BackupPlan& plan) {
  const BackupSelection& selection = plan.selection;
  WString setAside;
  for (uint32_t row = 0; row < table.count; ++row) {
    const WString& name = table.userNames[row];
    const WString& profile = table.profilePaths[row];
    bool isTicked = false;
    for (uint32_t user = 0; user < selection.users.count; ++user) {
      isTicked |= selection.users[user] == name && selection.userTicked[user];
    }
    if (isTicked && GetSetAsideProfile(table.sids[row].CStr(), profile.CStr(), setAside) &&
        !IsInOneOf(setAside, selection.extraFolders)) {
      plan.setAside.push_back(SetAsideSentence(name, profile, setAside));
    }
  }
  if (isWhole) plan.notes = OtherProfileNotes(table, selection.extraFolders);
}

// All accounts are rows, as on the screen; those that were asked for are ticked.
bool ChooseUsers(const ConsoleArguments& arguments, BackupPlan& plan, PlanProblem& problem) {
  BackupSelection& selection = plan.selection;
  const std::unique_ptr<UserTable> table = LoadUserTable();
  plan.shortage = ProfileListProblem();
  for (uint32_t row = 0; row < table->count; ++row) {
    if (!table->userNames[row].IsEmpty()) selection.users.Add(table->userNames[row].CStr());
  }
  selection.userTicked.assign(selection.users.count, arguments.users.empty());
  for (const std::string& wanted : arguments.users) {
    const WString name = FromUtf8Text(wanted);
    bool isFound = false;
    for (uint32_t row = 0; row < selection.users.count; ++row) {
      if (!IsSameName(selection.users[row], name)) continue;
      selection.userTicked[row] = true;
      isFound = true;
    }
    if (isFound) continue;
    return Object(problem, !plan.shortage.empty()
                               ? plan.shortage
                               : "There is no local account " + Quoted(name) +
                                     " with a profile; \"norvanectl users\" lists those that can be "
                                     "backed up.");
  }
  TellOtherProfiles(*table, arguments.users.empty(), plan);
  return true;
}

bool ChooseExtraFolders(const ConsoleArguments& arguments, BackupSelection& selection, PlanProblem& problem) {
  WStringArray chosen;  // the same folders by their real paths, since a link would copy one a second time
  for (const std::string& wanted : arguments.extraFolders) {
    const WString folder = CleanPath(FromUtf8Text(wanted).CStr());
    const ExtraFolderProblem reason = CheckExtraFolder(folder.CStr(), WStringArray());
    if (reason != ExtraFolderProblem::kNone) {
      return Object(problem, Escaped(ExtraFolderSentence(reason, folder.CStr())));
    }
    const WString real = ResolveForComparison(folder.CStr());
    std::vector<uint32_t> superseded;
    const bool isCovered = CoversFolder(chosen, real.CStr(), superseded);
    // The screen takes the smaller folder's row away; on a command line both were meant.
    if (isCovered || !superseded.empty()) {
      const WString& inner = isCovered ? folder : selection.extraFolders[superseded.back()];
      return Object(problem, Escaped(ExtraFolderSentence(ExtraFolderProblem::kCovered, inner.CStr())));
    }
    chosen.Add(real.CStr());
    selection.extraFolders.Add(folder.CStr());
    selection.extraTicked.push_back(true);
  }
  return true;
}

bool ChooseTarget(const ConsoleArguments& arguments, const AppObject& app, BackupPlan& plan,
                  PlanProblem& problem) {
  const WString given = arguments.hasName
                            ? FromUtf8Text(arguments.name)
                            : DefaultBackupName(app.computerName.CStr(), app.consoleUserName.CStr());
  plan.name = CleanBackupName(given.CStr());
  if (plan.name.IsEmpty()) {
    return Object(problem, "The name " + Quoted(given) +
                               " can't be a folder's name; give another one with --name, without "
                               "\\ / : * ? \" < > | and not that of a device.");
  }
  WString parent = ExpandParentFolder(FromUtf8Text(arguments.to).CStr());
  if (parent.IsEmpty()) {
    return Object(problem,
                  "The folder that --to gives is empty; give the one in which the backup's folder is "
                  "to be made, such as --to D:\\Backups.");
  }
  // "D:" is the drive's root here, and not the current folder of that drive.
  if (parent.Length() != 2 || parent.buffer[1] != L':') parent = CleanPath(parent.CStr());
  plan.target = BackupTargetFolder(parent.CStr(), plan.name.CStr());
  return true;
}

bool HasProfile(const WString& account) {
  WString sid, profile;
  return GetAccountSidAndProfile(account.CStr(), sid, &profile);
}

// Takes out the accounts that get no key, so that they are told of and don't take part in what follows.
bool LeaveOutUnknown(const ConsoleArguments& arguments, BackupPlan& plan, PlanProblem& problem) {
  IniDocument trial;  // in memory
  WStringArray leftOut;
  WriteBackupSelection(trial, plan.selection, &leftOut);
  bool hasWork = plan.selection.extraFolders.count != 0;
  for (uint32_t row = 0; row < plan.selection.users.count; ++row) {
    if (!plan.selection.userTicked[row]) continue;
    bool isLeftOut = false;
    for (uint32_t item = 0; item < leftOut.count; ++item) {
      if (leftOut[item] == plan.selection.users[row]) isLeftOut = true;
    }
    if (isLeftOut) {
      plan.leftOut.Add(plan.selection.users[row].CStr());
      plan.selection.userTicked[row] = false;
    } else if (plan.shortage.empty() || HasProfile(plan.selection.users[row])) {
      hasWork = true;
    }
  }
  if (!hasWork && !plan.shortage.empty()) return Object(problem, plan.shortage);
  // Those that were named are all there.
  if (!arguments.users.empty()) plan.shortage.clear();
  if (hasWork) return true;
  return Object(problem,
                plan.leftOut.count == 0
                    ? "There is no local account with a profile; give folders to back up with --extra."
                    : "The system tells nothing about the chosen accounts, so that there is nothing to "
                      "back up; give other accounts with --user, or folders with --extra.");
}

// The nearest folder above the target, or the target itself, that is there already.
bool FindExisting(const WString& target, WString& existing) {
  existing = target;
  while (PathAttributes(existing.CStr()) == INVALID_FILE_ATTRIBUTES) {
    const int32_t before = existing.Length();
    existing.ParentPath();
    if (existing.Length() == before) break;
  }
  if (existing.Length() == 2 && existing.buffer[1] == L':') existing.Append(L"\\");
  return PathAttributes(existing.CStr()) != INVALID_FILE_ATTRIBUTES;
}

// Whether folders can be made in `folder`, without making any.
bool TakesFolders(const WString& folder, DWORD& error) {
  WString path(folder);
  const UniqueFile handle(CreateFileW(path.AddLongPathPrefix().CStr(), FILE_ADD_FILE | FILE_ADD_SUBDIRECTORY,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  error = handle ? NO_ERROR : GetLastError();
  // Only these two are an answer; whatever else may be wrong shows when the folder is made.
  return error != ERROR_ACCESS_DENIED && error != ERROR_WRITE_PROTECT;
}

bool CheckTarget(const BackupPlan& plan, const AppObject& app, PlanProblem& problem) {
  WString source, target;
  if (FindOverlap(ListBackupTrees(plan.selection, plan.target.CStr(), app.windowsVersion), source, target,
                  InterruptGuard::Word())) {
    return Object(problem, Escaped(OverlapSentence(kBackupOperation, source.CStr(), target.CStr())));
  }
  WString existing;
  if (!FindExisting(plan.target, existing)) {
    return Object(problem, "The place of the folder " + Quoted(plan.target) +
                               " isn't there; check the drive or the share that --to gives.");
  }
  if (IsFilePath(existing.CStr())) {
    return Object(problem,
                  Quoted(existing) + " is a file; give another folder with --to, or another --name.");
  }
  DWORD error = NO_ERROR;
  if (!TakesFolders(existing, error)) {
    return Object(problem, "The folder " + Quoted(existing) + " can't be written to (" + SystemReason(error) +
                               "); give with --to a folder that you may write to.");
  }
  const WString infoFile = ChooseInfoFile(plan.target.CStr());
  const InfoFileState state = CheckInfoFile(infoFile.CStr());
  if (state == InfoFileState::kReadable || state == InfoFileState::kMissing) return true;
  return Object(problem, Escaped(InfoFileSentence(state, infoFile.CStr())));
}

}  // namespace

bool PlanBackup(const ConsoleArguments& arguments, const AppObject& app, BackupPlan& plan,
                PlanProblem& problem) {
  BackupSelection& selection = plan.selection;
  selection.updateOnly = arguments.updateOnly;
  selection.skipAttributes = SkippedAttributes(arguments);
  return ReadFolderList(arguments, selection.folderMask, problem) &&
         ChooseTarget(arguments, app, plan, problem) && ChooseExtraFolders(arguments, selection, problem) &&
         ChooseUsers(arguments, plan, problem) && LeaveOutUnknown(arguments, plan, problem) &&
         CheckTarget(plan, app, problem);
}

std::string LeftOutSentence(const WString& account) {
  return "The account " + Quoted(account) + " was left out, because the system tells nothing about it.";
}
