#include "operations/restore_trees.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "operations/folder_rows.h"
#include "operations/restore_extra_folders.h"
#include "support/account_place.h"
#include "users/user_table.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RestoreTreesTest : public testing::Test {
 protected:
  AccountPlace machine_;
  RestoreTrees found_;  // of the last List

  void List(const RestoreRoot& root, uint32_t mask, const char* account = "Bob") {
    ProtectedPlaces places(*LoadUserTable());
    const RestoreTarget target{Wide(machine_.Sid(account)), machine_.Profile(account)};
    places.AddTargetProfile(target.profile.CStr());
    found_.trees.clear();
    found_.notFound.Clear();
    found_.protectedPlaces.Clear();
    ListRestoreTrees(root, L"Anna", target, mask, places, found_);
  }

  // "source > target" below the account's folder in the root and below the profile; "!" marks the fast copy.
  std::vector<std::string> Rows(const RestoreRoot& root, const std::string& account = "Bob") {
    std::vector<std::string> rows;
    const std::string user = Utf8(UserFolderInRoot(root, L"Anna")), profile = Utf8(machine_.Profile(account));
    for (const RunTree& tree : found_.trees) {
      std::string source = Utf8(tree.source), target = Utf8(tree.target);
      if (source.starts_with(user)) source = source.substr(user.size());
      if (target.starts_with(profile)) target = target.substr(profile.size());
      rows.push_back(source + " > " + target + (tree.fast ? " !" : "") + (tree.otherFolders ? " *" : ""));
      EXPECT_EQ(Utf8(tree.sourceBase), Utf8(root.folder)) << "no link of the root is to be followed";
      EXPECT_FALSE(tree.targetBase.IsEmpty()) << target;
    }
    return rows;
  }
};

// A group of folders that goes to the wrong place, twice, or nowhere.
TEST_F(RestoreTreesTest, OfASetFollowTheHiveInTheOrderOfTheWorker) {
  std::vector<TestValue> hive = machine_.UsualFolders("Bob");
  hive[3].text = Utf8(machine_.files / "Docs");
  machine_.Add({.name = "Bob", .hive = hive});
  const RestoreRoot root{machine_.files / "set", true, 0.0};
  List(root, kMaskAll);
  EXPECT_THAT(
      Rows(root),
      ElementsAre(
          "\\AppData > \\AppData\\Roaming !",
          "\\AppData\\Microsoft\\Windows\\Themes > \\AppData\\Roaming\\Microsoft\\Windows\\Themes !",
          "\\AppData\\Microsoft\\Windows\\SendTo > \\AppData\\Roaming\\Microsoft\\Windows\\SendTo !",
          "\\AppData\\Microsoft\\Windows\\Account Pictures > "
          "\\AppData\\Roaming\\Microsoft\\Windows\\Account Pictures !",
          "\\LocalAppData > \\AppData\\Local !",
          "\\LocalAppData\\Microsoft\\Windows\\Themes > \\AppData\\Local\\Microsoft\\Windows\\Themes !",
          "\\AppData\\LocalLow > \\AppData\\LocalLow !", "\\Desktop > \\Desktop",
          "\\Documents > " + Utf8(machine_.files / "Docs"), "\\Downloads > \\Downloads", "\\Music > \\Music",
          "\\Pictures > \\Pictures", "\\Videos > \\Videos", " >  *"));
  for (uint32_t bit = 0; bit < 8; bit++) {
    List(root, 1u << bit);
    EXPECT_EQ(found_.trees.size(), bit == 0 ? 7u : 1u) << bit;
  }
  List(root, 0);
  EXPECT_THAT(found_.trees, IsEmpty());
}

// Application data of another installation that is looked for where it never was.
TEST_F(RestoreTreesTest, OfAnInstallationFollowItsLayout) {
  machine_.Add({.name = "Bob"});
  const char* const roaming = "\\Application Data";
  const char* const local = "\\Local Settings\\Application Data";
  struct {
    double version;
    std::vector<std::string> folders;  // below the account's
    const char* roaming;
    const char* local;
  } cases[] = {
      {5.1, {}, roaming, local},
      {5.8, {}, roaming, local},
      {0.0, {}, roaming, local},
      {5.9, {}, "\\AppData\\Roaming", "\\AppData\\Local"},
      {6.0, {}, "\\AppData\\Roaming", "\\AppData\\Local"},
      {10.0, {"AppData"}, "\\AppData\\Roaming", "\\AppData\\Local"},
      // A set that lies in the root: only what the installation's layout lacks comes from there.
      {10.0, {"AppData", "LocalAppData"}, "\\AppData", "\\LocalAppData"},
      {10.0, {"AppData/Local", "LocalAppData"}, "\\AppData", "\\AppData\\Local"},
      {5.1, {"AppData", "LocalAppData"}, "\\AppData", "\\LocalAppData"},
      {5.1, {"AppData", "LocalAppData", "Application Data"}, roaming, "\\LocalAppData"},
  };
  int number = 0;
  for (const auto& test : cases) {
    const std::string name = "old" + std::to_string(number++);
    const RestoreRoot root{machine_.files / name, false, test.version};
    const std::string users = test.version < 5.85 ? "Documents and Settings" : "Users";
    for (const std::string& folder : test.folders)
      machine_.files.Folder(name + "/" + users + "/Anna/" + folder);
    EXPECT_EQ(Utf8(UsersFolderName(root)), users);
    List(root, kMaskAppData);
    const std::vector<std::string> rows = Rows(root);
    ASSERT_EQ(rows.size(), 7u);
    EXPECT_EQ(rows[0], std::string(test.roaming) + " > \\AppData\\Roaming !") << name;
    EXPECT_EQ(rows[4], std::string(test.local) + " > \\AppData\\Local !") << name;
    EXPECT_EQ(rows[6], "\\AppData\\LocalLow > \\AppData\\LocalLow !") << name;
  }
}

// A hive that sends an administrator's restore over the system, or into the data of somebody else.
TEST_F(RestoreTreesTest, LeaveOutFoldersThatAHivePutsElsewhere) {
  machine_.Add({.name = "Eve"});
  machine_.Add({.name = "EveLow"});
  const WString eve = machine_.Profile("Eve");
  const struct {
    std::string text;
    bool isTaken;
    const char* reason;
  } cases[] = {
      {Utf8(machine_.files / "elsewhere"), true, ""},
      {"%USERPROFILE%\\Mine", true, ""},
      {"%SystemRoot%\\System32", false, "lies in the Windows folder"},
      {"%SystemDrive%\\", false, "is the root of the system drive"},
      {"%USERPROFILE%\\..\\Eve\\Documents", false, "is no full path"},
      {Utf8(eve), false, "in the profile of an account that is no target"},
      {Utf8(eve) + "\\Music", false, "in the profile of an account that is no target"},
      {"\\\\.\\C:\\Windows", false, "is no full path"},
      {"C:\\Windows\\..\\x", false, "is no full path"},
      {"Z:\\" + std::string(40000, 'x'), false, "is no full path"},
      {"Documents", false, nullptr},  // not found
      {"%UNKNOWN_VARIABLE%\\x", false, nullptr},
      {"", false, nullptr},
  };
  int number = 0;
  for (const auto& test : cases) {
    const std::string name = "Bob" + std::to_string(number++);
    std::vector<TestValue> hive = machine_.UsualFolders(name);
    hive[3].text = test.text;
    const bool isOther = number % 2 != 0;  // where the system looks only if the first key is silent
    if (isOther) hive[3].key = kUserShellFoldersKey;
    machine_.Add({.name = name, .hive = hive});
    List({machine_.files / "set", true, 0.0}, kMaskDocuments, name.c_str());
    EXPECT_EQ(found_.trees.size(), test.isTaken ? 1u : 0u) << test.text.substr(0, 60);
    EXPECT_EQ(found_.notFound.count, !test.isTaken && !test.reason ? 1u : 0u) << test.text.substr(0, 60);
    ASSERT_EQ(found_.protectedPlaces.count, !test.isTaken && test.reason ? 1u : 0u)
        << test.text.substr(0, 60);
    if (found_.protectedPlaces.count == 0) continue;
    const std::string line = Utf8(found_.protectedPlaces[0]);
    EXPECT_THAT(line, HasSubstr(test.reason));
    EXPECT_THAT(line, HasSubstr("HKU\\" + machine_.Sid(name) + "\\..." + (isOther ? "\\User " : "\\") +
                                "Shell Folders\\Personal = "));
    EXPECT_LT(line.size(), 600u);
  }
}

// The place beside the local data that no value names: three letters more, and it is another's profile.
TEST_F(RestoreTreesTest, LookAtTheFolderBesideTheLocalDataToo) {
  machine_.Add({.name = "EveLow"});
  std::vector<TestValue> hive = machine_.UsualFolders("Bob");
  hive[1].text = Utf8(machine_.files / "Users/Eve");
  machine_.Add({.name = "Bob", .hive = hive});
  List({machine_.files / "set", true, 0.0}, kMaskAppData);
  for (const RunTree& tree : found_.trees) EXPECT_NE(Utf8(tree.target), Utf8(machine_.Profile("EveLow")));
  ASSERT_EQ(found_.protectedPlaces.count, 1u);
  EXPECT_THAT(Utf8(found_.protectedPlaces[0]), HasSubstr("EveLow, which lies in the profile"));
}

TEST_F(RestoreTreesTest, OfANewAccountLieInItsProfileToBe) {
  const RestoreRoot root{machine_.files / "set", true, 0.0};
  ListNewAccountTrees(root, L"Anna", machine_.Profile("Carl").CStr(), kMaskAll & ~kMaskOther, found_);
  ASSERT_EQ(found_.trees.size(), 13u);
  EXPECT_EQ(Utf8(found_.trees[0].target), Utf8(machine_.Profile("Carl")) + "\\AppData\\Roaming");
  EXPECT_EQ(Utf8(found_.trees[6].target), Utf8(machine_.Profile("Carl")) + "\\AppData\\LocalLow");
  EXPECT_EQ(Utf8(found_.trees[12].target), Utf8(machine_.Profile("Carl")) + "\\Videos");
}

// A key of a stranger's info file that leads out of the set.
TEST_F(RestoreTreesTest, OfExtraFoldersStayInTheRoot) {
  const RestoreRoot set{L"C:\\set", true, 0.0}, old{L"E:", false, 10.0};
  const auto sourceOf = [](const RestoreRoot& root, const char* key, const char* target) {
    RunTree tree;
    const bool isTaken = ExtraFolderTree(root, Wide(key).CStr(), Wide(target).CStr(), tree);
    return isTaken ? Utf8(tree.source) : "(refused)";
  };
  EXPECT_EQ(sourceOf(set, "ABC", "D:\\x"), "C:\\set\\ExtraFolders\\ABC");
  EXPECT_EQ(sourceOf(old, "ABC", "D:\\x"), "E:\\ABC");
  EXPECT_EQ(sourceOf(set, "Data\\Work", "D:\\x"), "(refused)");
  EXPECT_EQ(sourceOf(old, "Data\\Work", "D:\\x"), "E:\\Data\\Work");
  for (const RestoreRoot* root : {&set, &old}) {
    for (const char* key : {"..", "Data\\..\\..", "D:\\x", "\\x", "a:b", "NUL", ""}) {
      EXPECT_EQ(sourceOf(*root, key, "D:\\y"), "(refused)") << key;
    }
    for (const char* target : {"x", "", "D:\\..\\x", "\\\\?\\D:\\x"}) {
      EXPECT_EQ(sourceOf(*root, "ABC", target), "(refused)") << target;
    }
  }
}

}  // namespace
