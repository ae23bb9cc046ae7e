#include "restore_plan.h"

#include "folder_list.h"
#include "given_path.h"
#include "interrupt.h"
#include "operations/copy_move_selection.h"
#include "operations/path_queries.h"
#include "operations/restore_start.h"
#include "operations/run_overlap.h"
#include "operations/shared_target.h"
#include "operations/source_discovery.h"
#include "restore_accounts.h"
#include "restore_folders.h"
#include "set_document.h"
#include "utf8_text.h"

namespace {

bool OpenBackup(const ConsoleArguments& arguments, RestorePlan& plan, PlanProblem& problem) {
  if (!OpenSet(arguments.set, plan.document, problem)) return false;
  plan.root.folder = SetFolderOf(plan.document.path.CStr());
  return true;
}

bool OpenInstallation(const ConsoleArguments& arguments, const AppObject& app, RestorePlan& plan,
                      PlanProblem& problem) {
  WString& folder = plan.root.folder;
  folder = GivenPath(arguments.root);
  if (folder.IsEmpty() || !IsFolderPath(folder.CStr())) {
    return Object(problem, Quoted(folder) + (IsFilePath(folder.CStr()) ? " is a file" : " is no folder") +
                               "; give the drive or the folder that holds the other Windows, such as E: or "
                               "C:\\Windows.old.");
  }
  if (IsSystemRoot(folder.CStr(), app.systemDrive.CStr())) {
    return Object(problem, EscapedLines(SystemRootText(folder.CStr()).CStr()));
  }
  plan.root.isSet = false;
  WString hive;
  plan.root.version = GetInstallationVersion(folder.CStr(), &hive);
  if (!hive.IsEmpty()) {
    plan.notes.push_back("The version of that Windows was taken from its folders, because " + Quoted(hive) +
                         " is damaged or doesn't tell it.");
  }
  plan.moves = arguments.moves;
  plan.isKept = OpenRootDocument(folder.CStr(), plan.document);
  if (!plan.isKept) {
    plan.notes.push_back("The choices of this run aren't kept in " + Quoted(folder) + ", because " +
                         Quoted(plan.document.path) + " is no info file that can be read.");
  }
  return true;
}

// What can't stand in the info file, which carries the selection to the worker.
void LeaveOutUnwritable(RestorePlan& plan) {
  IniDocument trial;  // in memory
  WStringArray leftOut;
  WriteRestoreSelection(trial, plan.root, plan.selection, &leftOut);
  for (uint32_t item = 0; item < leftOut.count; ++item) {
    plan.leftOut.push_back(Quoted(leftOut[item]) +
                           " was left out, because its name can't stand in an info file; copy it by hand.");
    for (RestoreUserRow& row : plan.selection.users) row.isTicked &= !(row.source == leftOut[item]);
    for (RestoreFolderRow& row : plan.selection.extraFolders) row.isTicked &= !(row.source == leftOut[item]);
  }
}

bool HasTicks(const RestoreSelection& selection) {
  for (const RestoreUserRow& row : selection.users) {
    if (row.isTicked) return true;
  }
  for (const RestoreFolderRow& row : selection.extraFolders) {
    if (row.isTicked) return true;
  }
  return false;
}

bool CheckWork(const RestorePlan& plan, PlanProblem& problem) {
  const RestoreSelection& selection = plan.selection;
  if (HasTicks(selection)) return true;
  if (!plan.leftOut.empty()) return Object(problem, plan.leftOut.front());
  if (!selection.users.empty() || !selection.extraFolders.empty()) {
    return Object(
        problem, "Nothing is left to restore; skip fewer accounts, or name additional folders with --extra.");
  }
  const std::string place = Quoted(plan.root.folder);
  return Object(problem, plan.root.isSet
                             ? "The backup " + place +
                                   " holds no account and no additional folder with data in it; "
                                   "\"norvanectl info\" shows what it holds. Give another backup."
                             : "Below " + place +
                                   " no account's folder was found; give the folder that holds \"Users\" or "
                                   "\"Documents and Settings\", or name folders with --extra.");
}

bool CheckTrees(const RestorePlan& plan, PlanProblem& problem) {
  const StopWord* stop = InterruptGuard::Word();
  const std::vector<RunTree> trees = ListRestoreRun(plan.root, plan.selection, *plan.places, stop);
  WString source, target;
  if (FindOverlap(trees, source, target, stop)) {
    return Object(problem, Escaped(OverlapSentence(plan.kind, source.CStr(), target.CStr())));
  }
  if (!plan.moves) return true;
  if (const RunTree* tree = FindUnmovable(trees)) {
    return Object(problem, "Files can't be moved from " + Quoted(tree->source) + " to " +
                               Quoted(tree->target) +
                               ", which is on another drive; leave out --move, so that they are copied.");
  }
  SharedTarget shared;
  return !FindSharedTarget(trees, IsNamedRestoreFolder, shared, stop) ||
         Object(problem, Escaped(SharedTargetSentence(shared)));
}

bool CheckMove(const AppObject& app, const RestorePlan& plan, PlanProblem& problem) {
  if (!plan.moves || IsOnSystemDrive(plan.root.folder.CStr(), app.systemDrive.CStr())) return true;
  return Object(problem, "Files can only be moved within the system's drive " + Escaped(app.systemDrive) +
                             ", and " + Quoted(plan.root.folder) +
                             " is elsewhere; leave out --move, so that they are copied.");
}

}  // namespace

bool PlanRestore(const ConsoleArguments& arguments, const AppObject& app, RestorePlan& plan,
                 PlanProblem& problem) {
  RestoreSelection& selection = plan.selection;
  selection.onlyMissing = !arguments.overwrites;
  selection.skipAttributes = SkippedAttributes(arguments);
  const bool isSet = arguments.command == ConsoleCommand::kRestore;
  plan.kind = isSet ? kRestoreOperation : kRestoreFromOperation;
  if (!ReadFolderList(arguments, selection.folderMask, problem)) return false;
  if (!(isSet ? OpenBackup(arguments, plan, problem) : OpenInstallation(arguments, app, plan, problem)) ||
      !CheckMove(app, plan, problem)) {
    return false;
  }
  const std::unique_ptr<UserTable> accounts = LoadUserTable();
  if (isSet) {
    ReadSetRows(plan.document, plan.root, *accounts, selection, &plan.leftOutKeys, InterruptGuard::Word());
  } else {
    ReadInstallationRows(plan.root, *accounts, selection, &plan.leftOutKeys, InterruptGuard::Word());
  }
  if (!ChooseTargetAccounts(arguments, *accounts, plan, problem)) return false;
  plan.places.emplace(*accounts);
  AddTargetProfiles(selection, *plan.places);
  if (!ChooseRestoreFolders(arguments, app, plan, problem)) return false;
  LeaveOutUnwritable(plan);
  return CheckWork(plan, problem) && CheckTrees(plan, problem);
}
