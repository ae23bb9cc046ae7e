#include "command_machine.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

// The disk of another machine in the folder "disk", with one account that is here, too, and one that isn't.
struct Machine : CommandMachine {
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

  ConsoleRun RestoreFrom(int exitCode, const Words& words) const {
    return Run(exitCode, {"restore-from", Path("disk")}, words);
  }
};

TEST(RestoreFromCommand, BringsBothLayoutsOfADisk) {
  for (const bool isOld : {false, true}) {
    const std::string users = isOld ? "Documents and Settings" : "Users";
    Machine machine(users);
    const std::string data = "disk/" + users + "/Anna/";
    machine.files.File(data + (isOld ? "Application Data" : "AppData/Roaming") + "/settings", "s");
    SetAttributes(machine.files.File(data + "Desktop/hidden.txt").CStr(), FILE_ATTRIBUTE_HIDDEN);
    const ConsoleRun run = machine.RestoreFrom(0, {"--json"});
    EXPECT_EQ(machine.files.Read("Users/Anna/AppData/Roaming/settings"), "s");
    EXPECT_EQ(machine.files.Read("Users/Anna/Desktop/Anna.txt"), "Anna");
    EXPECT_EQ(ReadInProfile("Karl", "Desktop/Karl.txt"), "Karl");
    const nlohmann::json end = run.Event("end");
    EXPECT_EQ(end["root"], machine.Path("disk"));
    EXPECT_THAT(end["accountsCreated"], ElementsAre("Karl"));
    EXPECT_EQ(end["text"], "Successfully restored user data from \"" + machine.Path("disk") +
                               "\"\r\nThe account \"Karl\" was created without a password.");
    EXPECT_FALSE(machine.files.Exists("Users/Anna/Desktop/hidden.txt"));
    machine.RestoreFrom(0, {"--skip", "Karl", "--copy-hidden"});
    EXPECT_TRUE(machine.files.Exists("Users/Anna/Desktop/hidden.txt"));
  }
}

// The layout was guessed, and nobody would know.
TEST(RestoreFromCommand, TellsOfARegistryThatItCannotRead) {
  Machine machine;
  EXPECT_THAT(machine.RestoreFrom(0, {"--dry-run"}).errors, Not(HasSubstr("SOFTWARE")));
  machine.files.File("disk/Windows/System32/config/SOFTWARE", "regf, and nothing more");
  EXPECT_THAT(machine.RestoreFrom(0, {"--dry-run"}).errors,
              HasSubstr("config\\SOFTWARE\" is damaged or doesn't tell it"));
}

// The folders of one run are offered by the next one, and only those.
TEST(RestoreFromCommand, RemembersAdditionalFolders) {
  Machine machine;
  const std::string target = machine.Path("work");
  machine.RestoreFrom(0, {"--skip", "Karl", "--extra", "data/WORK/=" + target});
  EXPECT_EQ(machine.files.Read("work/plan.txt"), "plan");
  EXPECT_TRUE(machine.files.Exists("disk/BackupInfo.nvsav"));
  machine.files.File("disk/Data/Work/new.txt");
  machine.files.File("disk/Data/other.txt");
  machine.RestoreFrom(0, {"--skip", "Karl", "--no-extra"});
  EXPECT_FALSE(machine.files.Exists("work/new.txt"));
  machine.RestoreFrom(0, {"--skip", "Karl", "--extra", "Data\\Work=" + target});
  machine.RestoreFrom(0, {"--skip", "Karl"});
  EXPECT_TRUE(machine.files.Exists("work/new.txt"));
  // A larger folder takes the place of the one that was only remembered.
  const ConsoleRun larger = machine.RestoreFrom(
      0, {"--skip", "Karl", "--extra", "Data=" + machine.Path("all"), "--dry-run", "--json"});
  EXPECT_THAT(larger.results, Not(HasSubstr("work")));
  machine.RestoreFrom(4, {"--folders", "videos", "--no-extra", "--extra", "Links", "--dry-run"});
  machine.files.Folder("disk/Tools");
  const nlohmann::json phase =
      machine.RestoreFrom(0, {"--folders", "videos", "--no-extra", "--extra", "Tools", "--dry-run", "--json"})
          .Event("phase");
  EXPECT_EQ(phase["target"], "C:\\Tools");
}

// What an earlier run took and what is gone since then, and lines of a stranger beside it.
TEST(RestoreFromCommand, TellsWhatIsLeftOutOfAnEarlierRun) {
  Machine machine;
  const std::string target = "=" + machine.Path("x") + "\r\n";
  machine.files.File("disk/BackupInfo.nvsav", "[RTExtraFolders2]\r\nGone\\a" + target + "Gone\\b" + target +
                                                  "..\\..\\x" + target + "a:b" + target + "NUL" + target);
  const ConsoleRun run = machine.RestoreFrom(0, {"--skip", "Karl"});
  for (const char* name : {"..\\..\\x", "a:b", "NUL"})
    EXPECT_THAT(run.errors, HasSubstr("names \"" + std::string(name) + "\", passed over")) << name;
  EXPECT_THAT(run.errors, HasSubstr("2 additional folders of an earlier restore are left out"));
  machine.files.File("disk/BackupInfo.nvsav", "[RTExtraFolders2]\r\nGone" + target);
  const ConsoleRun named = machine.RestoreFrom(4, {"--extra", "Gone=" + machine.Path("x")});
  EXPECT_THAT(named.errors, HasSubstr("does not exist"));
}

// A folder that a stranger's info file sends into the system.
TEST(RestoreFromCommand, LeavesProtectedPlacesAlone) {
  Machine machine;
  machine.files.File(
      "disk/BackupInfo.nvsav",
      "[RTExtraFolders2]\r\nData\\Work=C:\\Windows\\evil\r\n..\\disk=C:\\x\r\n[Users]\r\nKarl=2|K\r\n");
  const ConsoleRun run = machine.RestoreFrom(0, {});
  EXPECT_THAT(run.errors,
              AllOf(HasSubstr("The folder \"Data\\Work\" isn't restored, because \"C:\\Windows\\evil\""),
                    HasSubstr("give --create \"Karl\" to make it one")));
  EXPECT_EQ(GetFileAttributesW(L"C:\\Windows\\evil"), INVALID_FILE_ATTRIBUTES);
  EXPECT_THAT(machine.place.Known("Karl").groups, ElementsAre("Users"));
  const nlohmann::json phase =
      machine.RestoreFrom(0, {"--folders", "videos", "--extra", "Data\\Work", "--dry-run", "--json"})
          .Event("phase");
  EXPECT_EQ(phase["target"], "C:\\Data\\Work") << "a name alone doesn't say yes to a stranger's target";
}

TEST(RestoreFromCommand, MovesOnTheSystemDrive) {
  Machine machine;
  machine.files.File("Users/Anna/Desktop/both.txt", "own");
  machine.files.File("disk/Users/Anna/Desktop/both.txt", "theirs");
  machine.RestoreFrom(0, {"--skip", "Karl", "--move"});
  EXPECT_EQ(machine.files.Read("Users/Anna/Desktop/Anna.txt"), "Anna");
  EXPECT_FALSE(machine.files.Exists("disk/Users/Anna/Desktop/Anna.txt"));
  EXPECT_EQ(machine.files.Read("Users/Anna/Desktop/both.txt"), "own");
  EXPECT_EQ(machine.files.Read("disk/Users/Anna/Desktop/both.txt"), "theirs") << "a file was lost";
  EXPECT_TRUE(machine.files.Exists("disk/Users/Karl/Desktop/Karl.txt"));
}

// Two accounts of the disk in one of this machine, or two of its folders in one place: as copies they are
// fine, but of a move one file would be nowhere.
TEST(RestoreFromCommand, LosesNothingWhenTwoMeet) {
  Machine machine;
  for (const char* account : {"Anna", "Karl"}) {
    machine.files.File(std::string("disk/Users/") + account + "/AppData/Roaming/App/cfg", account);
  }
  const std::vector<std::string> before = machine.files.List();
  const ConsoleRun run = machine.RestoreFrom(4, {"--move", "--map", "Karl=Anna"});
  EXPECT_THAT(run.errors, AllOf(HasSubstr("disk\\Users\\Anna\""), HasSubstr("disk\\Users\\Karl\""),
                                HasSubstr("would both be moved to"), HasSubstr("copy instead of moving")));
  EXPECT_EQ(machine.files.List(), before);
  machine.RestoreFrom(0, {"--map", "Karl=Anna"});
  machine.RestoreFrom(0, {"--move", "--folders", "appdata,desktop,other", "--skip", "Karl"});
}

// What has the info file's place and is none stays as it is, and the data comes all the same.
TEST(RestoreFromCommand, KeepsAwayFromAForeignFile) {
  Machine machine;
  const std::string bytes("PK\0\1", 4);
  machine.files.File("disk/BackupInfo.grxsv", bytes);
  const ConsoleRun run = machine.RestoreFrom(0, {"--skip", "Karl"});
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
  machine.files.Folder("disk/Tools");
  const std::string disk = machine.Path("disk"), both = machine.Path("both");
  const std::string anna = machine.Path("Users/Anna/Desktop"), share = "\\\\localhost\\C$\\x";
  const char* const same = "The source and destination locations are the same.";
  ExpectRefused(machine, {"restore-from"},
                {{{"C:"}, same},
                 {{"c:\\"}, same},
                 {{"C:\\Windows\\.."}, same},
                 {{""}, "is no folder"},
                 {{machine.Path("none")}, "is no folder"},
                 {{machine.Path("file.txt")}, "is a file"},
                 {{machine.Path("bare")}, "no account's folder was found"}});
  ExpectRefused(machine, {"restore-from", disk},
                {{{"--skip", "Bob"}, "holds no data of an account \"Bob\"; there are \""},
                 {{"--extra", "none"}, "does not exist"},
                 {{"--extra", "pic.jpg"}, "is a file"},
                 {{"--extra", ""}, "no plain path below"},
                 {{"--extra", "Data\\..\\..\\x"}, "no plain path below"},
                 {{"--extra", "C:\\Data"}, "no plain path below"},
                 {{"--extra", "Data", "--extra", "Data\\Work"}, "hold one another"},
                 {{"--extra", "Data\\Work", "--extra", "Data"}, "hold one another"},
                 {{"--extra", "Data", "--extra", "DATA\\"}, "more than one --extra", 2},
                 {{"--extra", "Data=relative"}, "no full path"},
                 {{"--extra", "Windows"}, "give --extra \"Windows=TARGET\""},
                 {{"--extra", "Data=" + disk + "\\Data\\deeper"}, "lie one inside the other"}});
  ExpectRefused(machine, {"restore-from", disk, "--move", "--skip", "Karl"},
                {{{"--extra", "Data=" + both, "--extra", "Tools=" + both}, "both be moved"},
                 {{"--extra", "Data=" + both, "--extra", "Tools=" + both + "\\x"}, "both be moved"},
                 {{"--extra", "Data=" + anna}, "both be moved"},
                 {{"--extra", "Data=" + share}, "can't be moved"},
                 {{"--extra", "Data=D:\\Data"}, "leave out --move"}});
}

}  // namespace
