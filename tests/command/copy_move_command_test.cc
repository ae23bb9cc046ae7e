#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "console_run.h"
#include "support/account_place.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

struct Machine {
  AccountPlace place;
  TestPlace& files = place.files;

  Machine() {
    place.Add({.name = "Anna"});
    place.Add({.name = "Bob"});
    files.File("Users/Anna/Documents/letter.txt", "dear");
    files.File("Users/Anna/Desktop/both.txt", "Anna's");
    files.File("Users/Bob/Desktop/both.txt", "Bob's");
    files.File("data/top.txt", "top");
    files.File("data/deep/er.txt", "er");
  }

  std::string Path(const std::string& relative) const { return Utf8(place.files / relative); }
  ConsoleRun Run(std::vector<std::string> words) const {
    words.insert(words.end(), {"--log", Path("norvane.log")});
    return Norvanectl(words);
  }
};

// However an account is named, its profile is meant, and the hive that lies in it stays with its owner.
TEST(CopyCommand, TakesAccountsByNameEntryAndPath) {
  for (const int form : {0, 1, 2}) {
    Machine machine;
    const std::string profile = machine.Path("Users/Anna");
    const std::string sources[] = {"ANNA", "Anna (" + profile + ")", profile + "\\"};
    const std::string hive = machine.files.Read("Users/Bob/NTUSER.DAT");
    const ConsoleRun run = machine.Run({"copy", sources[form], "Bob"});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.results, "Successfully copied user data from \"" + profile + "\"\n");
    EXPECT_EQ(machine.files.Read("Users/Bob/Documents/letter.txt"), "dear");
    EXPECT_EQ(machine.files.Read("Users/Bob/Desktop/both.txt"), "Bob's");
    EXPECT_EQ(machine.files.Read("Users/Bob/NTUSER.DAT"), hive);
    EXPECT_TRUE(machine.files.Exists("Users/Anna/Documents/letter.txt"));
    EXPECT_EQ(machine.Run({"copy", sources[form], "Bob", "--overwrite", "--folders", "desktop"}).exitCode, 0);
    EXPECT_EQ(machine.files.Read("Users/Bob/Desktop/both.txt"), "Anna's");
  }
}

TEST(CopyCommand, KeepsToTheChosenFolders) {
  Machine machine;
  ASSERT_EQ(machine.Run({"copy", "Anna", machine.Path("x/y"), "--folders", "documents"}).exitCode, 0);
  EXPECT_TRUE(machine.files.Exists("x/y/Documents/letter.txt"));
  EXPECT_FALSE(machine.files.Exists("x/y/Desktop"));
}

TEST(CopyCommand, CopiesAnyFolderWhole) {
  Machine machine;
  SetAttributes((machine.files / "data/deep/er.txt").CStr(), FILE_ATTRIBUTE_HIDDEN);
  const ConsoleRun run = machine.Run({"copy", machine.Path("data"), machine.Path("copied"), "--json"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_EQ(run.Event("end")["source"], machine.Path("data"));
  EXPECT_EQ(run.Event("end")["files"], 1);
  EXPECT_EQ(machine.files.Read("copied/top.txt"), "top");
  EXPECT_FALSE(machine.files.Exists("copied/deep/er.txt"));
  EXPECT_EQ(machine.Run({"copy", machine.Path("data"), machine.Path("copied"), "--copy-hidden"}).exitCode, 0);
  EXPECT_TRUE(machine.files.Exists("copied/deep/er.txt"));
}

// A file that stays at the target must stay at the source, too, or it is lost.
TEST(MoveCommand, MovesWhatIsMissing) {
  Machine machine;
  std::string lowerDrive = machine.Path("Users/Anna");
  lowerDrive[0] = 'c';
  const ConsoleRun run = machine.Run({"move", lowerDrive, "Bob"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.results, HasSubstr("Successfully moved user data from"));
  EXPECT_EQ(machine.files.Read("Users/Bob/Documents/letter.txt"), "dear");
  EXPECT_FALSE(machine.files.Exists("Users/Anna/Documents/letter.txt"));
  EXPECT_EQ(machine.files.Read("Users/Anna/Desktop/both.txt"), "Anna's");
  EXPECT_TRUE(machine.files.Exists("Users/Anna/NTUSER.DAT"));
  EXPECT_EQ(machine.Run({"move", "Anna", "Bob", "--overwrite"}).exitCode, 0);
  EXPECT_EQ(machine.files.Read("Users/Bob/Desktop/both.txt"), "Anna's");
  EXPECT_FALSE(machine.files.Exists("Users/Anna/Desktop/both.txt"));
}

TEST(CopyMoveCommand, ADryRunChangesNothing) {
  Machine machine;
  const std::vector<std::string> before = machine.files.List();
  const ConsoleRun run = machine.Run({"move", "Anna", "Bob", "--dry-run", "--folders", "documents,desktop"});
  EXPECT_EQ(run.exitCode, 0) << run.errors;
  EXPECT_THAT(run.results, AllOf(HasSubstr(machine.Path("Users/Anna") + " -> " + machine.Path("Users/Bob")),
                                 HasSubstr(machine.Path("Users/Anna/Documents") + ": 1 entry, 4 B"),
                                 HasSubstr("In all 2 entries, 10 B.")));
  EXPECT_EQ(machine.files.List(), before);
}

TEST(CopyMoveCommand, RefusesBadInputBeforeAnythingIsMade) {
  Machine machine;
  machine.place.Add({.name = "Away", .profileImagePath = machine.Path("gone")});
  machine.files.File("file.txt");
  const std::string data = machine.Path("data"), place = machine.Path(""), away = machine.Path("away");
  struct Case {
    std::vector<std::string> words;
    int exitCode;
    const char* part;
  };
  const Case cases[] = {
      {{"copy", "Nobody", "Bob"}, 4, "\"Nobody\" is neither a local account nor a full path"},
      {{"copy", "Anna", "data"}, 4, "\"data\" is neither"},
      {{"copy", "data\\deep", "Bob"}, 4, "is neither"},
      {{"copy", "", "Bob"}, 4, "\"\" is neither"},
      {{"copy", "Data (old)", "Bob"}, 4, "\"Data (old)\" is neither"},
      {{"copy", "Away", "Bob"}, 4, "does not exist"},
      {{"copy", machine.Path("none"), away}, 4, "does not exist"},
      {{"copy", machine.Path("file.txt"), away}, 4, "is a file"},
      {{"copy", data, machine.Path("file.txt")}, 4, "is a file"},
      {{"copy", data, machine.Path("file.txt/x")}, 4, "can't be made"},
      {{"copy", data, machine.Path("x/y/z")}, 4, "can't be made"},
      {{"copy", "C:\\", away}, 4, "root of a drive"},
      {{"copy", data, "C:"}, 4, "root of a drive"},
      {{"copy", data, data}, 4, "lie one inside the other"},
      {{"copy", data, machine.Path("data/deep/x")}, 4, "lie one inside the other"},
      {{"copy", data, machine.Path("data/../DATA")}, 4, "lie one inside the other"},
      {{"move", place, data}, 4, "lie one inside the other"},
      {{"move", "Anna", "Anna"}, 4, "lie one inside the other"},
      {{"copy", "Anna", machine.Path("Users/Anna/Documents/x"), "--folders", "music"},
       4,
       "one inside the other"},
      {{"move", data, "Q:\\x\\data"}, 4, "can't be made"},
      {{"move", data, "\\\\server\\share\\data"}, 4, "can't be"},
      {{"copy", data, away, "--folders", "desktop"}, 4, "leave --folders out"},
      {{"copy", "Anna", away, "--folders", "docs"}, 2, "\"docs\" is no folder"},
  };
  const std::vector<std::string> before = machine.files.List();
  for (const Case& c : cases) {
    for (const bool isDry : {false, true}) {
      std::vector<std::string> words = c.words;
      if (isDry) words.push_back("--dry-run");
      const ConsoleRun run = machine.Run(words);
      EXPECT_EQ(run.exitCode, c.exitCode) << c.words[1] << " " << c.part << "\n" << run.errors;
      EXPECT_THAT(run.errors, HasSubstr(c.part)) << c.words[1];
      EXPECT_EQ(run.results, "") << c.part;
    }
  }
  EXPECT_EQ(machine.files.List(), before);
}

}  // namespace
