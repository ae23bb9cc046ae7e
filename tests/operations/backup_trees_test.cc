#include "operations/backup_trees.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/account_place.h"
#include "support/array_rows.h"

namespace {

using testing::ElementsAre;

// Before Windows Vista, Downloads lies in Documents.
TEST(BackupTrees, TakeDownloadsOnceOnOldSystems) {
  AccountPlace place;
  place.Add({.name = "Anna"});
  UserTrees user;
  ASSERT_TRUE(ListUserTrees(L"Anna", L"E:\\X", kMaskDocuments | kMaskDownloads, 5.1, user));
  ASSERT_EQ(user.trees.size(), 1u);
  EXPECT_EQ(Utf8(user.trees[0].source), Utf8(place.Profile("Anna")) + "\\Documents");
  EXPECT_EQ(Utf8(user.trees[0].target), "E:\\X\\Users\\Anna\\Documents");
  ASSERT_TRUE(ListUserTrees(L"Anna", L"E:\\X", kMaskDownloads, 5.1, user));
  EXPECT_EQ(user.trees.size(), 1u);
}

// A path that isn't one would be taken below the current folder of this process. What can't be found
// has to be told.
TEST(BackupTrees, NameTheFoldersThatHaveNoPlace) {
  AccountPlace place;
  place.Add({.name = "Anna",
             .hive = {{kShellFoldersKey, "AppData", ""},
                      {kShellFoldersKey, "Personal", "Documents"},
                      {kShellFoldersKey, "My Music", "%NoSuchVariable%\\Music"},
                      {kShellFoldersKey, "My Video", "\\\\server\\share\\Videos"}}});
  UserTrees user;
  ASSERT_TRUE(ListUserTrees(L"Anna", L"E:\\X", kMaskAll & ~kMaskOther, 6.1, user));
  ASSERT_EQ(user.trees.size(), 1u);
  EXPECT_EQ(Utf8(user.trees[0].source), "\\\\server\\share\\Videos");
  EXPECT_THAT(ArrayRows(user.notFound), ElementsAre("AppData", "Local AppData", "Desktop", "Documents",
                                                    "Downloads", "Music", "Pictures"));
  EXPECT_FALSE(ListUserTrees(L"Nobody", L"E:\\X", kMaskAll, 6.1, user));
}

}  // namespace
