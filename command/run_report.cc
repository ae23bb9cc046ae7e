#include "run_report.h"

#include <algorithm>

#include "interrupt.h"
#include "json_line.h"
#include "system_reason.h"
#include "utf8_text.h"

namespace {

bool IsDiskFull(uint32_t error) { return error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL; }

RunReport& Report(void* owner) { return *static_cast<RunReport*>(owner); }

}  // namespace

RunReport::RunReport(ConsoleOutput& output, const ConsoleArguments& arguments)
    : output_(output), isJson_(arguments.isJson), isQuiet_(arguments.isQuiet) {
  observer_.owner = this;
  observer_.phaseBegins = [](void* owner, const wchar_t* source, const wchar_t* target) {
    Report(owner).BeginPhase(source, target);
  };
  observer_.copyingBegins = [](void* owner, int64_t, int64_t) { Report(owner).BeginCopying(); };
  observer_.flushBegins = [](void* owner) { Report(owner).BeginFlush(); };
  observer_.itemFailed = [](void* owner, const wchar_t* text, uint32_t error) {
    Report(owner).Failed(text, error);
  };
}

void RunReport::BeginPhase(const wchar_t* source, const wchar_t* target) {
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    source_ = Escaped(source);
    isCounting_ = true;
    isFlushing_ = false;
    rate_.Restart(RateMeter::Clock::now());
  }
  if (isJson_) output_.Result(JsonLine("phase").Text("source", source).Text("target", target).Build());
}

void RunReport::BeginCopying() {
  const std::lock_guard<std::mutex> lock(mutex_);
  isCounting_ = false;
  rate_.Restart(RateMeter::Clock::now());
}

void RunReport::BeginFlush() {
  const std::lock_guard<std::mutex> lock(mutex_);
  isFlushing_ = true;
}

void RunReport::Failed(const wchar_t* text, uint32_t error) {
  const std::string reason = error != 0 ? SystemReason(error) : std::string();
  if (isJson_) {
    JsonLine line("failure");
    line.Text("text", text).Number("error", error);
    if (!reason.empty()) line.Utf8("reason", reason);
    output_.Result(line.Build());
  }
  if (IsDiskFull(error)) {
    // Once a disk is full, thousands of files say the same; the log has each.
    {
      const std::lock_guard<std::mutex> lock(mutex_);
      if (toldDiskFull_) return;
      toldDiskFull_ = true;
    }
    output_.Error("The target's disk is full. Files that don't fit are listed in the log.");
  }
  output_.Error(Escaped(text) + (reason.empty() ? "" : " (" + reason + ")"));
}

void RunReport::Tick(const OperationContext& context) {
  ProgressState state;
  bool isJsonDue = false, isStopNew = false;
  {
    const auto now = RateMeter::Clock::now();
    const std::lock_guard<std::mutex> lock(mutex_);
    state.phase = source_;
    state.isCounting = isCounting_;
    state.isFlushing = isFlushing_;
    state.perMille = context.progress;
    state.items = context.itemsDone;
    // The engine's totals begin at 1.
    state.itemsTotal = std::max<int64_t>(context.itemsTotal - 1, 0);
    state.bytes = context.bytesDone;
    state.bytesTotal = std::max<int64_t>(context.bytesTotal - 1, 0);
    if (!isCounting_) {
      rate_.Add(state.bytes, now);
      state.bytesPerSecond = rate_.BytesPerSecond();
      state.secondsLeft = rate_.SecondsLeft(state.bytesTotal - state.bytes);
    }
    isJsonDue = isJson_ && !isQuiet_ && !source_.empty() && now - lastJson_ >= std::chrono::seconds(1);
    if (isJsonDue) lastJson_ = now;
    isStopNew = InterruptGuard::IsRequested() && !toldStop_;
    if (isStopNew) toldStop_ = true;
  }
  if (isStopNew) output_.Error("Stopping. The file in hand is taken back; what is complete stays.");
  if (isJsonDue) WriteJsonProgress(state);
  if (!isQuiet_ && output_.HasTerminal() && !state.phase.empty()) {
    output_.Transient(ProgressText(state, output_.TerminalColumns()));
  }
}

void RunReport::WriteJsonProgress(const ProgressState& state) {
  JsonLine line("progress");
  line.Utf8("source", state.phase)
      .Flag("counting", state.isCounting)
      .Flag("flushing", state.isFlushing)
      .Number("perMille", state.perMille)
      .Number("entries", state.items)
      .Number("entriesTotal", state.itemsTotal)
      .Number("bytes", state.bytes)
      .Number("bytesTotal", state.bytesTotal)
      .Number("bytesPerSecond", static_cast<int64_t>(state.bytesPerSecond));
  if (state.secondsLeft >= 0) line.Number("secondsLeft", state.secondsLeft);
  output_.Result(line.Build());
}

const char* OutcomeText(OperationOutcome outcome) {
  switch (outcome) {
    case OperationOutcome::kNotStarted:
      return "not started";
    case OperationOutcome::kStopped:
      return "stopped";
    case OperationOutcome::kFailures:
      return "failures";
    case OperationOutcome::kComplete:
      return "complete";
  }
  return "not started";
}
