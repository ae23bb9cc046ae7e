#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "operations/placing.h"

namespace {

using testing::ElementsAre;

// Whoever lets a file be deleted, as the index and many editors do, mustn't keep its new version out.
TEST(FilePlacement, ReplacesAFileThatItsHoldersLetGo) {
  Placing test;
  // An earlier run has ended after it let a file step aside.
  test.place.File("~{5B1F0C8E-6D0A-4E57-9C43-2A7E1D9F6B34}.old.file", "older");
  UniqueFile holder = test.Hold(test.target, kShareAll);
  EXPECT_EQ(test.Put(), Placement::kReplaced);
  EXPECT_EQ(test.place.Read("file"), "new");
  char bytes[8] = {};
  DWORD read = 0;
  EXPECT_TRUE(ReadFile(holder.Get(), bytes, sizeof bytes, &read, nullptr));
  EXPECT_STREQ(bytes, "old");
  holder.Reset();
  EXPECT_FALSE(test.place.Exists(test.temporaryName));
}

// A file that turns up after the look, where only missing files are wanted.
TEST(FilePlacement, LeavesWhatIsToStay) {
  Placing test;
  EXPECT_EQ(test.Put(Place::kNotOurs), Placement::kLeft);
  EXPECT_EQ(test.place.Read("file"), "old");
  EXPECT_TRUE(DeleteFileW(test.target.CStr()));
  EXPECT_EQ(test.Put(Place::kNotOurs), Placement::kPlaced);
  EXPECT_EQ(test.place.Read("file"), "new");
}

// Force against a file that can't go would cost it its rights or its name.
TEST(FilePlacement, LeavesAFileThatIsHeldFast) {
  Placing test;
  UniqueFile holder = test.Hold(test.target, FILE_SHARE_READ);
  EXPECT_EQ(test.Put(), Placement::kRefused);
  EXPECT_EQ(test.error, DWORD{ERROR_SHARING_VIOLATION});
  EXPECT_EQ(test.place.Read("file"), "old");
  EXPECT_THAT(test.place.List(), ElementsAre("file", test.temporaryName));
}

// The old file is the last good copy while nobody knows whether the new one can be renamed at all.
TEST(FilePlacement, LeavesTheOldFileWhereTheNewOneIsHeld) {
  Placing test;
  UniqueFile holder = test.Hold(test.temporary, FILE_SHARE_READ);
  EXPECT_EQ(test.Put(), Placement::kFailed);
  EXPECT_EQ(test.error, DWORD{ERROR_SHARING_VIOLATION});
  EXPECT_EQ(test.place.Read("file"), "old");
}

// A scanner that looks at each new file must not use up what is for files that stay in use.
TEST(FilePlacement, WaitingThatHelpsCostsNoPatience) {
  Placing test;
  test.patience = {100, 1000};
  UniqueFile holder = test.Hold(test.temporary, FILE_SHARE_READ);
  std::thread closing([&holder] {
    Sleep(10);
    holder.Reset();
  });
  EXPECT_EQ(test.Put(), Placement::kReplaced);
  closing.join();
  EXPECT_EQ(test.patience.forOld, 100u);
  EXPECT_EQ(test.patience.forNew, 1000u);
}

// A hundred milliseconds for each of a hundred thousand files in use would take hours.
TEST(FilePlacement, WaitsForFilesInUseOnlyForSomeTimeInAll) {
  Placing test;
  test.patience.forOld = 250;
  UniqueFile holder = test.Hold(test.target, FILE_SHARE_READ);
  const uint64_t before = GetTickCount64();
  for (int i = 0; i < 200; ++i) EXPECT_EQ(test.Put(), Placement::kRefused);
  EXPECT_LT(GetTickCount64() - before, 5000u);
  EXPECT_EQ(test.patience.forOld, 50u);
  holder.Reset();
  EXPECT_EQ(test.Put(), Placement::kReplaced);
}

}  // namespace
