// What norvanectl says of a machine whose hive SOFTWARE is damaged, as that of a dying disk.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "console_run.h"
#include "machine/machine.h"
#include "support/account_place.h"
#include "support/host_path.h"

namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

// Anna's profile is told by ProfileList alone, Bob's by the account database, too.
struct DamagedMachine {
  AccountPlace place;

  DamagedMachine() {
    place.AddConsoleUser({.name = "Anna", .privilege = 2});
    place.files.File("Data/x.txt", "extra");
    place.files.Folder("backups");
  }
  void AddBob() {
    place.Add({.name = "Bob", .databaseProfile = Utf8(place.files / "Users/Bob"), .profileImagePath = ""});
    place.files.File("Users/Bob/Documents/letter.txt", "dear");
  }
  void Damage() {
    const machine::Machine here = machine::ThisMachine();
    machine::UseMachine(here);  // with its hives closed
    std::ofstream hive(HostPath(L"C:\\Windows\\System32\\config\\SOFTWARE"), std::ios::binary);
    hive << std::string(16384, 'x');
  }
  ConsoleRun Backup(std::vector<std::string> words) const {
    words.insert(words.begin(), {"backup", "--to", Utf8(place.files / "backups"), "--name", "Set", "--log",
                                 Utf8(place.files / "x.log")});
    return Norvanectl(words);
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
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{}, {"--user", "Anna"}, {"--user", "Bob"}, {"--dry-run"}}) {
    const ConsoleRun run = machine.Backup(words);
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_THAT(run.errors, HasSubstr("ProfileList) can't be read ("));
    EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1);
    EXPECT_THAT(machine.place.files.List("backups"), IsEmpty());
  }
}

// Accounts that are missing without a word would be missed when their disk is gone.
TEST(DamagedRegistry, BackupOfTheRestCountsWhatIsMissing) {
  DamagedMachine machine;
  machine.AddBob();
  machine.Damage();
  const ConsoleRun all = machine.Backup({"--extra", Utf8(machine.place.files / "Data")});
  EXPECT_EQ(all.exitCode, 1);
  EXPECT_THAT(all.errors, HasSubstr("ProfileList) can't be read ("));
  EXPECT_THAT(machine.place.files.List("backups"), testing::Contains(HasSubstr("x.txt")));
  EXPECT_EQ(machine.Backup({"--dry-run", "--extra", Utf8(machine.place.files / "Data")}).exitCode, 1);

  // One that was asked for, and is there, is all that was asked for.
  const ConsoleRun bob = machine.Backup({"--user", "Bob", "--folders", "documents"});
  EXPECT_THAT(bob.errors, Not(HasSubstr("ProfileList)")));
  EXPECT_EQ(machine.place.files.Read("backups/Set/Users/Bob/Documents/letter.txt"), "dear");
}

// A row of folders that can't be found says nothing to a person who doesn't know that they stand in a hive.
TEST(DamagedRegistry, AnAccountsDamagedHiveIsNamed) {
  for (const std::string damage : {"a folder", "cut", "empty"}) {
    AccountPlace place;
    place.Add({.name = "Bob"});
    place.files.File("set/Users/Bob/Documents/x");
    place.files.File("set/BackupInfo.grxsv", "[Users]\r\nBob=1|B\r\n");
    place.files.Folder("backups");
    const std::filesystem::path hive = HostPath(place.files / "Users/Bob/NTUSER.DAT");
    if (damage == "a folder") {
      std::filesystem::remove(hive);
      std::filesystem::create_directory(hive);
    } else {
      std::filesystem::resize_file(hive, damage == "cut" ? 5000 : 0);
    }
    const std::string log = Utf8(place.files / "x.log"), set = Utf8(place.files / "set");
    const std::string to = Utf8(place.files / "backups");
    for (std::vector<std::string> words :
         {std::vector<std::string>{"restore", set}, {"backup", "--to", to, "--name", "Set"}}) {
      words.insert(words.end(), {"--log", log});
      for (const bool isDry : {false, true}) {
        if (isDry) words.push_back("--dry-run");
        const ConsoleRun run = Norvanectl(words);
        EXPECT_EQ(run.exitCode, 1) << damage << run.errors;
        EXPECT_THAT(run.errors, HasSubstr("Error! Could not load user hive: " + Utf8(place.Profile("Bob")) +
                                          "\\NTUSER.DAT ("))
            << damage;
        EXPECT_THAT(run.errors, HasSubstr("Music")) << "the folders are named all the same";
      }
    }
  }
}

}  // namespace
