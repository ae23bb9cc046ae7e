#include "backup_command.h"

#include "backup_plan.h"
#include "dry_run.h"
#include "interrupt.h"
#include "json_line.h"
#include "operations/backup_start.h"
#include "operations/backup_target.h"
#include "operations/operation_runner.h"
#include "operations/operation_text.h"
#include "refusal.h"
#include "run_report.h"
#include "system_reason.h"
#include "utf8_text.h"

namespace {

ExitCode ExitCodeOf(OperationOutcome outcome) {
  switch (outcome) {
    case OperationOutcome::kNotStarted:
      return kExitNothingDone;
    case OperationOutcome::kStopped:
      return kExitStopped;
    case OperationOutcome::kFailures:
      return kExitFailures;
    case OperationOutcome::kComplete:
      return kExitDone;
  }
  return kExitNothingDone;
}

void FillContext(OperationContext& context, AppObject& app, IniDocument& document,
                 const OperationObserver& observer) {
  context.app = &app;
  context.kind = kBackupOperation;
  context.document = &document;
  context.copyOptions = document.GetNumber(kSettingsSection, kBackupOptionsKey);
  context.attributeMask = document.GetNumber(kSettingsSection, kSkipAttributesKey);
  context.copyBuffer = new uint8_t[kCopyBufferSize];
  context.copyBufferSize = kCopyBufferSize;
  context.observer = &observer;
}

// The set's folder and info file, which can be opened from here on whatever becomes of the run.
bool StartSet(const BackupPlan& plan, IniDocument& document, PlanProblem& problem) {
  WString reason;
  if (StartBackupSet(plan.target.CStr(), plan.selection, document, reason)) return true;
  const DWORD error = GetLastError();
  problem.exitCode = kExitNothingDone;
  // That text is made for a box, which stands beside the field with the folder.
  problem.sentence = reason == kFolderNotMadeText
                         ? "The folder \"" + Escaped(plan.target) + "\" can't be made (" +
                               SystemReason(error) + "); give with --to a folder that you may write to."
                         : Escaped(reason);
  return false;
}

// Each account that was left out counts as an item that failed, and stands in the log as those do.
void TellLeftOut(const BackupPlan& plan, AppObject& app, OperationContext& context, RunReport& report) {
  for (uint32_t row = 0; row < plan.leftOut.count; ++row) {
    const WString sentence = FromUtf8Text(LeftOutSentence(plan.leftOut[row]));
    if (!app.WriteLog(sentence.CStr())) context.logFailed = true;
    ++context.failures;
    report.Failed(sentence.CStr(), NO_ERROR);
  }
}

void TellEnd(const ConsoleArguments& arguments, const BackupPlan& plan, AppObject& app,
             OperationContext& context, IniDocument& document, ConsoleOutput& output) {
  if (context.outcome == OperationOutcome::kComplete && context.failures != 0) {
    context.outcome = OperationOutcome::kFailures;
  }
  OperationSubject subject;
  subject.kind = kBackupOperation;
  subject.name = plan.name.CStr();
  DWORD logError = NO_ERROR;
  if (!app.WriteLog(OperationResultText(subject, context, TextForm::kLogged).CStr())) {
    logError = GetLastError();
    context.logFailed = true;
  }
  const WString text = OperationResultText(subject, context, TextForm::kShown);
  const bool isDone =
      context.outcome == OperationOutcome::kComplete || context.outcome == OperationOutcome::kFailures;
  // With failures the text says so itself.
  if (context.logFailed && context.failures == 0) {
    output.Error("The application log \"" + Escaped(app.logPath) + "\" could not be written (" +
                 SystemReason(logError) + ").");
  }
  if (arguments.isJson) {
    output.Result(JsonLine("end")
                      .Utf8("outcome", OutcomeText(context.outcome))
                      .Text("text", text)
                      .Text("set", plan.target)
                      .Text("infoFile", document.path)
                      .Number("files", context.filesCopied)
                      .Number("bytes", context.bytesCopied)
                      .Number("failures", context.failures)
                      .Number("linksSkipped", context.linksSkipped)
                      .Build());
  } else if (!isDone) {
    output.Error(EscapedLines(text.CStr()));
  } else if (!arguments.isQuiet) {
    output.Result(EscapedLines(text.CStr()));
  }
}

ExitCode RunPlan(const ConsoleArguments& arguments, const BackupPlan& plan, AppObject& app,
                 ConsoleOutput& output) {
  IniDocument document;
  PlanProblem problem;
  if (!StartSet(plan, document, problem))
    return Refuse(arguments, problem.sentence, output, problem.exitCode);

  RunReport report(output, arguments);
  OperationContext context;
  FillContext(context, app, document, report.Observer());
  TellLeftOut(plan, app, context, report);
  InterruptGuard::Bind(&context.stop);
  OperationTick tick;
  tick.owner = &report;
  tick.tick = [](void* owner, OperationContext& running) {
    static_cast<RunReport*>(owner)->Tick(running);
    return !InterruptGuard::IsRequested();
  };
  RunToEnd(context, BackupEntry, tick);
  InterruptGuard::Bind(nullptr);
  report.ClearProgress();
  TellEnd(arguments, plan, app, context, document, output);
  return ExitCodeOf(context.outcome);
}

}  // namespace

ExitCode RunBackupCommand(const ConsoleArguments& arguments, AppObject& app, ConsoleOutput& output) {
  app.logSection = kLogBackup;
  BackupPlan plan;
  PlanProblem problem;
  if (!PlanBackup(arguments, app, plan, problem))
    return Refuse(arguments, problem.sentence, output, problem.exitCode);
  if (InterruptGuard::IsRequested()) {
    return Refuse(arguments, "Stopped before anything was made.", output, kExitStopped);
  }
  return arguments.isDryRun ? ShowDryRun(arguments, app, plan, output)
                            : RunPlan(arguments, plan, app, output);
}
