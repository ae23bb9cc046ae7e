// operation_runner.h
//
// Starts a worker on a thread of its own, and lets its starter look on, pause it and stop it. It has no
// window: the console uses it as it is, and the progress window calls the same steps from its loop.
//
// All operations belong to the thread that made the runner.
#pragma once
#include "foundation/unique_handle.h"
#include "operations/operation_context.h"

class OperationRunner {
 public:
  // `context` stays the caller's and must outlive the runner.
  explicit OperationRunner(OperationContext& context);
  OperationRunner(const OperationRunner&) = delete;
  OperationRunner& operator=(const OperationRunner&) = delete;
  ~OperationRunner();  // stops a worker that is still running, and waits for it

  // Starts `entry` with the record. False with the reason in GetLastError(); `context.outcome` stays
  // kNotStarted then.
  bool Start(LPTHREAD_START_ROUTINE entry);

  // Waits at most `milliseconds` for the end. True if the worker has ended or never started.
  bool WaitForEnd(DWORD milliseconds);

  // Takes hold of the worker wherever it stands, but for the heap's lock. False if it couldn't be done.
  bool Pause();
  bool Resume();
  bool IsPaused() const { return isPaused_; }

  // Asks the worker to end as soon as it can; a paused one goes on for that.
  void Stop();

 private:
  OperationContext& context_;
  UniqueHandle thread_;
  bool isPaused_;
};

// Told while an operation runs. Returning false stops the run.
struct OperationTick {
  void* owner = nullptr;
  bool (*tick)(void* owner, OperationContext& context) = nullptr;  // may be null
  DWORD interval = 100;                                            // milliseconds
};

// Runs the whole operation and gives what `context.outcome` says.
OperationOutcome RunToEnd(OperationContext& context, LPTHREAD_START_ROUTINE entry, const OperationTick& tick);
