#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "console_run.h"
#include "profile_file.h"
#include "support/account_place.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

// The disk of another machine in the folder "disk", with one account that is here, too, and one that isn't.
struct Machine {
  AccountPlace place;
  TestPlace& files = place.files;

  explicit Machine(const std::string& users = "Users") {
    place.Add({.name = "Anna"});
    for (const std::string account : {"Anna", "Karl"}) {
      // A profile counts from four visible entries on.
      for (const char* folder : {"Contacts", "Links", "Searches"}) {
        files.Folder("disk/" + users + "/" + account + "/" + folder);
      }
      files.File("disk/" + users + "/" + account + "/Desktop/" + account + ".txt", account);
    }
    files.File("disk/Data/Work/plan.txt", "plan");
  }

  std::string Path(const std::string& relative) const { return Utf8(place.files / relative); }
  ConsoleRun RestoreFrom(std::vector<std::string> words, const std::string& root = "disk") const {
    words.insert(words.begin(), {"restore-from", Path(root), "--log", Path("norvane.log")});
    return Norvanectl(words);
  }
};

TEST(RestoreFromCommand, BringsBothLayoutsOfADisk) {
  for (const bool isOld : {false, true}) {
    const std::string users = isOld ? "Documents and Settings" : "Users";
    Machine machine(users);
    const std::string data = "disk/" + users + "/Anna/";
    machine.files.File(data + (isOld ? "Application Data" : "AppData/Roaming") + "/settings", "s");
    const ConsoleRun run = machine.RestoreFrom({"--json"});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(machine.files.Read("Users/Anna/AppData/Roaming/settings"), "s");
    EXPECT_EQ(machine.files.Read("Users/Anna/Desktop/Anna.txt"), "Anna");
    EXPECT_EQ(ReadInProfile("Karl", "Desktop/Karl.txt"), "Karl");
    const nlohmann::json end = run.Event("end");
    EXPECT_EQ(end["root"], machine.Path("disk"));
    EXPECT_THAT(end["accountsCreated"], ElementsAre("Karl"));
    EXPECT_EQ(end["text"], "Successfully restored user data from \"" + machine.Path("disk") +
                               "\"\r\nThe account \"Karl\" was created without a password.");
  }
}

// The folders of one run are offered by the next one, and only those.
TEST(RestoreFromCommand, RemembersAdditionalFolders) {
  Machine machine;
  const std::string target = machine.Path("work");
  ASSERT_EQ(machine.RestoreFrom({"--skip", "Karl", "--extra", "data/WORK/=" + target}).exitCode, 0);
  EXPECT_EQ(machine.files.Read("work/plan.txt"), "plan");
  EXPECT_TRUE(machine.files.Exists("disk/BackupInfo.nvsav"));
  machine.files.File("disk/Data/Work/new.txt");
  machine.files.File("disk/Data/other.txt");
  ASSERT_EQ(machine.RestoreFrom({"--skip", "Karl", "--no-extra"}).exitCode, 0);
  EXPECT_FALSE(machine.files.Exists("work/new.txt"));
  ASSERT_EQ(machine.RestoreFrom({"--skip", "Karl", "--extra", "Data\\Work=" + target}).exitCode, 0);
  ASSERT_EQ(machine.RestoreFrom({"--skip", "Karl"}).exitCode, 0);
  EXPECT_TRUE(machine.files.Exists("work/new.txt"));
  // A larger folder takes the place of the one that was only remembered.
  const ConsoleRun larger = machine.RestoreFrom(
      {"--skip", "Karl", "--extra", "Data=" + machine.Path("all"), "--dry-run", "--json"});
  EXPECT_EQ(larger.exitCode, 0) << larger.errors;
  EXPECT_THAT(larger.results, Not(HasSubstr("work")));
  const ConsoleRun offered =
      machine.RestoreFrom({"--folders", "videos", "--no-extra", "--extra", "Links", "--dry-run"});
  EXPECT_EQ(offered.exitCode, 4);
  machine.files.Folder("disk/Tools");
  const nlohmann::json phase =
      machine.RestoreFrom({"--folders", "videos", "--no-extra", "--extra", "Tools", "--dry-run", "--json"})
          .Event("phase");
  EXPECT_EQ(phase["target"], "C:\\Tools");
}

// What an earlier run took and what is gone since then, and lines of a stranger beside it.
TEST(RestoreFromCommand, TellsWhatIsLeftOutOfAnEarlierRun) {
  Machine machine;
  const std::string target = "=" + machine.Path("x") + "\r\n";
  machine.files.File("disk/BackupInfo.nvsav", "[RTExtraFolders2]\r\nGone\\a" + target + "Gone\\b" + target +
                                                  "..\\..\\x" + target + "a:b" + target + "NUL" + target);
  const ConsoleRun run = machine.RestoreFrom({"--skip", "Karl"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  for (const char* name : {"..\\..\\x", "a:b", "NUL"})
    EXPECT_THAT(run.errors, HasSubstr("names \"" + std::string(name) + "\", passed over")) << name;
  EXPECT_THAT(run.errors, HasSubstr("2 additional folders of an earlier restore are left out"));
  machine.files.File("disk/BackupInfo.nvsav", "[RTExtraFolders2]\r\nGone" + target);
  const ConsoleRun named = machine.RestoreFrom({"--extra", "Gone=" + machine.Path("x")});
  EXPECT_EQ(named.exitCode, 4) << "a person's own word for a folder that is gone";
  EXPECT_THAT(named.errors, HasSubstr("does not exist"));
}

// A folder that a stranger's info file sends into the system.
TEST(RestoreFromCommand, LeavesProtectedPlacesAlone) {
  Machine machine;
  machine.files.File(
      "disk/BackupInfo.nvsav",
      "[RTExtraFolders2]\r\nData\\Work=C:\\Windows\\evil\r\n..\\disk=C:\\x\r\n[Users]\r\nKarl=2|K\r\n");
  const ConsoleRun run = machine.RestoreFrom({});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.errors,
              AllOf(HasSubstr("The folder \"Data\\Work\" isn't restored, because \"C:\\Windows\\evil\""),
                    HasSubstr("give --create \"Karl\" to make it one")));
  EXPECT_EQ(GetFileAttributesW(L"C:\\Windows\\evil"), INVALID_FILE_ATTRIBUTES);
  EXPECT_THAT(machine.place.Known("Karl").groups, ElementsAre("Users"));
  const nlohmann::json phase =
      machine.RestoreFrom({"--folders", "videos", "--extra", "Data\\Work", "--dry-run", "--json"})
          .Event("phase");
  EXPECT_EQ(phase["target"], "C:\\Data\\Work") << "a name alone doesn't say yes to a stranger's target";
}

TEST(RestoreFromCommand, SkipsByAttributeUnlessAsked) {
  Machine machine;
  const WString hidden = machine.files.File("disk/Users/Anna/Documents/hidden.txt");
  SetAttributes(hidden.CStr(), FILE_ATTRIBUTE_HIDDEN);
  EXPECT_EQ(machine.RestoreFrom({"--skip", "Karl"}).exitCode, 0);
  EXPECT_FALSE(machine.files.Exists("Users/Anna/Documents/hidden.txt"));
  EXPECT_EQ(machine.RestoreFrom({"--skip", "Karl", "--copy-hidden"}).exitCode, 0);
  EXPECT_TRUE(machine.files.Exists("Users/Anna/Documents/hidden.txt"));
}

TEST(RestoreFromCommand, MovesOnTheSystemDrive) {
  Machine machine;
  machine.files.File("Users/Anna/Desktop/both.txt", "own");
  machine.files.File("disk/Users/Anna/Desktop/both.txt", "theirs");
  const ConsoleRun run = machine.RestoreFrom({"--skip", "Karl", "--move"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_EQ(machine.files.Read("Users/Anna/Desktop/Anna.txt"), "Anna");
  EXPECT_FALSE(machine.files.Exists("disk/Users/Anna/Desktop/Anna.txt"));
  EXPECT_EQ(machine.files.Read("Users/Anna/Desktop/both.txt"), "own");
  EXPECT_EQ(machine.files.Read("disk/Users/Anna/Desktop/both.txt"), "theirs") << "a file was lost";
  EXPECT_TRUE(machine.files.Exists("disk/Users/Karl/Desktop/Karl.txt"));
  const ConsoleRun away = machine.RestoreFrom({"--move", "--extra", "Data=D:\\Data"});
  EXPECT_EQ(away.exitCode, 4);
  EXPECT_THAT(away.errors, HasSubstr("leave out --move"));
}

// Two accounts of the disk in one of this machine, or two of its folders in one place: as copies they are
// fine, but of a move one file would be nowhere.
TEST(RestoreFromCommand, LosesNothingWhenTwoMeet) {
  Machine machine;
  for (const char* account : {"Anna", "Karl"}) {
    machine.files.File(std::string("disk/Users/") + account + "/AppData/Roaming/App/cfg", account);
  }
  const std::vector<std::string> before = machine.files.List();
  const ConsoleRun run = machine.RestoreFrom({"--move", "--map", "Karl=Anna"});
  EXPECT_EQ(run.exitCode, 4);
  EXPECT_THAT(run.errors, AllOf(HasSubstr("disk\\Users\\Anna\""), HasSubstr("disk\\Users\\Karl\""),
                                HasSubstr("would both be moved to"), HasSubstr("copy instead of moving")));
  EXPECT_EQ(machine.files.List(), before);
  EXPECT_EQ(machine.RestoreFrom({"--map", "Karl=Anna"}).exitCode, 0);
  EXPECT_EQ(machine.RestoreFrom({"--move", "--folders", "appdata,desktop,other", "--skip", "Karl"}).exitCode,
            0);
}

// What has the info file's place and is none stays as it is, and the data comes all the same.
TEST(RestoreFromCommand, KeepsAwayFromAForeignFile) {
  Machine machine;
  const std::string bytes("PK\0\1", 4);
  machine.files.File("disk/BackupInfo.grxsv", bytes);
  const ConsoleRun run = machine.RestoreFrom({"--skip", "Karl"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.errors, HasSubstr("choices of this run aren't kept"));
  EXPECT_EQ(machine.files.Read("disk/BackupInfo.grxsv"), bytes);
  EXPECT_TRUE(machine.files.Exists("Users/Anna/Desktop/Anna.txt"));
}

TEST(RestoreFromCommand, RefusesBadInputBeforeAnythingIsMade) {
  Machine machine;
  machine.files.File("file.txt");
  machine.files.Folder("bare");
  machine.files.File("disk/pic.jpg");
  machine.files.Folder("disk/Windows");
  struct Case {
    std::string root;
    std::vector<std::string> words;
    int exitCode;
    const char* part;
  };
  machine.files.Folder("disk/Tools");
  const std::string disk = machine.Path("disk"), both = machine.Path("both");
  const std::string anna = machine.Path("Users/Anna/Desktop"), share = "\\\\localhost\\C$\\x";
  const char* const same = "The source and destination locations are the same.";
  const Case cases[] = {
      {"C:", {}, 4, same},
      {"c:\\", {}, 4, same},
      {"C:/", {}, 4, same},
      {"C:\\Windows\\..", {}, 4, same},
      {"\\\\?\\C:\\", {}, 4, same},
      {"", {}, 4, "is no folder"},
      {machine.Path("none"), {}, 4, "is no folder"},
      {machine.Path("file.txt"), {}, 4, "is a file"},
      {machine.Path("bare"), {}, 4, "no account's folder was found"},
      {disk, {"--skip", "Bob"}, 4, "holds no data of an account \"Bob\"; there are \""},
      {disk, {"--extra", "none"}, 4, "does not exist"},
      {disk, {"--extra", "pic.jpg"}, 4, "is a file"},
      {disk, {"--extra", ""}, 4, "no plain path below"},
      {disk, {"--extra", ".."}, 4, "no plain path below"},
      {disk, {"--extra", "Data\\..\\..\\x"}, 4, "no plain path below"},
      {disk, {"--extra", "C:\\Data"}, 4, "no plain path below"},
      {disk, {"--extra", "\\\\server\\share"}, 4, "no plain path below"},
      {disk, {"--extra", "Data:stream"}, 4, "no plain path below"},
      {disk, {"--extra", "Data", "--extra", "Data\\Work"}, 4, "hold one another"},
      {disk, {"--extra", "Data\\Work", "--extra", "Data"}, 4, "hold one another"},
      {disk, {"--extra", "Data", "--extra", "DATA\\"}, 2, "more than one --extra"},
      {disk, {"--extra", "Data=relative"}, 4, "no full path"},
      {disk, {"--extra", "Windows"}, 4, "give --extra \"Windows=TARGET\""},
      {disk, {"--extra", "Data=" + disk + "\\Data\\deeper"}, 4, "lie one inside the other"},
      {disk, {"--move", "--map", "Karl=Anna"}, 4, "would both be moved to"},
      {disk,
       {"--move", "--skip", "Karl", "--extra", "Data=" + both, "--extra", "Tools=" + both},
       4,
       "both be moved"},
      {disk,
       {"--move", "--skip", "Karl", "--extra", "Data=" + both, "--extra", "Tools=" + both + "\\x"},
       4,
       "both be moved"},
      {disk, {"--move", "--skip", "Karl", "--extra", "Data=" + anna}, 4, "both be moved"},
      {disk, {"--move", "--skip", "Karl", "--extra", "Data=" + share}, 4, "can't be moved"},
  };
  const std::vector<std::string> before = machine.files.List();
  for (const Case& c : cases) {
    std::vector<std::string> words = {"restore-from", c.root, "--log", machine.Path("norvane.log")};
    words.insert(words.end(), c.words.begin(), c.words.end());
    const ConsoleRun run = Norvanectl(words);
    EXPECT_EQ(run.exitCode, c.exitCode) << c.root << c.part << "\n" << run.errors;
    EXPECT_THAT(run.errors, HasSubstr(c.part)) << c.root;
  }
  EXPECT_EQ(machine.files.List(), before);
}

}  // namespace
