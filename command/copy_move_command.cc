#include "copy_move_command.h"

#include "copy_move_plan.h"
#include "dry_run.h"
#include "folder_list.h"
#include "operation_run.h"
#include "operations/copy_move_trees.h"
#include "refusal.h"
#include "utf8_text.h"

namespace {

std::vector<NamedPath> PathsOf(const CopyMoveSelection& selection) {
  return {{"source", selection.source}, {"target", selection.target}};
}

ExitCode RunPlan(const ConsoleArguments& arguments, const CopyMoveSelection& selection, AppObject& app,
                 ConsoleOutput& output) {
  IniDocument document;  // in memory
  WriteCopyMoveSelection(document, selection);
  PlannedRun run;
  run.kind = kCopyMoveOperation;
  run.worker = CopyMoveEntry;
  run.document = &document;
  run.subject = selection.source;
  run.attributeMask = SkippedAttributes(arguments);
  run.sourceVersion = app.windowsVersion;
  run.moves = arguments.command == ConsoleCommand::kMove;
  run.paths = PathsOf(selection);
  return RunPlanned(arguments, run, app, output);
}

ExitCode TellPlan(const ConsoleArguments& arguments, const CopyMoveSelection& selection,
                  ConsoleOutput& output) {
  DryRunPlan told;
  told.headline = arguments.command == ConsoleCommand::kMove ? "This would move:" : "This would copy:";
  DryRunGroup group;
  group.heading = Escaped(selection.source) + " -> " + Escaped(selection.target);
  group.trees = ListCopyMoveTrees(selection);
  told.groups.push_back(std::move(group));
  told.isExcluded = IsNamedCopyMoveFolder;
  told.paths = PathsOf(selection);
  return ShowDryRun(arguments, told, output);
}

}  // namespace

ExitCode RunCopyMoveCommand(const ConsoleArguments& arguments, AppObject& app, ConsoleOutput& output) {
  app.logSection = kLogCopyMove;
  CopyMoveSelection selection;
  PlanProblem problem;
  const bool isPlanned = PlanCopyMove(arguments, selection, problem);
  if (RefuseIfStopped(arguments, output)) return kExitStopped;
  if (!isPlanned) return Refuse(arguments, problem.sentence, output, problem.exitCode);
  return arguments.isDryRun ? TellPlan(arguments, selection, output)
                            : RunPlan(arguments, selection, app, output);
}
