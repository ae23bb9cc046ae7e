// Saving under faults: the file is the old or the new one, whatever fails and wherever the process ends.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/ini_document.h"
#include "machine/faults.h"
#include "support/test_place.h"

namespace {

using namespace std::string_literals;

constexpr char kOld[] = "[s]\r\na=1\r\n";
const std::string kNew =
    "\xff\xfe"
    "[\0s\0]\0\r\0\n\0a\0=\0"
    "2\0\r\0\n\0"s;

struct OldAndNew {
  TestPlace place;
  IniDocument document;

  OldAndNew() {
    document.Load(place.File("x.ini", kOld).CStr(), false);
    document.SetValue(L"s", L"a", L"2");
  }
};

// A save that reports success without the new file, or that fails and has lost the old one.
TEST(IniDocumentSave, KeepsTheOldFileWhenAnyCallFails) {
  for (uint64_t nth = 1; nth < 100; ++nth) {
    OldAndNew test;
    machine::FaultPlan plan;
    plan.path = "*x.ini*";
    plan.nth = nth;
    plan.error = ERROR_GEN_FAILURE;
    machine::SetFaults(plan);
    const bool isSaved = test.document.Save();
    const bool wasHit = machine::FaultCalls() >= nth;
    machine::ClearFaults();
    EXPECT_EQ(test.place.Read("x.ini"), isSaved ? kNew : kOld) << nth;
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
    OldAndNew test;
    machine::FaultPlan plan;
    plan.bytesLeft = room;
    machine::SetFaults(plan);
    EXPECT_FALSE(test.document.Save());
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DISK_FULL));
    machine::ClearFaults();
    EXPECT_EQ(test.place.Read("x.ini"), kOld);
    EXPECT_EQ(test.place.List().size(), 1u);
  }
}

// The machine that loses its power in the middle: what is there when it comes back.
TEST(IniDocumentSaveDeathTest, LeavesTheOldOrTheNewFileWhereverItEnds) {
  for (uint64_t change = 1;; ++change) {
    ASSERT_LT(change, 50u);
    OldAndNew test;
    bool isWhole = false;
    EXPECT_EXIT(
        {
          machine::FaultPlan plan;
          plan.endAtChange = change;
          machine::SetFaults(plan);
          test.document.Save();
          _exit(test.place.Read("x.ini") == kNew ? 7 : 8);
        },
        [&isWhole](int status) {
          isWhole = WIFEXITED(status) && WEXITSTATUS(status) == 7;
          return isWhole || (WIFEXITED(status) && WEXITSTATUS(status) == 99);
        },
        "");
    const std::string now = test.place.Read("x.ini");
    EXPECT_TRUE(now == kOld || now == kNew) << change;
    EXPECT_TRUE(test.document.Save()) << change;
    EXPECT_EQ(test.place.List().size(), 1u) << change;
    if (isWhole) {
      EXPECT_GE(change, 3u);  // made, written, renamed
      return;
    }
  }
}

}  // namespace
