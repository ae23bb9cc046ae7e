#include "operations/backup_target.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "support/test_place.h"

namespace {

// Would catch a backup in a folder that can't be opened again, or in another than the one named.
TEST(BackupName, LosesWhatNoFolderCanHave) {
  const std::pair<const char*, const char*> cases[] = {
      {"My backup", "My backup"},
      {"PC (Anna)", "PC (Anna)"},
      {"a\\b/c:d*e?f\"g<h>i|j", "abcdefghij"},
      {"\\/:*?\"<>|", ""},
      {"  x  ", "x"},
      {"x. . .", "x"},
      {"..", ""},
      {"..\\..", ""},
      {".git", ".git"},
      {"nul", ""},
      {"COM1.old", ""},
      {"COM0", "COM0"},
      {"Console", "Console"},
      {"Größe 日本", "Größe 日本"},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(Utf8(CleanBackupName(Wide(text).CStr())), expected) << text;
  }
}

// Would catch "PC ()", which a machine without a user at the console would get.
TEST(BackupName, IsByDefaultThatOfComputerAndUser) {
  EXPECT_EQ(DefaultBackupName(L"PC", L"Anna"), L"PC (Anna)");
  EXPECT_EQ(DefaultBackupName(L"PC", L""), L"PC");
  EXPECT_EQ(DefaultBackupName(L"PC", nullptr), L"PC");
}

// Pointing at an existing backup must update it and not make a second one inside it.
TEST(BackupTarget, IsTheParentWhereItsLastComponentIsTheName) {
  const char* cases[][3] = {
      {"D:", "Backup", "D:\\Backup"},
      {"D:\\Backup", "Backup", "D:\\Backup"},
      {"D:\\BACKUP", "backup", "D:\\BACKUP"},
      {"D:\\My Backup", "Backup", "D:\\My Backup\\Backup"},
      {"D:\\Backup\\old", "Backup", "D:\\Backup\\old\\Backup"},
  };
  for (const auto& [parent, name, expected] : cases) {
    EXPECT_EQ(Utf8(BackupTargetFolder(Wide(parent).CStr(), Wide(name).CStr())), expected);
  }
}

TEST(BackupTarget, ParentHasItsVariablesExpanded) {
  EXPECT_EQ(Utf8(ExpandParentFolder(L"%SystemDrive%\\")), "C:");
  EXPECT_EQ(Utf8(ExpandParentFolder(L"%systemdrive%\\B\\\\")), "C:\\B");
  EXPECT_EQ(Utf8(ExpandParentFolder(L"%NoSuchVariable%\\x")), "%NoSuchVariable%\\x");
  EXPECT_EQ(Utf8(ExpandParentFolder(L"\\\\")), "");
  // Longer than the room for the expanded text: the text stays.
  const std::string text = "%SystemDrive%" + std::string(4100, 'x');
  EXPECT_EQ(Utf8(ExpandParentFolder(Wide(text).CStr())), text);
}

TEST(BackupTarget, IsSplitIntoNameAndParent) {
  WString name, parent;
  SplitSetFolder(L"D:\\B\\PC (Anna)\\", name, parent);
  EXPECT_EQ(Utf8(name), "PC (Anna)");
  EXPECT_EQ(Utf8(parent), "D:\\B");
  SplitSetFolder(L"D:\\X", name, parent);
  EXPECT_EQ(Utf8(name), "X");
  EXPECT_EQ(Utf8(parent), "D:");
}

// A run that can't start must leave nothing behind, and nothing of anyone else's must go.
TEST(BackupTarget, IsTakenBackUpToTheFirstFolderMade) {
  TestPlace place;
  place.Folder("there");
  WString firstMade;
  ASSERT_TRUE(MakeBackupTarget((place / "there/a/b/c").CStr(), firstMade));
  EXPECT_EQ(Utf8(firstMade), Utf8(place / "there/a"));
  UnmakeBackupTarget((place / "there/a/b/c").CStr(), firstMade);
  EXPECT_EQ(place.List(), std::vector<std::string>{"there"});

  ASSERT_TRUE(MakeBackupTarget((place / "there/a/b").CStr(), firstMade));
  place.File("there/a/other");
  UnmakeBackupTarget((place / "there/a/b").CStr(), firstMade);
  EXPECT_EQ(place.List(), (std::vector<std::string>{"there", "there/a", "there/a/other"}));

  ASSERT_TRUE(MakeBackupTarget((place / "there").CStr(), firstMade));
  EXPECT_TRUE(firstMade.IsEmpty());
  UnmakeBackupTarget((place / "there").CStr(), firstMade);
  EXPECT_TRUE(place.Exists("there"));
}

}  // namespace
