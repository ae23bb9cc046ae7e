// Restores with links and with the groups of a system, which Wine has none of.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "console_run.h"
#include "profile_file.h"
#include "support/account_calls.h"
#include "support/account_place.h"
#include "support/host_path.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

// An account of a group's name can't be made, and a profile that is found under it would be anybody's.
TEST(RestoreCommand, TakesNoGroupForAnAccount) {
  AccountPlace place;
  place.Add({.name = "Anna"});
  place.files.File("set/Users/Guests/Documents/x");
  place.files.File("set/Users/Anna/Documents/y");
  place.files.File("set/BackupInfo.grxsv", "[Users]\r\nGuests=1|G\r\nAnna=1|A\r\n");
  const std::vector<std::string> restore = {"restore", Utf8(place.files / "set"), "--log",
                                            Utf8(place.files / "norvane.log")};
  std::vector<std::string> words = restore;
  words.insert(words.end(), {"--create", "Anna=Administrators"});
  const ConsoleRun refused = Norvanectl(words);
  EXPECT_EQ(refused.exitCode, 4);
  EXPECT_THAT(refused.errors, HasSubstr("an account or a group \"Administrators\" already"));
  const ConsoleRun run = Norvanectl(restore);
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.errors, HasSubstr("The account \"Guests\" was left out, because no account of that name"));
  EXPECT_TRUE(place.files.Exists("Users/Anna/Documents/y"));
}

// A person who may not make accounts, and is told that a profile is missing.
TEST(RestoreCommand, TellsWhyAnAccountCouldNotBeMade) {
  AccountPlace place;
  place.Add({.name = "Anna"});
  place.files.File("set/Users/Eve/Documents/x");
  place.files.File("set/BackupInfo.grxsv", "[Users]\r\nEve=1|E\r\n");
  const FailingAccountCall failing("NetUserAdd");
  const ConsoleRun run =
      Norvanectl({"restore", Utf8(place.files / "set"), "--log", Utf8(place.files / "norvane.log")});
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.errors, HasSubstr("Could not get profile path for user: Eve (Access is denied.)"));
}

// What a link in the set shows belongs to somebody else, and a dry run that counted it would promise it.
TEST(RestoreCommand, ADryRunLooksBehindNoLink) {
  AccountPlace place;
  place.Add({.name = "Anna"});
  place.files.File("outside/secret.txt", "secret!");
  place.files.File("set/Users/Anna/Desktop/a.txt", "a");
  place.files.File("set/BackupInfo.grxsv", "[Users]\r\nAnna=1|A\r\n");
  for (const char* folder : {"Music", "AppData", "Other"}) {
    place.files.Link(std::string("set/Users/Anna/") + folder, "outside");
  }
  std::vector<std::string> words = {"restore", Utf8(place.files / "set"), "--log",
                                    Utf8(place.files / "norvane.log")};
  const ConsoleRun run = Norvanectl(words);
  words.push_back("--dry-run");
  const ConsoleRun dry = Norvanectl(words);
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_EQ(dry.exitCode, 1);
  EXPECT_EQ(dry.errors, run.errors);
  EXPECT_THAT(dry.errors, AllOf(HasSubstr("Anna\\Music ("), HasSubstr("Anna\\AppData (")));
  EXPECT_THAT(dry.results, HasSubstr("In all 1 entry, 1 B."));
}

// A link in a disk's place for accounts, or for the info file, leads to somebody else's data.
TEST(RestoreFromCommand, FollowsNoLinkOfTheDisk) {
  AccountPlace place;
  place.Add({.name = "Anna"});
  for (const char* folder : {"Contacts", "Links", "Searches", "Music"}) {
    place.files.Folder(std::string("elsewhere/") + folder);
    place.files.Folder(std::string("disk/Users/Anna/") + folder);
  }
  place.files.File("elsewhere/secret.txt", "secret");
  place.files.Link("disk/Users/Eve", "elsewhere");
  place.files.Link("disk/Users/Anna/Desktop", "elsewhere");
  place.files.Link("disk/Data", "elsewhere");
  place.files.Folder("disk/Real");
  place.files.Link("disk/Real/inner", "elsewhere");
  const std::vector<std::string> words = {"restore-from", Utf8(place.files / "disk"), "--log",
                                          Utf8(place.files / "norvane.log"), "--extra"};
  std::vector<std::string> link = words;
  link.push_back("Data=" + Utf8(place.files / "data"));
  EXPECT_EQ(Norvanectl(link).exitCode, 4);
  std::vector<std::string> behind = words;
  behind.push_back("Real\\inner\\Music=" + Utf8(place.files / "data"));
  const ConsoleRun run = Norvanectl(behind);
  EXPECT_EQ(run.exitCode, 1) << run.errors;
  EXPECT_FALSE(place.files.Exists("data/secret.txt"));
  EXPECT_FALSE(place.files.Exists("Users/Anna/Desktop/secret.txt"));
  EXPECT_TRUE(InProfile("Eve", "").IsEmpty()) << "an account was made for a link";
}

// The info file of a strange disk must not bring the lines of a file elsewhere onto that disk.
TEST(RestoreFromCommand, ReadsNoInfoFileThroughALink) {
  AccountPlace place;
  place.Add({.name = "Anna"});
  for (const char* folder : {"Contacts", "Links", "Searches", "Music"})
    place.files.Folder(std::string("disk/Users/Anna/") + folder);
  place.files.File("secret.ini", "[Secret]\r\npin=1234\r\n");
  std::filesystem::create_symlink(HostPath(place.files / "secret.ini"),
                                  HostPath(place.files / "disk/BackupInfo.nvsav"));
  const ConsoleRun run =
      Norvanectl({"restore-from", Utf8(place.files / "disk"), "--log", Utf8(place.files / "norvane.log")});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.errors, HasSubstr("choices of this run aren't kept"));
  EXPECT_EQ(place.files.Read("secret.ini"), "[Secret]\r\npin=1234\r\n");
}

// The system's own drive, reached by a link that looks like another place.
TEST(RestoreFromCommand, RefusesALinkToTheSystemDrive) {
  AccountPlace place;
  place.files.Link("disk", "..\\..");
  const ConsoleRun run = Norvanectl({"restore-from", Utf8(place.files / "disk")});
  EXPECT_EQ(run.exitCode, 4);
  EXPECT_THAT(run.errors, HasSubstr("You can not restore from"));
}

}  // namespace
