#include "command_machine.h"
#include "operations/backup_set.h"

namespace {

using ::testing::HasSubstr;
using ::testing::Not;

const char kInfoFile[] =
    "[Settings]\r\nUserFolders=6\r\nBackupOptions=1\r\nSkipAttributes=2\r\n"
    "[Users]\r\nAnna=2|Anna Berg\r\nBob=1|\r\n..\\Users=1|out\r\n"
    "[BackupUsers]\r\nAnna=1\r\n"
    "[ExtraFolders]\r\nC:\\Projects=1\r\nD:\\Old=0\r\n";

// A set with data of one of its accounts and of one of its extra folders.
struct SampleSet {
  TestPlace place;
  std::string digest;

  SampleSet() {
    WString name;
    Md5Name(L"C:\\Projects", name);
    digest = Utf8(name);
    place.File("set/BackupInfo.grxsv", kInfoFile);
    place.File("set/Users/Anna/Desktop/a.txt", "12345");
    place.File("set/Users/Anna/Documents/b/c.txt", "123");
    place.File("set/ExtraFolders/" + digest + "/p.txt", "12");
  }
  std::string Path() const { return Utf8(place / "set"); }
};

TEST(InfoCommand, ShowsWhatTheSetHolds) {
  const SampleSet set;
  const ConsoleRun run = Norvanectl({"info", set.Path()});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  for (const std::string& part :
       {std::string("desktop,documents"), std::string("only new and outdated files"),
        std::string("hidden files"), std::string("Users (3)"), std::string("Anna (administrator, Anna Berg)"),
        std::string("Desktop: 1 entry, 5 B"), std::string("Documents: 2 entries, 3 B"),
        std::string("Bob (standard, Bob), not in the last run, no data in the set"),
        std::string("C:\\Projects"), set.digest + ": 1 entry, 2 B",
        std::string("D:\\Old, not in the last run"), std::string("In all:     4 entries, 10 B"),
        // A key of a stranger's file that leads out of the set isn't taken for a folder of it.
        std::string("..\\Users (standard, out), not in the last run, no data in the set")}) {
    EXPECT_THAT(run.results, HasSubstr(part));
  }
}

TEST(InfoCommand, GivesOneEventALine) {
  const SampleSet set;
  // By the info file itself, too.
  const ConsoleRun run = Norvanectl({"info", "--json", Utf8(set.place / "set/BackupInfo.grxsv")});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.Events().size(), 1u + 4 + 3 + 2 + 2 + 1);
  EXPECT_EQ(run.Event("set")["set"], set.Path());
  EXPECT_EQ(run.Event("account")["displayName"], "Anna Berg");
  EXPECT_EQ(run.Event("extraFolder")["name"], set.digest);
  EXPECT_EQ(run.Event("end")["bytes"], 10);
}

// Control characters of an info file act on the terminal of whoever looks at it.
TEST(InfoCommand, TakesOddInfoFilesAsTheyAre) {
  TestPlace place;
  place.File("BackupInfo.nvsav", "[Users]\r\nAn\xc2\x9bna=1|x\t\r\n[ExtraFolders]\r\nC:\\a\tb=1\r\n");
  const ConsoleRun run = Norvanectl({"info", Utf8(place.Path())});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.results, HasSubstr("C:\\a\\x09b"));
  EXPECT_THAT(run.results, Not(HasSubstr("\xc2\x9b")));

  for (const std::string& bytes :
       {std::string(), std::string("\xff\xfe"), std::string("\xef\xbb\xbf[Users]\n"),
        std::string("[Users]\r\n[Users]\r\nx=1")}) {
    place.File("BackupInfo.nvsav", bytes);
    EXPECT_EQ(Norvanectl({"info", Utf8(place.Path())}).exitCode, 0) << bytes;
  }
}

// A hostile file of the largest size that is read: a lookup for each of its keys would take hours.
TEST(InfoCommand, StandsAFileWithVeryManyAccounts) {
  TestPlace place;
  std::string text = "[Users]\r\n", chosen = "[BackupUsers]\r\n";
  for (int account = 0; account < 20000; ++account) {
    const std::string name = "account" + std::to_string(account);
    text += name + "=1|x\r\n";
    chosen += name + "=1\r\n";
  }
  text += "aCCOUNT1=1|again\r\n";  // the first one counts
  std::string extra = "[ExtraFolders]\r\n", names = "[NewExtraFolders]\r\n";
  for (int folder = 0; folder < 5000; ++folder) {
    extra += "C:\\" + std::to_string(folder) + "=1\r\n";
    names += "C:\\" + std::to_string(folder) + "=64C8003575A33831C5D0C3471BB51F6A\r\n";
  }
  place.File("BackupInfo.nvsav", text + chosen + extra + names);
  const ConsoleRun run = Norvanectl({"info", Utf8(place.Path())});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.results, HasSubstr("Users (20001), BackupUsers (20000)"));
  EXPECT_THAT(run.results, Not(HasSubstr("again")));
  EXPECT_THAT(run.results, Not(HasSubstr("not in the last run")));
}

// What isn't a set is said, with its name and a way out, and nothing is read of it.
TEST(InfoCommand, RefusesWhatIsNoSet) {
  TestPlace place;
  place.Folder("empty");
  place.File("binary/BackupInfo.nvsav", std::string("MZ\0\1\2\3", 6));
  place.File("large/BackupInfo.grxsv", std::string((16 << 20) + 1, ' '));
  struct Case {
    const char* path;
    const char* part;
  };
  for (const Case& c : {Case{"none", "does not exist"},
                        {"empty", "does not exist"},
                        {"binary", "no text"},
                        {"large", "16 MiB"},
                        {"large/BackupInfo.grxsv", "16 MiB"}}) {
    const ConsoleRun run = Norvanectl({"info", "--json", Utf8(place / c.path)});
    EXPECT_EQ(run.exitCode, 4) << c.path;
    EXPECT_THAT(run.errors, HasSubstr(c.part));
    EXPECT_THAT(run.errors, HasSubstr(Utf8(place / c.path)));
    EXPECT_EQ(run.Event("end")["outcome"], "not started");
  }
}

}  // namespace
