#include "operations/folder_rows.h"

#include <gtest/gtest.h>

#include "operations/copy_move_trees.h"
#include "operations/restore_trees.h"
#include "support/test_place.h"

namespace {

// A list that a script gives must mean what it says, and a mistyped name must not be passed over.
TEST(FolderList, IsReadWithoutCaseAndBlanks) {
  const std::pair<const char*, uint32_t> good[] = {
      {"all", 255},         {"appdata", 1},     {"documents,music", 20},   {" Desktop , VIDEOS", 66},
      {"other,other", 128}, {"all,music", 255}, {"downloads,pictures", 40}};
  for (const auto& [list, expected] : good) {
    uint32_t mask = 0;
    EXPECT_TRUE(ParseFolderList(Wide(list).CStr(), mask)) << list;
    EXPECT_EQ(mask, expected) << list;
  }
  const std::pair<const char*, const char*> bad[] = {
      {"", ""}, {"documents,doc", "doc"}, {"music;videos", "music;videos"}, {"music,,videos", ""}};
  for (const auto& [list, expected] : bad) {
    uint32_t mask = 7;
    WString unknown(L"before");
    EXPECT_FALSE(ParseFolderList(Wide(list).CStr(), mask, &unknown)) << list;
    EXPECT_EQ(mask, 7u) << list;
    EXPECT_EQ(Utf8(unknown), expected) << list;
  }
}

TEST(FolderList, GivesBackEveryMask) {
  for (uint32_t mask = 1; mask <= 255; mask++) {
    uint32_t again = 0;
    ASSERT_TRUE(ParseFolderList(FolderListText(mask).CStr(), again)) << mask;
    ASSERT_EQ(again, mask);
  }
  EXPECT_EQ(Utf8(FolderListText(0)), "");
}

// "All other folders" would take a named one a second time, or pass over one of a similar name. A copy
// knows neither a set's layout nor the old one.
TEST(NamedFolders, AreLeftToTheirOwnTrees) {
  for (const char* name : {"AppData", "desktop", "DOCUMENTS", "Downloads", "Music", "Pictures", "Videos"}) {
    EXPECT_TRUE(IsNamedRestoreFolder(Wide(name).CStr())) << name;
    EXPECT_TRUE(IsNamedCopyMoveFolder(Wide(name).CStr())) << name;
  }
  for (const char* name : {"localappdata", "Local Settings", "Application Data"}) {
    EXPECT_TRUE(IsNamedRestoreFolder(Wide(name).CStr())) << name;
    EXPECT_FALSE(IsNamedCopyMoveFolder(Wide(name).CStr())) << name;
  }
  for (const char* name : {"Music2", "Contacts", "usic", "Data", "Desktop|Documents ", "|"}) {
    EXPECT_FALSE(IsNamedRestoreFolder(Wide(name).CStr())) << name;
    EXPECT_FALSE(IsNamedCopyMoveFolder(Wide(name).CStr())) << name;
  }
}

}  // namespace
