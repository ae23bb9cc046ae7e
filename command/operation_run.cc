#include "operation_run.h"

#include "interrupt.h"
#include "json_line.h"
#include "operations/operation_runner.h"
#include "operations/operation_text.h"
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

void FillContext(OperationContext& context, const PlannedRun& run, AppObject& app,
                 const OperationObserver& observer) {
  context.app = &app;
  context.kind = run.kind;
  context.document = run.document;
  context.copyOptions = run.copyOptions;
  context.attributeMask = run.attributeMask;
  context.sourceVersion = run.sourceVersion;
  context.moveFiles = run.moves;
  context.administrators = run.administrators;
  context.chosenPlaces = run.chosenPlaces;
  context.copyBuffer = new uint8_t[kCopyBufferSize];
  context.copyBufferSize = kCopyBufferSize;
  context.observer = &observer;
}

void TellLeftOut(const PlannedRun& run, AppObject& app, OperationContext& context, RunReport& report) {
  for (const std::string& text : run.leftOut) {
    const WString sentence = FromUtf8Text(text);
    if (!app.WriteLog(sentence.CStr())) context.logFailed = true;
    ++context.failures;
    report.Failed(sentence.CStr(), NO_ERROR);
  }
}

bool IsRestore(OperationKind kind) { return kind == kRestoreOperation || kind == kRestoreFromOperation; }

std::string EndEvent(const PlannedRun& run, const OperationContext& context, const WString& text) {
  JsonLine line("end");
  line.Utf8("outcome", OutcomeText(context.outcome)).Text("text", text);
  for (const NamedPath& named : run.paths) line.Text(named.name, named.path);
  line.Number("files", context.filesCopied)
      .Number("bytes", context.bytesCopied)
      .Number("failures", context.failures)
      .Number("linksSkipped", context.linksSkipped)
      .Flag("logWritten", !context.logFailed);
  if (IsRestore(run.kind)) {
    std::vector<std::string> accounts;
    for (uint32_t row = 0; row < context.createdAccounts.count; ++row) {
      accounts.push_back(ToUtf8Text(context.createdAccounts[row]));
    }
    line.List("accountsCreated", accounts);
  }
  return line.Build();
}

void TellEnd(const ConsoleArguments& arguments, const PlannedRun& run, AppObject& app,
             OperationContext& context, ConsoleOutput& output) {
  if (context.outcome == OperationOutcome::kComplete && context.failures != 0) {
    context.outcome = OperationOutcome::kFailures;
  }
  OperationSubject subject;
  subject.kind = run.kind;
  subject.isMove = run.moves;
  subject.name = run.subject.CStr();
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
    output.Result(EndEvent(run, context, text));
  } else if (!isDone) {
    output.Error(EscapedLines(text.CStr()));
  } else if (!arguments.isQuiet) {
    output.Result(EscapedLines(text.CStr()));
  }
}

}  // namespace

ExitCode RunPlanned(const ConsoleArguments& arguments, const PlannedRun& run, AppObject& app,
                    ConsoleOutput& output) {
  RunReport report(output, arguments);
  OperationContext context;
  FillContext(context, run, app, report.Observer());
  TellLeftOut(run, app, context, report);
  InterruptGuard::Bind(&context.stop);
  OperationTick tick;
  tick.owner = &report;
  tick.tick = [](void* owner, OperationContext& running) {
    static_cast<RunReport*>(owner)->Tick(running);
    return !InterruptGuard::IsRequested();
  };
  RunToEnd(context, run.worker, tick);
  InterruptGuard::Bind(nullptr);
  report.ClearProgress();
  TellEnd(arguments, run, app, context, output);
  return ExitCodeOf(context.outcome);
}

void TellNotes(const ConsoleArguments& arguments, const std::vector<std::string>& notes,
               ConsoleOutput& output) {
  for (const std::string& note : notes) {
    if (arguments.isJson) output.Result(JsonLine("note").Utf8("text", note).Build());
    if (!arguments.isQuiet) output.Error("Note: " + note);
  }
}
