// Restores with links and with the groups of a system, which Wine has none of.
#include <filesystem>

#include "command_machine.h"
#include "support/account_calls.h"
#include "support/host_path.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

// The account Anna, and a set or a disk of a stranger.
struct Machine : CommandMachine {
  Machine() { place.Add({.name = "Anna"}); }

  // A folder with what a profile on a disk is known by.
  void AddProfileFolders(const std::string& folder) {
    for (const char* name : {"/Contacts", "/Links", "/Searches", "/Music"}) files.Folder(folder + name);
  }
  ConsoleRun Restore(int exitCode, const Words& words = {}) const {
    return Run(exitCode, {"restore", Path("set")}, words);
  }
  ConsoleRun RestoreFrom(int exitCode, const Words& words = {}) const {
    return Run(exitCode, {"restore-from", Path("disk")}, words);
  }
};

// An account of a group's name can't be made, and a profile that is found under it would be anybody's.
TEST(RestoreCommand, TakesNoGroupForAnAccount) {
  Machine machine;
  machine.files.File("set/Users/Guests/Documents/x");
  machine.files.File("set/Users/Anna/Documents/y");
  machine.files.File("set/BackupInfo.grxsv", "[Users]\r\nGuests=1|G\r\nAnna=1|A\r\n");
  const ConsoleRun refused = machine.Restore(4, {"--create", "Anna=Administrators"});
  EXPECT_THAT(refused.errors, HasSubstr("an account or a group \"Administrators\" already"));
  const ConsoleRun run = machine.Restore(1);
  EXPECT_THAT(run.errors, HasSubstr("The account \"Guests\" was left out, because no account of that name"));
  EXPECT_TRUE(machine.files.Exists("Users/Anna/Documents/y"));
}

// A person who may not make accounts, and is told that a profile is missing.
TEST(RestoreCommand, TellsWhyAnAccountCouldNotBeMade) {
  Machine machine;
  machine.files.File("set/Users/Eve/Documents/x");
  machine.files.File("set/BackupInfo.grxsv", "[Users]\r\nEve=1|E\r\n");
  const FailingAccountCall failing("NetUserAdd");
  const ConsoleRun run = machine.Restore(1);
  EXPECT_THAT(run.errors, HasSubstr("Could not get profile path for user: Eve (Access is denied.)"));
}

// What a link in the set shows belongs to somebody else, and a dry run that counted it would promise it.
TEST(RestoreCommand, ADryRunLooksBehindNoLink) {
  Machine machine;
  machine.files.File("outside/secret.txt", "secret!");
  machine.files.File("set/Users/Anna/Desktop/a.txt", "a");
  machine.files.File("set/BackupInfo.grxsv", "[Users]\r\nAnna=1|A\r\n");
  for (const char* folder : {"Music", "AppData", "Other"}) {
    machine.files.Link(std::string("set/Users/Anna/") + folder, "outside");
  }
  const ConsoleRun run = machine.Restore(1), dry = machine.Restore(1, {"--dry-run"});
  EXPECT_EQ(dry.errors, run.errors);
  EXPECT_THAT(dry.errors, AllOf(HasSubstr("Anna\\Music ("), HasSubstr("Anna\\AppData (")));
  EXPECT_THAT(dry.results, HasSubstr("In all 1 entry, 1 B."));
}

// A link in a disk's place for accounts, or for the info file, leads to somebody else's data.
TEST(RestoreFromCommand, FollowsNoLinkOfTheDisk) {
  Machine machine;
  TestPlace& files = machine.files;
  machine.AddProfileFolders("elsewhere");
  machine.AddProfileFolders("disk/Users/Anna");
  files.File("elsewhere/secret.txt", "secret");
  files.Link("disk/Users/Eve", "elsewhere");
  files.Link("disk/Users/Anna/Desktop", "elsewhere");
  files.Link("disk/Data", "elsewhere");
  files.Folder("disk/Real");
  files.Link("disk/Real/inner", "elsewhere");
  machine.RestoreFrom(4, {"--extra", "Data=" + machine.Path("data")});
  machine.RestoreFrom(1, {"--extra", "Real\\inner\\Music=" + machine.Path("data")});
  EXPECT_FALSE(files.Exists("data/secret.txt"));
  EXPECT_FALSE(files.Exists("Users/Anna/Desktop/secret.txt"));
  EXPECT_TRUE(InProfile("Eve", "").IsEmpty()) << "an account was made for a link";
}

// The info file of a strange disk must not bring the lines of a file elsewhere onto that disk.
TEST(RestoreFromCommand, ReadsNoInfoFileThroughALink) {
  Machine machine;
  machine.AddProfileFolders("disk/Users/Anna");
  machine.files.File("secret.ini", "[Secret]\r\npin=1234\r\n");
  std::filesystem::create_symlink(HostPath(machine.files / "secret.ini"),
                                  HostPath(machine.files / "disk/BackupInfo.nvsav"));
  const ConsoleRun run = machine.RestoreFrom(0);
  EXPECT_THAT(run.errors, HasSubstr("choices of this run aren't kept"));
  EXPECT_EQ(machine.files.Read("secret.ini"), "[Secret]\r\npin=1234\r\n");
}

// The system's own drive, reached by a link that looks like another place.
TEST(RestoreFromCommand, RefusesALinkToTheSystemDrive) {
  Machine machine;
  machine.files.Link("disk", "..\\..");
  const ConsoleRun run = machine.RestoreFrom(4);
  EXPECT_THAT(run.errors, HasSubstr("You can not restore from"));
}

}  // namespace
