// What norvanectl says of a machine whose hive SOFTWARE is damaged, as that of a dying disk.
#include <filesystem>
#include <fstream>

#include "command_machine.h"
#include "machine/machine.h"
#include "support/host_path.h"

namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

// Anna's profile is told by ProfileList alone, Bob's by the account database, too.
struct DamagedMachine : CommandMachine {
  DamagedMachine() {
    place.AddConsoleUser({.name = "Anna", .privilege = 2});
    files.File("Data/x.txt", "extra");
    files.Folder("backups");
  }
  void AddBob() {
    place.Add({.name = "Bob", .databaseProfile = Path("Users/Bob"), .profileImagePath = ""});
    files.File("Users/Bob/Documents/letter.txt", "dear");
  }
  void Damage() {
    const machine::Machine here = machine::ThisMachine();
    machine::UseMachine(here);  // with its hives closed
    std::ofstream hive(HostPath(L"C:\\Windows\\System32\\config\\SOFTWARE"), std::ios::binary);
    hive << std::string(16384, 'x');
  }
  ConsoleRun Backup(int exitCode, const Words& words) const {
    return Run(exitCode, {"backup", "--to", Path("backups"), "--name", "Set"}, words);
  }
};

// A list of accounts that is short, or shows no folders, must not pass for the whole of it.
TEST(DamagedRegistry, UsersSayThatTheListIsShort) {
  DamagedMachine machine;
  EXPECT_EQ(Norvanectl({"users"}).exitCode, 0);
  machine.Damage();
  const ConsoleRun run = Norvanectl({"users"});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.results, HasSubstr("Anna"));
  EXPECT_THAT(run.errors, HasSubstr("ProfileList) can't be read ("));
  EXPECT_THAT(run.errors, HasSubstr("--extra"));
  EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1);
  const ConsoleRun json = Norvanectl({"users", "--json"});
  EXPECT_EQ(json.exitCode, 1);
  EXPECT_THAT(json.Event("failure")["text"], HasSubstr("can't be read"));
}

// A backup of all accounts that finds none must make nothing that looks like one.
TEST(DamagedRegistry, BackupRefusesWhereNoAccountIsLeft) {
  DamagedMachine machine;
  machine.Damage();
  for (const Words& words : {Words{}, {"--user", "Anna"}, {"--user", "Bob"}, {"--dry-run"}}) {
    const ConsoleRun run = machine.Backup(4, words);
    EXPECT_THAT(run.errors, HasSubstr("ProfileList) can't be read ("));
    EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1);
    EXPECT_THAT(machine.files.List("backups"), IsEmpty());
  }
}

// Accounts that are missing without a word would be missed when their disk is gone.
TEST(DamagedRegistry, BackupOfTheRestCountsWhatIsMissing) {
  DamagedMachine machine;
  machine.AddBob();
  machine.Damage();
  const ConsoleRun all = machine.Backup(1, {"--extra", machine.Path("Data")});
  EXPECT_THAT(all.errors, HasSubstr("ProfileList) can't be read ("));
  EXPECT_THAT(machine.files.List("backups"), testing::Contains(HasSubstr("x.txt")));
  machine.Backup(1, {"--dry-run", "--extra", machine.Path("Data")});

  // One that was asked for, and is there, is all that was asked for.
  const ConsoleRun bob = Norvanectl({"backup", "--to", machine.Path("backups"), "--name", "Set", "--user",
                                     "Bob", "--folders", "documents", "--log", machine.Path("norvane.log")});
  EXPECT_THAT(bob.errors, Not(HasSubstr("ProfileList)")));
  EXPECT_EQ(machine.files.Read("backups/Set/Users/Bob/Documents/letter.txt"), "dear");
}

// A row of folders that can't be found says nothing to a person who doesn't know that they stand in a hive.
TEST(DamagedRegistry, AnAccountsDamagedHiveIsNamed) {
  for (const std::string damage : {"a folder", "cut", "empty"}) {
    CommandMachine machine;
    machine.place.Add({.name = "Bob"});
    machine.files.File("set/Users/Bob/Documents/x");
    machine.files.File("set/BackupInfo.grxsv", "[Users]\r\nBob=1|B\r\n");
    machine.files.Folder("backups");
    const std::filesystem::path hive = HostPath(machine.files / "Users/Bob/NTUSER.DAT");
    if (damage == "a folder") {
      std::filesystem::remove(hive);
      std::filesystem::create_directory(hive);
    } else {
      std::filesystem::resize_file(hive, damage == "cut" ? 5000 : 0);
    }
    for (const Words& words : {Words{"restore", machine.Path("set")},
                               {"backup", "--to", machine.Path("backups"), "--name", "Set"}}) {
      for (const Words& more : {Words{}, {"--dry-run"}}) {
        const ConsoleRun run = machine.Run(1, words, more);
        EXPECT_THAT(
            run.errors,
            HasSubstr("Error! Could not load user hive: " + machine.Path("Users/Bob/NTUSER.DAT") + " ("))
            << damage;
        EXPECT_THAT(run.errors, HasSubstr("Music")) << "the folders are named all the same";
      }
    }
  }
}

}  // namespace
