#include "operations/operation_runner.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "core/app_object.h"

namespace {

// A worker that counts in `progress`, takes memory all the time, and calls the system now and then, until
// it is stopped.
DWORD WINAPI CountUntilStopped(void* parameter) {
  auto* context = static_cast<OperationContext*>(parameter);
  std::vector<std::unique_ptr<std::string>> held(16);
  while (context->stop == 0) {
    int32_t count = context->progress.fetch_add(1);
    held[static_cast<size_t>(count) % held.size()] =
        std::make_unique<std::string>(static_cast<size_t>(count % 5000), 'x');
    GetTickCount64();
  }
  context->outcome = OperationOutcome::kStopped;
  return 0;
}

DWORD WINAPI EndAtOnce(void* parameter) {
  static_cast<OperationContext*>(parameter)->outcome = OperationOutcome::kComplete;
  return 0;
}

void WaitForProgress(OperationContext& context, int32_t more) {
  int32_t start = context.progress;
  while (context.progress < start + more) Sleep(0);
}

// A pause in the middle of an allocation would stop the window's thread at its own next one; and a paused
// worker that goes on copies behind the person's back.
TEST(OperationRunner, PausesOutsideTheHeap) {
  OperationContext context;
  OperationRunner runner(context);
  ASSERT_TRUE(runner.Start(CountUntilStopped));
  for (int i = 0; i < 200; i++) {
    WaitForProgress(context, 3);
    ASSERT_TRUE(runner.Pause());
    std::string memory(static_cast<size_t>(i * 100), 'y');
    std::vector<std::string> more(20, memory);
    if (i % 50 == 0) {
      Sleep(5);  // some systems hold it only at its next call
      int32_t before = context.progress;
      Sleep(20);
      EXPECT_EQ(context.progress, before);
    }
    ASSERT_TRUE(runner.Resume());
  }
  runner.Stop();
  EXPECT_TRUE(runner.WaitForEnd(10000));
  EXPECT_EQ(context.outcome, OperationOutcome::kStopped);
}

// Cancelling a paused run must not wait for ever for a thread that stands still.
TEST(OperationRunner, StopsAPausedWorker) {
  OperationContext context;
  {
    OperationRunner runner(context);
    ASSERT_TRUE(runner.Start(CountUntilStopped));
    WaitForProgress(context, 1);
    ASSERT_TRUE(runner.Pause());
    EXPECT_FALSE(runner.WaitForEnd(0));
    EXPECT_TRUE(runner.IsPaused());
  }
  EXPECT_EQ(context.outcome, OperationOutcome::kStopped);
}

// What has ended can't be paused, and is over for whoever waits.
TEST(OperationRunner, KnowsTheEnd) {
  OperationContext context;
  OperationRunner runner(context);
  EXPECT_TRUE(runner.WaitForEnd(0));
  ASSERT_TRUE(runner.Start(EndAtOnce));
  EXPECT_TRUE(runner.WaitForEnd(10000));
  EXPECT_FALSE(runner.Pause());
  EXPECT_EQ(context.outcome, OperationOutcome::kComplete);
}

// The console's loop: it looks on, and its "no" ends the run.
TEST(OperationRunner, RunsToTheEndUnderATick) {
  OperationContext context;
  OperationTick tick;
  int ticks = 0;
  tick.owner = &ticks;
  tick.interval = 5;
  tick.tick = [](void* owner, OperationContext&) { return ++*static_cast<int*>(owner) < 3; };
  EXPECT_EQ(RunToEnd(context, CountUntilStopped, tick), OperationOutcome::kStopped);
  EXPECT_EQ(ticks, 3);
  EXPECT_EQ(context.stop, 1);
}

// A record that nobody filled must not take the process down.
TEST(OperationEntries, RefuseARecordWithoutAnApplication) {
  for (const LPTHREAD_START_ROUTINE entry : {BackupEntry, RestoreEntry, CopyMoveEntry}) {
    OperationContext context;
    IniDocument document;
    context.document = &document;
    EXPECT_EQ(entry(nullptr), 0u);
    EXPECT_EQ(entry(&context), 0u);
    AppObject app;
    context.app = &app;
    context.document = nullptr;
    EXPECT_EQ(entry(&context), 0u);
    EXPECT_EQ(context.outcome, OperationOutcome::kNotStarted);
  }
}

}  // namespace
