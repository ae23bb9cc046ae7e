// run_report.h
//
// What a person or a script is told while an operation runs and when it has ended.
#pragma once
#include <string>

#include "arguments.h"
#include "console_output.h"
#include "operations/operation_context.h"
#include "progress_line.h"

class RunReport {
 public:
  RunReport(ConsoleOutput& output, const ConsoleArguments& arguments);
  RunReport(const RunReport&) = delete;
  RunReport& operator=(const RunReport&) = delete;

  // For the context; its functions run on the worker's thread.
  const OperationObserver& Observer() const { return observer_; }

  // To be called again and again by whoever waits for the run.
  void Tick(const OperationContext& context);

  // An item that failed before or beside the run. `text` is the log's line.
  void Failed(const wchar_t* text, uint32_t error);

  void ClearProgress() { output_.Transient(""); }

 private:
  void BeginPhase(const wchar_t* source, const wchar_t* target);
  void BeginCopying();
  void BeginFlush();
  void WriteJsonProgress(const ProgressState& state);

  ConsoleOutput& output_;
  const bool isJson_, isQuiet_;
  OperationObserver observer_;
  std::mutex mutex_;  // of what follows: the worker begins phases while the other thread draws
  std::string source_;
  bool isCounting_ = false;
  bool isFlushing_ = false;
  bool toldDiskFull_ = false;
  bool toldStop_ = false;
  RateMeter rate_;
  RateMeter::Clock::time_point lastJson_;
};

// "complete", "failures", "stopped" or "not started".
const char* OutcomeText(OperationOutcome outcome);
