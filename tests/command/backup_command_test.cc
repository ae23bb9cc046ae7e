#include "command_machine.h"
#include "support/account_database.h"

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

// Two accounts with a file each, a log, and a place for backups.
struct Machine : CommandMachine {
  Machine() {
    place.Add({.name = "Anna", .fullName = "Anna Berg", .privilege = 2});
    place.Add({.name = "Bob"});
    files.File("Users/Anna/Documents/letter.txt", "dear");
    files.File("Users/Bob/Desktop/note.txt", "hello");
    files.Folder("backups");
  }

  ConsoleRun Backup(int exitCode, const Words& words, const Words& name = {"--name", "Set"}) const {
    Words backup = {"backup", "--to", Path("backups")};
    backup.insert(backup.end(), name.begin(), name.end());
    return Run(exitCode, backup, words);
  }
};

TEST(BackupCommand, BacksUpAllAccountsAndFolders) {
  Machine machine;
  machine.files.File("Users/Bob/Projects/x.txt", "extra");
  const ConsoleRun run = machine.Backup(0, {"--extra", machine.Path("Users/Bob/Projects")});
  EXPECT_THAT(run.results, HasSubstr("Successfully backed up user data to \"Set\""));
  EXPECT_EQ(machine.files.Read("backups/Set/Users/Anna/Documents/letter.txt"), "dear");
  EXPECT_EQ(machine.files.Read("backups/Set/Users/Bob/Desktop/note.txt"), "hello");
  EXPECT_TRUE(machine.files.Exists("backups/Set/BackupInfo.grxsv"));
  EXPECT_TRUE(machine.files.Exists("norvane.log"));

  const ConsoleRun info = Norvanectl({"info", machine.Path("backups/Set")});
  EXPECT_THAT(info.results, HasSubstr("Anna (administrator, Anna Berg)"));
  EXPECT_THAT(info.results, HasSubstr(machine.Path("Users/Bob/Projects")));
  EXPECT_FALSE(machine.place.IsHiveLoaded("Anna"));

  // Once more, with the set itself as the parent.
  const ConsoleRun again =
      machine.Run(0, {"backup", "--to", machine.Path("backups/set"), "--name", "SET", "--quiet"});
  EXPECT_EQ(again.results + again.errors, "");
  EXPECT_FALSE(machine.files.Exists("backups/Set/SET"));
}

// Only what was asked for: a folder too many may be someone's who must not be in this set.
TEST(BackupCommand, KeepsToTheSelection) {
  Machine machine;
  machine.files.File("Users/Anna/Desktop/pin.txt", "1234");
  const WString hidden = machine.files.File("Users/Anna/Documents/hidden.txt", "h");
  SetAttributes(hidden.CStr(), FILE_ATTRIBUTE_HIDDEN);
  machine.Backup(0, {"--user", "ANNA", "--folders", "documents, music"});
  EXPECT_TRUE(machine.files.Exists("backups/Set/Users/Anna/Documents/letter.txt"));
  EXPECT_FALSE(machine.files.Exists("backups/Set/Users/Anna/Documents/hidden.txt"));
  EXPECT_FALSE(machine.files.Exists("backups/Set/Users/Anna/Desktop"));
  EXPECT_FALSE(machine.files.Exists("backups/Set/Users/Bob"));
  machine.Backup(0, {"--user", "Anna", "--copy-hidden", "--update"});
  EXPECT_TRUE(machine.files.Exists("backups/Set/Users/Anna/Documents/hidden.txt"));
}

// A script reads these lines; one that doesn't parse, or an end without a count, breaks it.
TEST(BackupCommand, TellsTheRunInEvents) {
  Machine machine;
  const ConsoleRun run = machine.Backup(0, {"--json", "--user", "Anna", "--folders", "documents"});
  const nlohmann::json end = run.Event("end");
  EXPECT_EQ(end["outcome"], "complete");
  EXPECT_EQ(end["files"], 1);
  EXPECT_EQ(end["bytes"], 4);
  EXPECT_EQ(end["failures"], 0);
  EXPECT_EQ(end["set"], machine.Path("backups/Set"));
  EXPECT_EQ(end["infoFile"], machine.Path("backups/Set/BackupInfo.grxsv"));
  EXPECT_EQ(run.Event("phase")["target"], machine.Path("backups/Set/Users/Anna/Documents"));
}

TEST(BackupCommand, ADryRunChangesNothing) {
  Machine machine;
  machine.files.File("Users/Bob/Projects/x.txt", "extra");
  const std::vector<std::string> before = machine.files.List();
  const ConsoleRun run = machine.Backup(0, {"--dry-run", "--extra", machine.Path("Users/Bob/Projects")});
  EXPECT_THAT(run.results, HasSubstr(machine.Path("Users/Anna/Documents") + ": 1 entry, 4 B"));
  EXPECT_THAT(run.results, HasSubstr(machine.Path("Users/Bob/Projects") + ": 1 entry, 5 B"));
  EXPECT_THAT(run.results, HasSubstr("Nothing was changed."));
  EXPECT_EQ(machine.files.List(), before);

  const ConsoleRun json =
      machine.Backup(0, {"--dry-run", "--json", "--user", "Anna", "--folders", "documents"});
  EXPECT_EQ(json.Event("phase")["bytes"], 4);
  EXPECT_EQ(json.Event("end")["entries"], 1);
  EXPECT_EQ(machine.files.List(), before);
}

// What can't be backed up is told, counted and logged, and the rest is in the set all the same.
TEST(BackupCommand, TellsOfAccountsThatItLeavesOut) {
  Machine machine;
  machine.place.Add({.name = "Odd=name"});
  const ConsoleRun run = machine.Backup(1, {"--json"});
  EXPECT_THAT(run.errors, HasSubstr("\"Odd=name\" was left out"));
  EXPECT_EQ(run.Event("end")["outcome"], "failures");
  EXPECT_EQ(run.Event("end")["failures"], 1);
  EXPECT_TRUE(machine.files.Exists("backups/Set/Users/Anna/Documents/letter.txt"));
  machine.Backup(1, {"--dry-run"});
  machine.Backup(4, {"--user", "Odd=name"}, {"--name", "Other"});
  EXPECT_FALSE(machine.files.Exists("backups/Other"));
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
  for (const ConsoleRun& run :
       {Norvanectl({"users"}), machine.Backup(1, {}), machine.Backup(1, {"--dry-run"})}) {
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_THAT(run.errors, AllOf(setAside, others));
  }
  EXPECT_THAT(machine.Backup(1, {"--json"}).Event("note")["text"], HasSubstr("belongs to no local account"));
  const ConsoleRun some = machine.Backup(0, {"--user", "Anna"});
  EXPECT_EQ(some.errors, "");
  const ConsoleRun all =
      machine.Backup(0, {"--extra", machine.Path("Users/Cora"), "--extra", machine.Path("Users/of a domain"),
                         "--extra", machine.Path("Users/of the cloud")});
  EXPECT_THAT(all.errors, Not(HasSubstr(machine.Path("Users"))));
  const ConsoleRun copy = Norvanectl({"copy", "Cora", machine.Path("copy")});
  EXPECT_EQ(copy.exitCode, 4);
  EXPECT_THAT(copy.errors, AllOf(HasSubstr("stands on the temporary profile"), HasSubstr("give the folder")));
}

TEST(BackupCommand, RefusesBadInputBeforeAnythingIsMade) {
  Machine machine;
  machine.files.File("file.txt");
  machine.files.Folder("a=b");
  machine.files.Folder("extra/inner");
  machine.files.File("backups/binary/BackupInfo.nvsav", std::string("\0\1\2", 3));
  machine.files.File("backups/large/BackupInfo.nvsav", std::string((16 << 20) + 1, 'x'));
  // A folder that the account's settings have moved to where the backup goes.
  const std::string moved = Utf8(machine.files.Folder("moved"));
  machine.place.Add({.name = "Eve", .hive = {{kShellFoldersKey, "Personal", moved}}});
  const std::string to = machine.Path("backups"), documents = machine.Path("Users/Anna/Documents");
  const std::string extra = machine.Path("extra"), inner = machine.Path("extra/inner");
  ExpectRefused(machine, {"backup", "--name", "Set"},
                {{{"--to", ""}, "--to D:\\Backups"},
                 {{"--to", machine.Path("file.txt")}, "is a file"},
                 {{"--to", machine.Path("file.txt/deeper")}, "is a file"},
                 {{"--to", "Q:\\none"}, "isn't there"},
                 {{"--to", documents}, "one inside the other"},
                 {{"--to", documents + "/../DOCUMENTS/x"}, "one inside the other"},
                 {{"--to", "\\\\localhost\\C$" + documents.substr(2)}, "one inside the other"},
                 {{"--to", moved, "--user", "Eve", "--folders", "documents"}, "one inside the other"}});
  ExpectRefused(machine, {"backup", "--to", to},
                {{{"--name", "<>:?*"}, "<>:?*"},
                 {{"--name", "con"}, "\"con\""},
                 {{"--name", "binary"}, "no text"},
                 {{"--name", "large"}, "16 MiB"}});
  ExpectRefused(machine, {"backup", "--to", to, "--name", "Set"},
                {{{"--user", "Nobody"}, "There is no local account \"Nobody\""},
                 {{"--user", "An\x1bna"}, "An\\x1bna"},
                 {{"--folders", "documents,docs"}, "\"docs\" is no folder", 2},
                 {{"--folders", ""}, "the list is empty", 2},
                 {{"--extra", machine.Path("")}, "one inside the other"},
                 {{"--extra", machine.Path("none")}, "does not exist"},
                 {{"--extra", machine.Path("file.txt")}, "is a file"},
                 {{"--extra", "C:\\"}, "root of a drive"},
                 {{"--extra", machine.Path("a=b")}, "\"=\""},
                 {{"--extra", extra, "--extra", machine.Path("EXTRA") + "\\"}, "already marked"},
                 {{"--extra", extra, "--extra", inner}, "already marked"},
                 {{"--extra", inner, "--extra", extra}, "already marked"}});
  // A dry run writes no log.
  const ConsoleRun run = Norvanectl({"backup", "--to", to, "--name", "Set", "--log", to});
  EXPECT_EQ(run.exitCode, 4) << run.errors;
  EXPECT_THAT(run.errors, HasSubstr("is a folder"));
  EXPECT_EQ(run.results, "");
  EXPECT_FALSE(machine.files.Exists("backups/Set"));
}

// The default name has to be one folder's name, whatever machine and user are called.
TEST(BackupCommand, NamesTheSetAfterComputerAndUser) {
  Machine machine;
  machine.place.AddConsoleUser({.name = "Cora", .privilege = 2});
  machine.Backup(0, {"--user", "Anna"}, {});
  EXPECT_THAT(machine.files.List("backups"), Contains(HasSubstr(" (Cora)/BackupInfo.grxsv")));
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
