#include "operations/target_flush.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "machine/faults.h"
#include "support/copy_run.h"

namespace {

// Watches a run, and notes how many failures were known when the flush began.
struct Watch {
  CopyRun run;
  OperationObserver observer;
  std::vector<int64_t> begun;

  Watch() {
    observer.owner = this;
    observer.flushBegins = [](void* owner) {
      auto* watch = static_cast<Watch*>(owner);
      watch->begun.push_back(watch->run.context->failures);
    };
    run.context->observer = &observer;
  }
};

// Without a word before it, a slow disk looks like a program that hangs.
TEST(TargetFlush, IsToldBeforeItBegins) {
  Watch watch;
  const WString folder = watch.run.place.Folder("target");
  FlushTarget(folder.CStr(), *watch.run.context);
  EXPECT_THAT(watch.begun, testing::ElementsAre(0));
  FlushTarget((watch.run.place / "none").CStr(), *watch.run.context);
  EXPECT_EQ(watch.begun.size(), 1u);
  EXPECT_EQ(watch.run.context->failures, 0);
}

// A disk that fails now has lost files that were counted as copied.
TEST(TargetFlush, CountsADiskThatFails) {
  const std::pair<DWORD, int64_t> cases[] = {
      {ERROR_IO_DEVICE, 1}, {ERROR_DISK_FULL, 1}, {ERROR_INVALID_FUNCTION, 0}, {ERROR_ACCESS_DENIED, 0}};
  for (const auto& [error, failures] : cases) {
    Watch watch;
    const WString folder = watch.run.place.Folder("target");
    machine::FaultPlan plan;
    plan.call = "FlushFileBuffers";
    plan.nth = 1;
    plan.error = error;
    machine::SetFaults(plan);
    FlushTarget(folder.CStr(), *watch.run.context);
    machine::ClearFaults();
    EXPECT_EQ(watch.run.context->failures, failures) << error;
    EXPECT_EQ(watch.run.context->errors, failures) << error;
    EXPECT_EQ(watch.run.context->targetFull, error == ERROR_DISK_FULL);
  }
}

}  // namespace
