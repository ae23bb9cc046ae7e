// A backup as another program finds it.
#include "support/set_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "operations/backup_start.h"
#include "support/host_path.h"
#include "support/operation_run.h"

namespace {

using testing::ElementsAre;
using testing::Pair;
using testing::UnorderedElementsAre;

class SetReaderTest : public testing::Test {
 protected:
  SetReaderTest() {
    run.machine.AddConsoleUser({.name = "Admin", .privilege = 2});
    std::vector<TestValue> hive = run.machine.UsualFolders("Anna");
    hive[3].text = Utf8(files.Folder("Elsewhere/Papers"));
    run.machine.Add({.name = "Anna", .fullName = "Anna Berg", .privilege = 2, .hive = hive});
    run.machine.Add({.name = "Zoë"});
    selection.users.Add(L"Anna");
    selection.users.Add(L"Zo\u00eb");
  }

  // Runs a backup of the selection, as a front end does.
  void BackUp() {
    IniDocument document;
    WString problem;
    WStringArray leftOut;
    ASSERT_TRUE(StartBackupSet((files / "B/X").CStr(), selection, document, problem, &leftOut))
        << Utf8(problem);
    ASSERT_EQ(leftOut.count, 0u);
    run.NewRecord().document = &document;
    run.Run();
    EXPECT_EQ(run.context->outcome, OperationOutcome::kComplete);
  }

  set_reader::ReadSet Read() { return set_reader::Read(HostPath(files / "B/X")); }

  OperationRun run{kBackupOperation};
  TestPlace& files = run.files;
  BackupSelection selection;
};

// Would catch every difference between the sets that are written and the format that is described.
TEST_F(SetReaderTest, FindsAllThatABackupWrote) {
  files.File("Users/Anna/AppData/Roaming/app/settings", "roaming");
  files.File("Users/Anna/AppData/Roaming/Packages/x", "left out");
  files.File("Users/Anna/AppData/Roaming/Microsoft/Windows/Recent/x", "left out");
  files.File("Users/Anna/AppData/Roaming/Microsoft/Windows/SendTo/link", "send to");
  files.File("Users/Anna/AppData/Local/Microsoft/Windows/Themes/blue.theme", "theme");
  files.File("Users/Anna/AppData/Local/Packages/x", "left out");
  files.File("Users/Anna/Desktop/größe 日本.txt", "desktop");
  for (const char* file : {"Downloads/f", "Music/g", "Pictures/h", "Videos/i"}) {
    files.File(std::string("Users/Anna/") + file, file);
  }
  files.File("Elsewhere/Papers/deep/down/letter.txt", "letter");
  files.File("Users/Anna/Contacts/eve.contact", "contact");
  files.File("Users/Anna/loose.txt", "left out");
  files.File("Users/Zoë/Music/song.mp3", "not chosen");
  const WString data = files.Folder("Dätä");
  files.File("Dätä/one.txt", "1");
  const WString hidden = files.File("Dätä/hidden.txt", "left out");
  SetAttributes(hidden.CStr(), FILE_ATTRIBUTE_HIDDEN);
  selection.userTicked = {true, false};
  selection.extraFolders.Add(data.CStr());
  selection.extraFolders.Add(L"C:\\Listed only");
  selection.extraTicked = {true, false};
  BackUp();

  const set_reader::ReadSet set = Read();
  EXPECT_EQ(set.problem, "");
  EXPECT_EQ(set.folderMask, 255);
  EXPECT_EQ(set.options, 0);
  EXPECT_EQ(set.skippedAttributes, 6);
  ASSERT_EQ(set.accounts.size(), 1u) << "one account was ticked of three";
  EXPECT_EQ(set.accounts[0].name, "Anna");
  EXPECT_EQ(set.accounts[0].displayName, "Anna Berg");
  EXPECT_EQ(set.accounts[0].level, 2);
  EXPECT_TRUE(set.accounts[0].isOfLastBackup);
  EXPECT_THAT(
      set.accounts[0].files,
      UnorderedElementsAre(
          Pair("AppData/app/settings", "roaming"), Pair("AppData/Microsoft/Windows/SendTo/link", "send to"),
          Pair("LocalAppData/Microsoft/Windows/Themes/blue.theme", "theme"),
          Pair("Desktop/größe 日本.txt", "desktop"), Pair("Documents/deep/down/letter.txt", "letter"),
          Pair("Downloads/f", "Downloads/f"), Pair("Music/g", "Music/g"), Pair("Pictures/h", "Pictures/h"),
          Pair("Videos/i", "Videos/i"), Pair("Contacts/eve.contact", "contact")));
  ASSERT_EQ(set.extraFolders.size(), 1u);
  EXPECT_EQ(set.extraFolders[0].sourcePath, Utf8(data));
  EXPECT_THAT(set.extraFolders[0].files, ElementsAre(Pair("one.txt", "1")));
}

// A second run with another selection: what is in the set stays, and stays named.
TEST_F(SetReaderTest, FindsTheDataOfEarlierBackups) {
  const WString data = files.Folder("Data");
  files.File("Data/one.txt", "1");
  files.File("Users/Anna/Music/a.mp3", "a");
  files.File("Users/Zoë/Music/z.mp3", "z");
  selection.folderMask = kMaskMusic;
  selection.userTicked = {true, false};
  selection.extraFolders.Add(data.CStr());
  selection.extraTicked = {true};
  BackUp();
  selection.userTicked = {false, true};
  selection.extraTicked = {false};
  selection.updateOnly = true;
  BackUp();

  const set_reader::ReadSet set = Read();
  EXPECT_EQ(set.folderMask, 16);
  EXPECT_EQ(set.options, 1);
  ASSERT_EQ(set.accounts.size(), 2u);
  EXPECT_FALSE(set.accounts[0].isOfLastBackup);
  EXPECT_THAT(set.accounts[0].files, ElementsAre(Pair("Music/a.mp3", "a")));
  EXPECT_EQ(set.accounts[1].name, "Zoë");
  EXPECT_TRUE(set.accounts[1].isOfLastBackup);
  EXPECT_THAT(set.accounts[1].files, ElementsAre(Pair("Music/z.mp3", "z")));
  ASSERT_EQ(set.extraFolders.size(), 1u);
  EXPECT_FALSE(set.extraFolders[0].isOfLastBackup);
  EXPECT_THAT(set.extraFolders[0].files, ElementsAre(Pair("one.txt", "1")));

  // An editor has left the info file without a mark: the program and the page mean the same letters.
  const WString infoFile = files / "B/X/BackupInfo.grxsv";
  WriteBytes(infoFile.CStr(), "[Users]\nZo\xeb=1|\x80 \xdf\n");
  const set_reader::ReadSet edited = Read();
  ASSERT_EQ(edited.accounts.size(), 1u);
  EXPECT_EQ(edited.accounts[0].name + "=" + edited.accounts[0].displayName, "Zoë=€ ß");
  IniDocument document(infoFile.CStr());
  EXPECT_EQ(Utf8(document.GetValue(L"Users", L"Zo\u00eb")), "1|€ ß");
}

// The reader's own digest, against the examples of the page.
TEST(SetReader, DigestsAsThePageSays) {
  EXPECT_EQ(set_reader::Md5(std::string("C\0:\0\\\0D\0a\0t\0a\0\0\0", 16)),
            "64C8003575A33831C5D0C3471BB51F6A");
}

}  // namespace
