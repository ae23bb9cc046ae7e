// The last step of a file when the system refuses it, or the process ends in the middle of it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "machine/faults.h"
#include "operations/placing.h"

namespace {

using machine::FaultPlan;

// Whether the old bytes lie under some other name of the folder.
bool IsOldSomewhere(const Placing& test) {
  for (const std::string& name : test.place.List()) {
    if (test.place.Read(name) == "old") return true;
  }
  return false;
}

Placement PutWith(Placing& test, const FaultPlan& plan) {
  machine::SetFaults(plan);
  const Placement placement = test.Put();
  machine::ClearFaults();
  return placement;
}

// Would catch a delete of the old file before the new one stands: a rename that fails then leaves neither.
TEST(FilePlacementFaults, TheOldFileOutlivesEveryRefusedRename) {
  for (DWORD error : {ERROR_SHARING_VIOLATION, ERROR_ACCESS_DENIED, ERROR_IO_DEVICE}) {
    for (bool andAllLater : {false, true}) {
      for (uint64_t n = 1;; n++) {
        Placing test;
        test.patience = {0, 0};
        UniqueFile holder = test.Hold(test.target, kShareAll);
        FaultPlan plan;
        plan.call = "MoveFileExW";
        plan.nth = n;
        plan.andAllLater = andAllLater;
        plan.error = error;
        const Placement placement = PutWith(test, plan);
        const std::string when = std::to_string(n) + ", error " + std::to_string(error);
        if (placement == Placement::kReplaced) {
          EXPECT_EQ(test.place.Read("file"), "new") << when;
        } else {
          EXPECT_EQ(test.error, error) << when;
          EXPECT_TRUE(IsOldSomewhere(test)) << when;
          // Also the way back may be barred, but then by more than one fault.
          EXPECT_TRUE(andAllLater || test.place.Read("file") == "old") << when;
        }
        if (machine::FaultCalls() < n) break;
      }
    }
  }
}

// An end in the middle leaves both files whole, whatever they are called by then.
TEST(FilePlacementFaults, TheEndMayComeAtEveryChange) {
  for (uint64_t n = 1;; n++) {
    Placing test;
    UniqueFile holder = test.Hold(test.target, kShareAll);
    const pid_t child = fork();
    if (child == 0) {
      FaultPlan plan;
      plan.endAtChange = n;
      PutWith(test, plan);
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status) && (WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == 99)) << n;
    const bool isDone = test.place.Exists("file") && test.place.Read("file") == "new";
    EXPECT_TRUE(isDone || IsOldSomewhere(test)) << n;
    if (WEXITSTATUS(status) == 0) break;
  }
}

// A file that denies its rights is given others and replaced; to step aside it would need them, too.
TEST(FilePlacementFaults, AFileThatDeniesItsRightsIsTakenOver) {
  Placing test;
  FaultPlan plan;
  plan.nth = 1;
  plan.andAllLater = true;
  plan.call = "MoveFileExW";
  plan.error = ERROR_ACCESS_DENIED;
  uint64_t renames = 0;
  plan.before = [&](std::string_view, std::string_view) {
    if (++renames == 2) machine::ClearFaults();  // the place itself, and the name aside
  };
  EXPECT_EQ(PutWith(test, plan), Placement::kReplaced);
  EXPECT_EQ(renames, 2u);
  EXPECT_EQ(test.place.Read("file"), "new");
}

}  // namespace
