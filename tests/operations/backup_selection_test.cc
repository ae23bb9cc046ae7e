#include "operations/backup_selection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/account_place.h"
#include "support/array_rows.h"

namespace {

using testing::ElementsAre;

void Fill(WStringArray& list, std::vector<bool>& ticked,
          const std::vector<std::pair<std::string, bool>>& rows) {
  list.Clear();
  ticked.clear();
  for (const auto& [text, isTicked] : rows) {
    list.Add(Wide(text).CStr());
    ticked.push_back(isTicked);
  }
}

void FillUsers(BackupSelection& selection, const std::vector<std::pair<std::string, bool>>& rows) {
  Fill(selection.users, selection.userTicked, rows);
}
void FillExtra(BackupSelection& selection, const std::vector<std::pair<std::string, bool>>& rows) {
  Fill(selection.extraFolders, selection.extraTicked, rows);
}

class BackupSelectionTest : public testing::Test {
 protected:
  BackupSelectionTest() {
    place.Add({.name = "Anna", .fullName = "Anna Berg", .privilege = 2});
    place.Add({.name = "Bob"});
    place.Add({.name = "Eve", .fullName = "Eve|x", .privilege = 0});
  }
  AccountPlace place;
  IniDocument document;
  BackupSelection selection;
};

// The file as another build reads it: names, order and values, row by row.
TEST_F(BackupSelectionTest, IsWrittenInTheOrderOfTheFormat) {
  FillUsers(selection, {{"Anna", true}, {"Bob", false}, {"Eve", false}});
  FillExtra(selection, {{"C:\\Data", true}, {"D:\\Other", false}, {"D:\\", true}});
  WriteBackupSelection(document, selection);
  EXPECT_THAT(ArrayRows(document.lines),
              ElementsAre("[Settings]", "UserFolders=255", "BackupOptions=0", "SkipAttributes=6", "[Users]",
                          "Anna=2|Anna Berg", "Bob=1|Bob", "Eve=0|Eve|x", "[BackupUsers]", "Anna=1",
                          "[ExtraFolders]", "C:\\Data=1", "D:\\Other=0", "[NewExtraFolders]",
                          "C:\\Data=64C8003575A33831C5D0C3471BB51F6A"));
}

// What was unticked must not be backed up again, and what an earlier run listed stays listed.
TEST_F(BackupSelectionTest, RebuildsWhatIsBackedUpAndKeepsWhatIsListed) {
  FillUsers(selection, {{"Anna", true}, {"Bob", true}});
  FillExtra(selection, {{"C:\\Data", true}, {"C:\\Gone", true}});
  WriteBackupSelection(document, selection);
  document.SetValue(kRestoreUsersSection, L"Anna", L"Bob");

  FillUsers(selection, {{"Anna", false}, {"Bob", true}});
  FillExtra(selection, {{"C:\\Data", false}});
  selection.folderMask = kMaskMusic | kMaskOther;
  selection.updateOnly = true;
  selection.skipAttributes = kSkipSystemFiles;
  WriteBackupSelection(document, selection);

  EXPECT_THAT(ArrayRows(document.lines),
              ElementsAre("[Settings]", "UserFolders=144", "BackupOptions=1", "SkipAttributes=4", "[Users]",
                          "Anna=2|Anna Berg", "Bob=1|Bob", "[ExtraFolders]", "C:\\Data=0", "C:\\Gone=1",
                          "[RTBackupUsers]", "Anna=Bob", "[BackupUsers]", "Bob=1"));
}

// An account or a folder that was asked for and isn't in the set has to be told.
TEST_F(BackupSelectionTest, NamesWhatItLeavesOut) {
  place.Add({.name = "x=y"});
  FillUsers(selection, {{"Gone", true}, {"Gone too", false}, {"Bob", true}, {"x=y", true}});
  FillExtra(selection, {{"C:\\a=b", true}, {"C:\\Data", true}, {"C:\\c=d", false}});
  WStringArray leftOut;
  WriteBackupSelection(document, selection, &leftOut);
  EXPECT_THAT(ArrayRows(leftOut), ElementsAre("Gone", "x=y", "C:\\a=b"));
  EXPECT_THAT(ArrayRows(document.lines),
              ElementsAre("[Settings]", "UserFolders=255", "BackupOptions=0", "SkipAttributes=6", "[Users]",
                          "Bob=1|Bob", "[BackupUsers]", "Bob=1", "[ExtraFolders]", "C:\\Data=1",
                          "[NewExtraFolders]", "C:\\Data=64C8003575A33831C5D0C3471BB51F6A"));
}

// Would catch a full name that adds a section of its own to the file.
TEST_F(BackupSelectionTest, KeepsAFullNameInItsLine) {
  place.Add({.name = "Max", .fullName = "Max\r\n[NewExtraFolders]\nC:\\=x"});
  FillUsers(selection, {{"Max", false}});
  WriteBackupSelection(document, selection);
  EXPECT_EQ(Utf8(document.GetValue(kUsersSection, L"Max")), "1|Max  [NewExtraFolders] C:\\=x");
}

TEST_F(BackupSelectionTest, IsReadBackAsItWasWritten) {
  FillUsers(selection, {{"Anna", true}, {"Bob", false}, {"Eve", true}});
  FillExtra(selection, {{"D:\\Ä b", true}, {"C:\\Data", false}});
  selection.folderMask = kMaskDesktop | kMaskVideos;
  selection.updateOnly = true;
  selection.skipAttributes = kSkipHiddenFiles;
  WriteBackupSelection(document, selection);
  document.SetValue(kBackupUsersSection, L"Elsewhere", L"1");

  BackupSelection again;
  FillUsers(again, {{"Bob", true}, {"Eve", false}, {"New", true}});
  FillExtra(again, {{"X:\\Old", true}});
  ReadBackupSelection(document, again);

  EXPECT_THAT(again.userTicked, ElementsAre(false, true, false));
  EXPECT_EQ(again.folderMask, kMaskDesktop | kMaskVideos);
  EXPECT_THAT(ArrayRows(again.extraFolders), ElementsAre("D:\\Ä b", "C:\\Data"));
  EXPECT_THAT(again.extraTicked, ElementsAre(true, false));
  EXPECT_TRUE(again.updateOnly);
  EXPECT_EQ(again.skipAttributes, kSkipHiddenFiles);
}

// A document that loses what it held, or a set whose second file is made beside the first.
TEST_F(BackupSelectionTest, LoadsTheInfoFileOfTheTargetAndSavesTheOneBefore) {
  const WString first = place.files.Folder("first");
  const WString second = place.files.Folder("second");
  place.files.File("second/BackupInfo.nvsav", "[Settings]\r\nUserFolders=3\r\n");
  bool fileMade = false;
  ASSERT_TRUE(PrepareBackupDocument(first.CStr(), document, nullptr, &fileMade));
  EXPECT_TRUE(fileMade);
  EXPECT_EQ(place.files.Read("first/BackupInfo.grxsv"), "\xff\xfe") << "before the first key";
  document.SetValue(kSettingsSection, L"a", L"1");

  ASSERT_TRUE(PrepareBackupDocument(second.CStr(), document, nullptr, &fileMade));
  EXPECT_FALSE(fileMade);
  EXPECT_EQ(place.files.Read("first/BackupInfo.grxsv").size(), 2 * (1 + 10 + 2 + 3 + 2));
  EXPECT_EQ(document.GetNumber(kSettingsSection, kUserFoldersKey), 3u);
  EXPECT_EQ(Utf8(document.path), Utf8(second) + "\\BackupInfo.nvsav");
  EXPECT_FALSE(place.files.Exists("second/BackupInfo.grxsv"));
}

}  // namespace
