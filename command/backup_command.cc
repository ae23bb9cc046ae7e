#include "backup_command.h"

#include "backup_plan.h"
#include "dry_run.h"
#include "operation_run.h"
#include "operations/backup_start.h"
#include "operations/backup_target.h"
#include "operations/backup_trees.h"
#include "operations/path_queries.h"
#include "profile_list.h"
#include "refusal.h"
#include "system_reason.h"
#include "utf8_text.h"

namespace {

// The set's folder and info file, which can be opened from here on whatever becomes of the run.
bool StartSet(const BackupPlan& plan, IniDocument& document, PlanProblem& problem) {
  WString reason;
  if (StartBackupSet(plan.target.CStr(), plan.selection, document, reason)) return true;
  const DWORD error = GetLastError();
  // That text is made for a box, which stands beside the field with the folder.
  return Object(problem, reason == kFolderNotMadeText
                             ? "The folder " + Quoted(plan.target) + " can't be made (" +
                                   SystemReason(error) + "); give with --to a folder that you may write to."
                             : Escaped(reason));
}

// What isn't in the set from the start.
std::vector<std::string> LeftOutSentences(const BackupPlan& plan) {
  std::vector<std::string> sentences;
  if (!plan.shortage.empty()) sentences.push_back(plan.shortage);
  for (uint32_t row = 0; row < plan.leftOut.count; ++row) {
    sentences.push_back(LeftOutSentence(plan.leftOut[row]));
  }
  sentences.insert(sentences.end(), plan.setAside.begin(), plan.setAside.end());
  return sentences;
}

ExitCode RunPlan(const ConsoleArguments& arguments, const BackupPlan& plan, AppObject& app,
                 ConsoleOutput& output) {
  IniDocument document;
  PlanProblem problem;
  if (!StartSet(plan, document, problem))
    return Refuse(arguments, problem.sentence, output, problem.exitCode);
  PlannedRun run;
  run.kind = kBackupOperation;
  run.worker = BackupEntry;
  run.document = &document;
  run.subject = plan.name;
  run.copyOptions = document.GetNumber(kSettingsSection, kBackupOptionsKey);
  run.attributeMask = document.GetNumber(kSettingsSection, kSkipAttributesKey);
  run.leftOut = LeftOutSentences(plan);
  run.paths = {{"set", plan.target}, {"infoFile", document.path}};
  return RunPlanned(arguments, run, app, output);
}

DryRunGroup UserGroup(const wchar_t* name, const BackupPlan& plan, const AppObject& app) {
  DryRunGroup group;
  group.heading = Escaped(name);
  UserTrees user;
  if (!ListUserTrees(name, plan.target.CStr(), plan.selection.folderMask, app.windowsVersion, user)) {
    group.failures.push_back("The account " + Quoted(name) + " has no profile that can be found.");
  }
  if (user.notFound.count != 0) AddHiveFailure(user.sid, user.profile, group.failures);
  for (uint32_t row = 0; row < user.notFound.count; ++row) {
    group.failures.push_back("The folder " + Quoted(user.notFound[row]) + " of the account " + Quoted(name) +
                             " can't be found.");
  }
  group.trees = std::move(user.trees);
  return group;
}

DryRunGroup ExtraFolderGroup(const BackupPlan& plan) {
  DryRunGroup group;
  group.heading = "Additional folders";
  const WStringArray& folders = plan.selection.extraFolders;
  for (uint32_t row = 0; row < folders.count; ++row) {
    RunTree tree;
    WString name;
    Md5Name(folders[row].CStr(), name);
    tree.source = folders[row];
    tree.target = ExtraFolderInSet(plan.target.CStr(), name.CStr());
    group.trees.push_back(tree);
  }
  return group;
}

ExitCode TellPlan(const ConsoleArguments& arguments, const BackupPlan& plan, const AppObject& app,
                  ConsoleOutput& output) {
  DryRunPlan told;
  const bool isThere = IsFilePath(ChooseInfoFile(plan.target.CStr()).CStr());
  told.headline = (isThere ? "This would bring the backup up to date: " : "This would make the backup: ") +
                  Escaped(plan.target);
  told.failures = LeftOutSentences(plan);
  const BackupSelection& selection = plan.selection;
  for (uint32_t row = 0; row < selection.users.count; ++row) {
    if (selection.IsUserTicked(row)) {
      told.groups.push_back(UserGroup(selection.users[row].CStr(), plan, app));
    }
  }
  if (selection.extraFolders.count != 0) told.groups.push_back(ExtraFolderGroup(plan));
  const WString exclusions = OtherFolderExclusions(app.consoleUserSid.CStr(), app.consoleUserProfile.CStr());
  told.isExcluded = [exclusions](const wchar_t* name) { return IsNameInBars(exclusions, name); };
  told.paths = {{"set", plan.target}};
  return ShowDryRun(arguments, told, output);
}

}  // namespace

ExitCode RunBackupCommand(const ConsoleArguments& arguments, AppObject& app, ConsoleOutput& output) {
  app.logSection = kLogBackup;
  BackupPlan plan;
  PlanProblem problem;
  const bool isPlanned = PlanBackup(arguments, app, plan, problem);
  if (RefuseIfStopped(arguments, output)) return kExitStopped;
  if (!isPlanned) return Refuse(arguments, problem.sentence, output, problem.exitCode);
  TellNotes(arguments, plan.notes, output);
  return arguments.isDryRun ? TellPlan(arguments, plan, app, output) : RunPlan(arguments, plan, app, output);
}
