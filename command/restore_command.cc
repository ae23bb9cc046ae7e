#include "restore_command.h"

#include "dry_run.h"
#include "operation_run.h"
#include "operations/copy_failure.h"
#include "operations/restore_extra_folders.h"
#include "operations/restore_start.h"
#include "operations/restore_targets.h"
#include "profile_list.h"
#include "refusal.h"
#include "restore_plan.h"
#include "system_reason.h"
#include "users/account_lookup.h"
#include "utf8_text.h"

namespace {

constexpr uint32_t kMostNames = 20;  // a stranger's file may hold thousands

std::vector<NamedPath> PathsOf(const RestorePlan& plan) {
  return {{plan.root.isSet ? "set" : "root", plan.root.folder}, {"infoFile", plan.document.path}};
}

ExitCode RunPlan(const ConsoleArguments& arguments, RestorePlan& plan, AppObject& app,
                 ConsoleOutput& output) {
  if (!StartRestore(plan.root, plan.selection, plan.document, plan.isKept)) {
    const std::string reason = SystemReason(GetLastError());
    TellNotes(arguments,
              {"The choices of this run can't be kept in " + Quoted(plan.document.path) + " (" + reason +
               "); the run goes on without that."},
              output);
  }
  PlannedRun run;
  run.kind = plan.kind;
  run.worker = RestoreEntry;
  run.document = &plan.document;
  run.subject = plan.root.folder;
  if (plan.root.isSet) run.subject.LastComponent();
  run.attributeMask = plan.root.isSet ? 0 : plan.selection.skipAttributes;
  run.sourceVersion = plan.root.version;
  run.moves = plan.moves;
  run.administrators = &plan.administrators;
  run.chosenPlaces = &plan.chosenPlaces;
  run.leftOut = plan.leftOut;
  run.paths = PathsOf(plan);
  return RunPlanned(arguments, run, app, output);
}

// What the run would log of an account's folders.
void AddFailures(const wchar_t* text, const WString& front, const WStringArray& items, DryRunGroup& group) {
  for (uint32_t i = 0; i < items.count; ++i) {
    group.failures.push_back(Escaped(text + front + items[i]));
  }
}

DryRunGroup UserGroup(const RestorePlan& plan, const RestoreUserRow& row, WStringArray& accountsToCreate) {
  WString account;
  const bool isNew = IsToBeCreated(row.target.CStr(), account) && StateOfTarget(account) == TargetState::kNew;
  if (isNew) accountsToCreate.Add(account.CStr());
  DryRunGroup group;
  group.heading = Escaped(row.source) + " -> " + Escaped(account) + (isNew ? " (a new account)" : "");
  RestoreTrees found;
  ListRestoreRow(plan.root, row, plan.selection.folderMask, *plan.places, found);
  WString sid, profile;
  if (found.notFound.count != 0 && GetAccountSidAndProfile(account.CStr(), sid, &profile)) {
    AddHiveFailure(sid, profile, group.failures);
  }
  AddFailures(kCannotFindFolder, account + L"\\", found.notFound, group);
  AddFailures(kProtectedFolder, WString(L""), found.protectedPlaces, group);
  group.trees = std::move(found.trees);
  return group;
}

DryRunGroup ExtraFolderGroup(const RestorePlan& plan) {
  DryRunGroup group;
  group.heading = "Additional folders";
  for (const RestoreFolderRow& row : plan.selection.extraFolders) {
    RunTree tree;
    if (row.isTicked &&
        ExtraFolderTree(plan.root, ExtraFolderKey(plan.root, row).CStr(), row.target.CStr(), tree)) {
      group.trees.push_back(tree);
    }
  }
  return group;
}

ExitCode TellPlan(const ConsoleArguments& arguments, const RestorePlan& plan, ConsoleOutput& output) {
  DryRunPlan told;
  told.headline = (plan.root.isSet ? "This would restore the backup: " : "This would restore from: ") +
                  Escaped(plan.root.folder);
  told.failures = plan.leftOut;
  for (const RestoreUserRow& row : plan.selection.users) {
    if (row.isTicked) told.groups.push_back(UserGroup(plan, row, told.accountsToCreate));
  }
  DryRunGroup folders = ExtraFolderGroup(plan);
  if (!folders.trees.empty()) told.groups.push_back(std::move(folders));
  told.isExcluded = IsNamedRestoreFolder;
  told.paths = PathsOf(plan);
  return ShowDryRun(arguments, told, output);
}

// `front` and `behind` stand around the name.
void AddKeyNotes(const std::string& front, const WStringArray& keys, const std::string& behind,
                 std::vector<std::string>& notes) {
  for (uint32_t i = 0; i < keys.count && i < kMostNames; ++i) {
    notes.push_back(front + Quoted(keys.items[i]) + behind);
  }
  if (keys.count <= kMostNames) return;
  const uint32_t others = keys.count - kMostNames;
  notes.push_back(front + std::to_string(others) + (others == 1 ? " other" : " others") + behind);
}

// What the info file says and what nothing comes of.
std::vector<std::string> KeyNotes(const ConsoleArguments& arguments, const RestorePlan& plan) {
  std::vector<std::string> notes;
  AddKeyNotes("The info file names ", plan.leftOutKeys.notPlain,
              ", passed over as no plain name of a folder below " + Quoted(plan.root.folder) + ".", notes);
  AddKeyNotes("The info file names ", plan.leftOutKeys.repeated,
              " more than once, and only the first entry counts.", notes);
  uint32_t missing = 0;
  for (const RestoreFolderRow& row : plan.selection.extraFolders) missing += row.isMissing ? 1 : 0;
  if (missing != 0 && !arguments.leavesExtraFolders) {
    notes.push_back(std::to_string(missing) +
                    (missing == 1 ? " additional folder of an earlier restore is"
                                  : " additional folders of an earlier restore are") +
                    " left out, because nothing is there any more.");
  }
  return notes;
}

}  // namespace

ExitCode RunRestoreCommand(const ConsoleArguments& arguments, AppObject& app, ConsoleOutput& output) {
  app.logSection = arguments.command == ConsoleCommand::kRestore ? kLogRestore : kLogRestoreFrom;
  RestorePlan plan;
  PlanProblem problem;
  const bool isPlanned = PlanRestore(arguments, app, plan, problem);
  // A wish to stop cuts the plan short, so that its notes and its problem mean nothing.
  if (RefuseIfStopped(arguments, output)) return kExitStopped;
  TellNotes(arguments, KeyNotes(arguments, plan), output);
  TellNotes(arguments, plan.notes, output);
  if (!isPlanned) return Refuse(arguments, problem.sentence, output, problem.exitCode);
  return arguments.isDryRun ? TellPlan(arguments, plan, output) : RunPlan(arguments, plan, app, output);
}
