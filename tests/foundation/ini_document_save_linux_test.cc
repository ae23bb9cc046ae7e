// Saving under faults: the file is the old or the new one, whatever fails and wherever the process ends.
#include <gtest/gtest.h>

#include "foundation/changed_document.h"
#include "machine/faults.h"

namespace {

// A save that reports success without the new file, or that fails and has lost the old one.
TEST(IniDocumentSave, KeepsTheOldFileWhenAnyCallFails) {
  for (uint64_t nth = 1; nth < 100; ++nth) {
    ChangedDocument test;
    machine::FaultPlan plan;
    plan.path = "*x.ini*";
    plan.nth = nth;
    plan.error = ERROR_GEN_FAILURE;
    machine::SetFaults(plan);
    const bool isSaved = test.document.Save();
    const bool wasHit = machine::FaultCalls() >= nth;
    machine::ClearFaults();
    EXPECT_EQ(test.place.Read("x.ini"), isSaved ? test.after : test.before) << nth;
    EXPECT_TRUE(test.document.Save()) << "a leftover is in the way after " << nth;
    EXPECT_EQ(test.place.List().size(), 1u) << nth;
    if (!wasHit) {
      EXPECT_GT(nth, 4u);  // open, write, look and rename at least
      return;
    }
  }
  FAIL() << "it never came to an end";
}

TEST(IniDocumentSave, KeepsTheOldFileOnAFullDisk) {
  for (int64_t room : {0, 1, 2, 10}) {
    ChangedDocument test;
    machine::FaultPlan plan;
    plan.bytesLeft = room;
    machine::SetFaults(plan);
    EXPECT_FALSE(test.document.Save());
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DISK_FULL));
    machine::ClearFaults();
    EXPECT_EQ(test.place.Read("x.ini"), test.before);
    EXPECT_EQ(test.place.List().size(), 1u);
  }
}

// The machine that loses its power in the middle: what is there when it comes back.
TEST(IniDocumentSaveDeathTest, LeavesTheOldOrTheNewFileWhereverItEnds) {
  for (uint64_t change = 1;; ++change) {
    ASSERT_LT(change, 50u);
    ChangedDocument test;
    bool isWhole = false;
    EXPECT_EXIT(
        {
          machine::FaultPlan plan;
          plan.endAtChange = change;
          machine::SetFaults(plan);
          test.document.Save();
          _exit(test.place.Read("x.ini") == test.after ? 7 : 8);
        },
        [&isWhole](int status) {
          isWhole = WIFEXITED(status) && WEXITSTATUS(status) == 7;
          return isWhole || (WIFEXITED(status) && WEXITSTATUS(status) == 99);
        },
        "");
    const std::string now = test.place.Read("x.ini");
    EXPECT_TRUE(now == test.before || now == test.after) << change;
    EXPECT_TRUE(test.document.Save()) << change;
    EXPECT_EQ(test.place.List().size(), 1u) << change;
    if (isWhole) {
      EXPECT_GE(change, 3u);  // made, written, renamed
      return;
    }
  }
}

}  // namespace
