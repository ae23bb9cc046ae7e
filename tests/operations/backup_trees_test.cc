#include "operations/backup_trees.h"

#include "operations/path_queries.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/account_place.h"

namespace {

using testing::ElementsAre;

// "source > target", below the profile and the account's folder in the set; "!" marks the fast copy.
std::vector<std::string> Trees(const UserTrees& user) {
  std::vector<std::string> rows;
  for (const RunTree& tree : user.trees) {
    std::string source = Utf8(tree.source), target = Utf8(tree.target);
    const std::string profile = Utf8(user.profile), set = Utf8(user.target);
    if (source.starts_with(profile)) source = "~" + source.substr(profile.size());
    if (target.starts_with(set)) target = target.substr(set.size());
    rows.push_back(source + " > " + target + (tree.fast ? " !" : "") + (tree.otherFolders ? " *" : ""));
  }
  return rows;
}

// The tree of a set, whatever the account calls its folders and wherever they lie.
TEST(BackupTrees, FollowTheMaskInTheOrderOfTheWorker) {
  AccountPlace place;
  std::vector<TestValue> hive = place.UsualFolders("Anna");
  hive[3].text = "D:\\Docs";
  place.Add({.name = "Anna", .hive = hive});
  UserTrees user;
  ASSERT_TRUE(ListUserTrees(L"Anna", L"E:\\B\\X", kMaskAll, 6.1, user));
  EXPECT_EQ(Utf8(user.target), "E:\\B\\X\\Users\\Anna");
  EXPECT_THAT(
      Trees(user),
      ElementsAre("~\\AppData\\Roaming > \\AppData !",
                  "~\\AppData\\Roaming\\Microsoft\\Windows\\Themes > \\AppData\\Microsoft\\Windows\\Themes !",
                  "~\\AppData\\Roaming\\Microsoft\\Windows\\SendTo > \\AppData\\Microsoft\\Windows\\SendTo !",
                  "~\\AppData\\Roaming\\Microsoft\\Windows\\Account Pictures > "
                  "\\AppData\\Microsoft\\Windows\\Account Pictures !",
                  "~\\AppData\\Local > \\LocalAppData !",
                  "~\\AppData\\Local\\Microsoft\\Windows\\Themes > "
                  "\\LocalAppData\\Microsoft\\Windows\\Themes !",
                  "~\\Desktop > \\Desktop", "D:\\Docs > \\Documents", "~\\Downloads > \\Downloads",
                  "~\\Music > \\Music", "~\\Pictures > \\Pictures", "~\\Videos > \\Videos", "~ >  *"));

  ASSERT_TRUE(ListUserTrees(L"Anna", L"E:\\B\\X", kMaskMusic, 6.1, user));
  EXPECT_THAT(Trees(user), ElementsAre("~\\Music > \\Music"));
}

// Before Windows Vista, Downloads lies in Documents.
TEST(BackupTrees, TakeDownloadsOnceOnOldSystems) {
  AccountPlace place;
  place.Add({.name = "Anna"});
  UserTrees user;
  ASSERT_TRUE(ListUserTrees(L"Anna", L"E:\\X", kMaskDocuments | kMaskDownloads, 5.1, user));
  EXPECT_THAT(Trees(user), ElementsAre("~\\Documents > \\Documents"));
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
  EXPECT_THAT(Trees(user), ElementsAre("\\\\server\\share\\Videos > \\Videos"));
  std::vector<std::string> notFound;
  for (uint32_t i = 0; i < user.notFound.count; i++) notFound.push_back(Utf8(user.notFound[i]));
  EXPECT_THAT(notFound, ElementsAre("AppData", "Local AppData", "Desktop", "Documents", "Downloads", "Music",
                                    "Pictures"));
  EXPECT_FALSE(ListUserTrees(L"Nobody", L"E:\\X", kMaskAll, 6.1, user));
}

TEST(BackupTrees, AreThoseOfTheTickedRows) {
  AccountPlace place;
  for (const char* name : {"Anna", "Bob"}) place.Add({.name = name});
  BackupSelection selection;
  for (const wchar_t* name : {L"Anna", L"Bob", L"Gone"}) selection.users.Add(name);
  selection.userTicked = {false, true, true};
  selection.folderMask = kMaskDesktop;
  selection.extraFolders.Add(L"C:\\Other");
  selection.extraFolders.Add(L"C:\\Data");
  selection.extraTicked = {false, true};

  std::vector<std::string> targets;
  for (const RunTree& tree : ListBackupTrees(selection, L"E:\\X", 6.1)) targets.push_back(Utf8(tree.target));
  EXPECT_THAT(targets, ElementsAre("E:\\X\\Users\\Bob\\Desktop",
                                   "E:\\X\\ExtraFolders\\64C8003575A33831C5D0C3471BB51F6A"));
}

TEST(OtherFolders, LeaveOutTheNamedOnesWithoutCase) {
  const WString exclusions(L"|Documents|Desktop||Music|Appdata|");
  for (const wchar_t* name : {L"documents", L"AppData", L"Music"}) {
    EXPECT_TRUE(IsNameInBars(exclusions, name)) << Utf8(name);
  }
  for (const wchar_t* name : {L"Contacts", L"Doc", L"Musical"}) {
    EXPECT_FALSE(IsNameInBars(exclusions, name)) << Utf8(name);
  }
}

}  // namespace
