#include "foundation/force_delete.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/unique_handle.h"
#include "support/test_place.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(ForceDelete, ResultTellsWhatIsGone) {
  TestPlace place;
  place.File("a.txt");
  place.File("tree/b/c.txt");
  place.Folder("tree/empty");
  EXPECT_EQ(ForceDelete((place / "a.txt").CStr(), kDeleteTakeOwnership), kDeleted);
  EXPECT_EQ(ForceDelete((place / "a.txt").CStr(), kDeleteTakeOwnership), kDeleted);  // gone already
  EXPECT_EQ(ForceDelete((place / "missing/a.txt").CStr(), kDeleteTakeOwnership), kDeleteFailed);
  EXPECT_EQ(ForceDelete((place / "tree").CStr(), kDeleteKeepDirectory), kDeleted);
  EXPECT_THAT(place.List(), ElementsAre("tree"));
  EXPECT_EQ(ForceDelete((place.Path() + L"\\tree\\\\").CStr(), 0), kDeleted);
  EXPECT_THAT(place.List(), IsEmpty());
}

// A drive that stands alone, or a text that lost its folder, must not become the folder in use.
TEST(ForceDelete, PathWithoutAFolderIsLeftAlone) {
  TestPlace place;
  place.File("a.txt");
  wchar_t before[MAX_PATH];
  GetCurrentDirectoryW(MAX_PATH, before);
  ASSERT_TRUE(SetCurrentDirectoryW(place.Path().CStr()));
  for (const wchar_t* path : {L"a.txt", L"*", L"C:", L"", L"\\", L"\\*"}) {
    EXPECT_EQ(ForceDelete(path, kDeleteTakeOwnership), kDeleteFailed) << Utf8(path);
  }
  SetCurrentDirectoryW(before);
  EXPECT_THAT(place.List(), ElementsAre("a.txt"));
}

// Each of these attributes alone makes the system refuse, on files and on folders.
TEST(ForceDelete, AttributesDoNotKeepAnything) {
  TestPlace place;
  SetAttributes(place.File("alone.txt").CStr(), FILE_ATTRIBUTE_READONLY);
  SetAttributes(place.File("tree/system.txt").CStr(), FILE_ATTRIBUTE_SYSTEM);
  SetAttributes(place.File("tree/all.txt").CStr(),
                FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
  place.File("tree/folder/inner.txt");
  SetAttributes((place / "tree/folder").CStr(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
  EXPECT_EQ(ForceDelete((place / "alone.txt").CStr(), 0), kDeleted);
  EXPECT_FALSE(place.Exists("alone.txt"));
  EXPECT_EQ(ForceDelete((place / "tree").CStr(), 0), kDeleted);
  EXPECT_THAT(place.List(), IsEmpty());
}

TEST(ForceDelete, PatternTakesMatchesInMatchingFoldersAndKeepsTheFolder) {
  TestPlace place;
  place.File("x/a.tmp");
  place.File("x/b.txt");
  place.File("x/whole.tmp/c.tmp");
  place.File("x/part.tmp/d.tmp");
  place.File("x/part.tmp/e.txt");
  place.File("x/other/f.tmp");
  EXPECT_EQ(ForceDelete((place / "x/*.tmp").CStr(), kDeleteTakeOwnership), kDeleted);
  EXPECT_THAT(place.List("x"), ElementsAre("b.txt", "other", "other/f.tmp", "part.tmp", "part.tmp/e.txt"));
  EXPECT_EQ(ForceDelete((place / "x/?.txt").CStr(), 0), kDeleted);
  EXPECT_EQ(ForceDelete((place / "x/*.none").CStr(), kDeleteTakeOwnership), kDeleted);
  EXPECT_EQ(ForceDelete((place / "x/*").CStr(), 0), kDeleted);
  EXPECT_THAT(place.List(), ElementsAre("x"));
}

// Without its backslash the root would be taken for the volume.
TEST(ForceDelete, PatternMayStandInARoot) {
  WriteBytes(L"C:\\a.norvane-test", "x");
  EXPECT_EQ(ForceDelete(L"C:\\*.norvane-test", 0), kDeleted);
  EXPECT_EQ(Attributes(L"C:\\a.norvane-test"), INVALID_FILE_ATTRIBUTES);
}

// Paths far beyond MAX_PATH.
TEST(ForceDelete, DeletesWhatIsDeep) {
  TestPlace place;
  std::string path = "deep";
  for (int level = 0; level < 150; ++level) path += "/level";
  place.File(path + "/file");
  EXPECT_EQ(ForceDelete((place / "deep").CStr(), kDeleteTakeOwnership), kDeleted);
  EXPECT_FALSE(place.Exists("deep"));
}

// One file in use must neither keep the rest nor be passed over in the result. It goes at the next start
// only when that is asked for.
TEST(ForceDelete, GoesOnBehindAFileInUse) {
  TestPlace place;
  place.File("tree/a/1.txt");
  const WString used = place.File("tree/b/2.txt");
  place.File("tree/c/3.txt");
  UniqueFile open(CreateFileW(used.CStr(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(open);
  EXPECT_EQ(ForceDelete((place / "tree").CStr(), kDeleteTakeOwnership), kDeleteFailed);
  EXPECT_THAT(place.List("tree"), ElementsAre("b", "b/2.txt"));
  EXPECT_EQ(ForceDelete(used.CStr(), kDeleteAtNextStart | kDeleteTakeOwnership), kDeleteDelayed);
  place.File("tree/d.txt");
  EXPECT_EQ(ForceDelete((place / "tree").CStr(), kDeleteAtNextStart), kDeleteDelayed);
  EXPECT_THAT(place.List("tree"), ElementsAre("b", "b/2.txt"));
  open.Reset();
  EXPECT_EQ(place.Read("tree/b/2.txt"), "x");
}

}  // namespace
