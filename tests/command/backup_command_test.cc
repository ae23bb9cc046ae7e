#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "console_run.h"
#include "support/account_database.h"
#include "support/account_place.h"

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

// Two accounts with a file each, a log, and a place for backups.
struct Machine {
  AccountPlace place;

  Machine() {
    place.Add({.name = "Anna", .fullName = "Anna Berg", .privilege = 2});
    place.Add({.name = "Bob"});
    place.files.File("Users/Anna/Documents/letter.txt", "dear");
    place.files.File("Users/Bob/Desktop/note.txt", "hello");
    place.files.Folder("backups");
  }

  std::string Path(const std::string& relative) const { return Utf8(place.files / relative); }

  // `backup` into the place, with the log beside it.
  ConsoleRun Backup(std::vector<std::string> words, const std::string& name = "Set") const {
    std::vector<std::string> all = {"backup", "--to", Path("backups"), "--log", Path("norvane.log")};
    if (!name.empty()) all.insert(all.end(), {"--name", name});
    all.insert(all.end(), words.begin(), words.end());
    return Norvanectl(all);
  }
};

TEST(BackupCommand, BacksUpAllAccountsAndFolders) {
  Machine machine;
  machine.place.files.File("Users/Bob/Projects/x.txt", "extra");
  const ConsoleRun run = machine.Backup({"--extra", machine.Path("Users/Bob/Projects")});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.results, HasSubstr("Successfully backed up user data to \"Set\""));
  EXPECT_EQ(machine.place.files.Read("backups/Set/Users/Anna/Documents/letter.txt"), "dear");
  EXPECT_EQ(machine.place.files.Read("backups/Set/Users/Bob/Desktop/note.txt"), "hello");
  EXPECT_TRUE(machine.place.files.Exists("backups/Set/BackupInfo.grxsv"));
  EXPECT_TRUE(machine.place.files.Exists("norvane.log"));

  const ConsoleRun info = Norvanectl({"info", machine.Path("backups/Set")});
  EXPECT_THAT(info.results, HasSubstr("Anna (administrator, Anna Berg)"));
  EXPECT_THAT(info.results, HasSubstr(machine.Path("Users/Bob/Projects")));
  EXPECT_FALSE(machine.place.IsHiveLoaded("Anna"));
}

// Only what was asked for: a folder too many may be someone's who must not be in this set.
TEST(BackupCommand, KeepsToTheSelection) {
  Machine machine;
  machine.place.files.File("Users/Anna/Desktop/pin.txt", "1234");
  const WString hidden = machine.place.files.File("Users/Anna/Documents/hidden.txt", "h");
  SetAttributes(hidden.CStr(), FILE_ATTRIBUTE_HIDDEN);
  EXPECT_EQ(machine.Backup({"--user", "ANNA", "--folders", "documents, music"}).exitCode, 0);
  EXPECT_TRUE(machine.place.files.Exists("backups/Set/Users/Anna/Documents/letter.txt"));
  EXPECT_FALSE(machine.place.files.Exists("backups/Set/Users/Anna/Documents/hidden.txt"));
  EXPECT_FALSE(machine.place.files.Exists("backups/Set/Users/Anna/Desktop"));
  EXPECT_FALSE(machine.place.files.Exists("backups/Set/Users/Bob"));
  EXPECT_EQ(machine.Backup({"--user", "Anna", "--copy-hidden", "--update"}).exitCode, 0);
  EXPECT_TRUE(machine.place.files.Exists("backups/Set/Users/Anna/Documents/hidden.txt"));
}

// A script reads these lines; one that doesn't parse, or an end without a count, breaks it.
TEST(BackupCommand, TellsTheRunInEvents) {
  Machine machine;
  const ConsoleRun run = machine.Backup({"--json", "--user", "Anna", "--folders", "documents"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  const nlohmann::json end = run.Event("end");
  EXPECT_EQ(end["outcome"], "complete");
  EXPECT_EQ(end["files"], 1);
  EXPECT_EQ(end["bytes"], 4);
  EXPECT_EQ(end["failures"], 0);
  EXPECT_EQ(end["set"], machine.Path("backups/Set"));
  EXPECT_EQ(end["infoFile"], machine.Path("backups/Set/BackupInfo.grxsv"));
  bool hasDocuments = false;
  for (const nlohmann::json& event : run.Events()) {
    hasDocuments |=
        event["event"] == "phase" && event["target"] == machine.Path("backups/Set/Users/Anna/Documents");
  }
  EXPECT_TRUE(hasDocuments);
}

TEST(BackupCommand, SaysNothingWhenQuiet) {
  Machine machine;
  const ConsoleRun run = machine.Backup({"--quiet"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.results + run.errors, "");
}

TEST(BackupCommand, ADryRunChangesNothing) {
  Machine machine;
  machine.place.files.File("Users/Bob/Projects/x.txt", "extra");
  const std::vector<std::string> before = machine.place.files.List();
  const ConsoleRun run = machine.Backup({"--dry-run", "--extra", machine.Path("Users/Bob/Projects")});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.results, HasSubstr(machine.Path("Users/Anna/Documents") + ": 1 entry, 4 B"));
  EXPECT_THAT(run.results, HasSubstr(machine.Path("Users/Bob/Projects") + ": 1 entry, 5 B"));
  EXPECT_THAT(run.results, HasSubstr("Nothing was changed."));
  EXPECT_EQ(machine.place.files.List(), before);

  const ConsoleRun json = machine.Backup({"--dry-run", "--json", "--user", "Anna", "--folders", "documents"});
  EXPECT_EQ(json.Event("phase")["bytes"], 4);
  EXPECT_EQ(json.Event("end")["entries"], 1);
  EXPECT_EQ(machine.place.files.List(), before);
}

// What can't be backed up is told, counted and logged, and the rest is in the set all the same.
TEST(BackupCommand, TellsOfAccountsThatItLeavesOut) {
  Machine machine;
  machine.place.Add({.name = "Odd=name"});
  const ConsoleRun run = machine.Backup({"--json"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.errors, HasSubstr("\"Odd=name\" was left out"));
  EXPECT_EQ(run.Event("end")["outcome"], "failures");
  EXPECT_EQ(run.Event("end")["failures"], 1);
  EXPECT_TRUE(machine.place.files.Exists("backups/Set/Users/Anna/Documents/letter.txt"));
  EXPECT_EQ(machine.Backup({"--dry-run"}).exitCode, 1);
  EXPECT_EQ(machine.Backup({"--user", "Odd=name"}, "Other").exitCode, 4);
  EXPECT_FALSE(machine.place.files.Exists("backups/Other"));
}

// A person's folder that no listed account stands on looks saved when all accounts are, and isn't.
TEST(BackupCommand, TellsOfProfilesBesideThoseOfTheAccounts) {
  Machine machine;
  AccountPlace& place = machine.place;
  place.Add({.name = "Cora", .profileImagePath = machine.Path("Users/TEMP")});
  WriteTestHive(place.files / "Users/TEMP/NTUSER.DAT", place.UsualFolders("TEMP"));
  place.ListProfile(place.Sid("Cora") + ".bak", place.Profile("Cora"));
  place.ListProfile(place.Sid("Anna") + ".bak", place.files.Folder("Users/TEMP.PC"));  // mended by hand
  place.ListProfile(place.Sid("Bob") + ".bak", place.files / "Users/gone");
  const std::string process = std::to_string(GetCurrentProcessId());
  place.ListProfile("S-1-5-21-1-2-" + process + "-1001", place.files.Folder("Users/of a domain"));
  place.ListProfile("S-1-12-1-2-3-" + process, place.files.Folder("Users/of the cloud"));
  place.ListProfile("S-1-12-1-2-4-" + process, place.files / "Users/moved");
  place.ListProfile("S-1-5-80-2-3-" + process, place.files.Folder("Users/of a service"));

  const auto setAside = AllOf(HasSubstr("The account \"Cora\" stands on the temporary profile"),
                              HasSubstr("\"" + machine.Path("Users/Cora") + "\""));
  const auto others = AllOf(
      HasSubstr("The profile \"" + machine.Path("Users/of a domain") + "\" belongs to no local account"),
      HasSubstr(machine.Path("Users/of the cloud")), Not(HasSubstr("Anna")), Not(HasSubstr("Bob")),
      Not(HasSubstr("moved")), Not(HasSubstr("of a service")));
  for (const ConsoleRun& run : {Norvanectl({"users"}), machine.Backup({}), machine.Backup({"--dry-run"})}) {
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, AllOf(setAside, others));
  }
  EXPECT_THAT(machine.Backup({"--json"}).Event("note")["text"], HasSubstr("belongs to no local account"));
  const ConsoleRun some = machine.Backup({"--user", "Anna"});
  EXPECT_EQ(some.exitCode, 0);
  EXPECT_EQ(some.errors, "");
  const ConsoleRun all =
      machine.Backup({"--extra", machine.Path("Users/Cora"), "--extra", machine.Path("Users/of a domain"),
                      "--extra", machine.Path("Users/of the cloud")});
  EXPECT_EQ(all.exitCode, 0) << all.errors;
  EXPECT_THAT(all.errors, Not(HasSubstr(machine.Path("Users"))));
  const ConsoleRun copy = Norvanectl({"copy", "Cora", machine.Path("copy")});
  EXPECT_EQ(copy.exitCode, 4);
  EXPECT_THAT(copy.errors, AllOf(HasSubstr("stands on the temporary profile"), HasSubstr("give the folder")));
}

TEST(BackupCommand, RefusesBadInputBeforeAnythingIsMade) {
  Machine machine;
  TestPlace& files = machine.place.files;
  files.File("file.txt");
  files.Folder("a=b");
  files.Folder("extra/inner");
  files.File("backups/binary/BackupInfo.nvsav", std::string("\0\1\2", 3));
  files.File("backups/large/BackupInfo.nvsav", std::string((16 << 20) + 1, 'x'));
  struct Case {
    std::vector<std::string> words;
    int exitCode;
    const char* part;
  };
  const Case cases[] = {
      {{"--user", "Nobody"}, 4, "There is no local account \"Nobody\""},
      {{"--user", "An\x1bna"}, 4, "An\\x1bna"},
      {{"--folders", "documents,docs"}, 2, "\"docs\" is no folder"},
      {{"--folders", ""}, 2, "the list is empty"},
      {{"--name", "<>:?*"}, 4, "<>:?*"},
      {{"--name", "con"}, 4, "\"con\""},
      {{"--to", ""}, 4, "--to D:\\Backups"},
      {{"--to", machine.Path("file.txt")}, 4, "is a file"},
      {{"--to", machine.Path("file.txt/deeper")}, 4, "is a file"},
      {{"--to", "Q:\\none"}, 4, "isn't there"},
      {{"--to", machine.Path("Users/Anna/Documents")}, 4, "one inside the other"},
      {{"--to", machine.Path("Users/Anna/Documents/../DOCUMENTS/x")}, 4, "one inside the other"},
      {{"--to", "\\\\localhost\\C$" + machine.Path("Users/Anna/Documents").substr(2)},
       4,
       "one inside the other"},
      {{"--extra", machine.Path("")}, 4, "one inside the other"},
      {{"--extra", machine.Path("none")}, 4, "does not exist"},
      {{"--extra", machine.Path("file.txt")}, 4, "is a file"},
      {{"--extra", "C:\\"}, 4, "root of a drive"},
      {{"--extra", machine.Path("a=b")}, 4, "\"=\""},
      {{"--extra", machine.Path("extra"), "--extra", machine.Path("EXTRA") + "\\"}, 4, "already marked"},
      {{"--extra", machine.Path("extra"), "--extra", machine.Path("extra/inner")}, 4, "already marked"},
      {{"--extra", machine.Path("extra/inner"), "--extra", machine.Path("extra")}, 4, "already marked"},
      {{"--name", "binary"}, 4, "no text"},
      {{"--name", "large"}, 4, "16 MiB"},
      {{"--log", machine.Path("backups")}, 4, "is a folder"},
  };
  const std::vector<std::string> before = files.List();
  for (const Case& c : cases) {
    std::vector<std::string> words = {"backup", "--log", machine.Path("norvane.log")};
    bool hasTo = false, hasName = false;
    for (const std::string& word : c.words) {
      hasTo |= word == "--to";
      hasName |= word == "--name";
    }
    if (c.words[0] == "--log") words.resize(1);
    if (!hasTo) words.insert(words.end(), {"--to", machine.Path("backups")});
    if (!hasName) words.insert(words.end(), {"--name", "Set"});
    words.insert(words.end(), c.words.begin(), c.words.end());
    for (const bool isDry : {false, true}) {
      if (isDry) words.push_back("--dry-run");
      const ConsoleRun run = Norvanectl(words);
      if (isDry && c.words[0] == "--log") continue;  // a dry run writes none
      EXPECT_EQ(run.exitCode, c.exitCode) << c.part << "\n" << run.errors;
      EXPECT_THAT(run.errors, HasSubstr(c.part));
      EXPECT_EQ(run.results, "") << c.part;
    }
  }
  EXPECT_EQ(files.List(), before);
}

// A folder that the account's settings have moved to where the backup goes would be copied into itself.
TEST(BackupCommand, SeesAnOverlapThroughARedirectedFolder) {
  Machine machine;
  const std::string moved = machine.Path("backups");
  machine.place.Add({.name = "Eve", .hive = {{kShellFoldersKey, "Personal", moved}}});
  const ConsoleRun run = machine.Backup({"--user", "Eve", "--folders", "documents"});
  EXPECT_EQ(run.exitCode, 4);
  EXPECT_THAT(run.errors, HasSubstr("\"" + moved + "\""));
  EXPECT_FALSE(machine.place.files.Exists("backups/Set"));
}

// The default name has to be one folder's name, whatever machine and user are called.
TEST(BackupCommand, NamesTheSetAfterComputerAndUser) {
  Machine machine;
  machine.place.AddConsoleUser({.name = "Cora", .privilege = 2});
  EXPECT_EQ(machine.Backup({"--user", "Anna"}, "").exitCode, 0);
  EXPECT_THAT(machine.place.files.List("backups"), Contains(HasSubstr(" (Cora)/BackupInfo.grxsv")));
}

TEST(BackupCommand, UpdatesASetThatTheParentNames) {
  Machine machine;
  EXPECT_EQ(machine.Backup({}).exitCode, 0);
  const ConsoleRun run = Norvanectl(
      {"backup", "--to", machine.Path("backups/set"), "--name", "SET", "--log", machine.Path("norvane.log")});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_FALSE(machine.place.files.Exists("backups/Set/SET"));
}

TEST(UsersCommand, ListsAccounts) {
  Machine machine;
  const ConsoleRun run = Norvanectl({"users"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.results, HasSubstr("Anna     administrator  Anna Berg     " + machine.Path("Users/Anna")));
  EXPECT_THAT(run.results, HasSubstr("Bob      standard"));
  const ConsoleRun json = Norvanectl({"users", "--json"});
  EXPECT_EQ(json.Event("account")["name"], "Anna");
  EXPECT_EQ(json.Event("account")["sid"], machine.place.Sid("Anna"));
  const std::vector<nlohmann::json> events = json.Events();
  EXPECT_EQ(
      std::count_if(events.begin(), events.end(), [](const auto& e) { return e["event"] == "account"; }), 2);
  EXPECT_FALSE(machine.place.IsHiveLoaded("Bob"));
}

TEST(UsersCommand, SaysWhenThereAreNone) {
  AccountPlace place;
  const ConsoleRun run = Norvanectl({"users"});
  if (run.exitCode == 0) GTEST_SKIP() << "somebody sits at the console";
  EXPECT_EQ(run.exitCode, 4);
  EXPECT_THAT(run.errors, HasSubstr("no local account"));
  EXPECT_THAT(run.errors, Not(HasSubstr("ACCOUNT")));
}

}  // namespace
