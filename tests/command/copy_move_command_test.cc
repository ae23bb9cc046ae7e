#include "command_machine.h"

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

struct Machine : CommandMachine {
  Machine() {
    place.Add({.name = "Anna"});
    place.Add({.name = "Bob"});
    files.File("Users/Anna/Documents/letter.txt", "dear");
    files.File("Users/Anna/Desktop/both.txt", "Anna's");
    files.File("Users/Bob/Desktop/both.txt", "Bob's");
    files.File("data/top.txt", "top");
    files.File("data/deep/er.txt", "er");
  }
};

// However an account is named, its profile is meant, and the hive that lies in it stays with its owner.
TEST(CopyCommand, TakesAccountsByNameEntryAndPath) {
  for (const int form : {0, 1, 2}) {
    Machine machine;
    const std::string profile = machine.Path("Users/Anna");
    const std::string sources[] = {"ANNA", "Anna (" + profile + ")", profile + "\\"};
    const std::string hive = machine.files.Read("Users/Bob/NTUSER.DAT");
    const ConsoleRun run = machine.Run(0, {"copy", sources[form], "Bob"});
    EXPECT_EQ(run.results, "Successfully copied user data from \"" + profile + "\"\n");
    EXPECT_EQ(machine.files.Read("Users/Bob/Documents/letter.txt"), "dear");
    EXPECT_EQ(machine.files.Read("Users/Bob/Desktop/both.txt"), "Bob's");
    EXPECT_EQ(machine.files.Read("Users/Bob/NTUSER.DAT"), hive);
    EXPECT_TRUE(machine.files.Exists("Users/Anna/Documents/letter.txt"));
    machine.files.File("Users/Bob/Documents/letter.txt", "own");
    machine.Run(0, {"copy", sources[form], "Bob", "--overwrite", "--folders", "desktop"});
    EXPECT_EQ(machine.files.Read("Users/Bob/Desktop/both.txt"), "Anna's");
    EXPECT_EQ(machine.files.Read("Users/Bob/Documents/letter.txt"), "own") << "of a folder left out";
  }
}

TEST(CopyCommand, CopiesAnyFolderWhole) {
  Machine machine;
  SetAttributes((machine.files / "data/deep/er.txt").CStr(), FILE_ATTRIBUTE_HIDDEN);
  const Words copy = {"copy", machine.Path("data"), machine.Path("copied")};
  const ConsoleRun run = machine.Run(0, copy, {"--json"});
  EXPECT_EQ(run.Event("end")["source"], machine.Path("data"));
  EXPECT_EQ(run.Event("end")["files"], 1);
  EXPECT_EQ(machine.files.Read("copied/top.txt"), "top");
  EXPECT_FALSE(machine.files.Exists("copied/deep/er.txt"));
  machine.Run(0, copy, {"--copy-hidden"});
  EXPECT_TRUE(machine.files.Exists("copied/deep/er.txt"));
}

// A file that stays at the target must stay at the source, too, or it is lost.
TEST(MoveCommand, MovesWhatIsMissing) {
  Machine machine;
  std::string lowerDrive = machine.Path("Users/Anna");
  lowerDrive[0] = 'c';
  const ConsoleRun run = machine.Run(0, {"move", lowerDrive, "Bob"});
  EXPECT_THAT(run.results, HasSubstr("Successfully moved user data from"));
  EXPECT_EQ(machine.files.Read("Users/Bob/Documents/letter.txt"), "dear");
  EXPECT_FALSE(machine.files.Exists("Users/Anna/Documents/letter.txt"));
  EXPECT_EQ(machine.files.Read("Users/Anna/Desktop/both.txt"), "Anna's");
  EXPECT_TRUE(machine.files.Exists("Users/Anna/NTUSER.DAT"));
  machine.Run(0, {"move", "Anna", "Bob", "--overwrite"});
  EXPECT_EQ(machine.files.Read("Users/Bob/Desktop/both.txt"), "Anna's");
  EXPECT_FALSE(machine.files.Exists("Users/Anna/Desktop/both.txt"));
}

TEST(CopyMoveCommand, ADryRunChangesNothing) {
  Machine machine;
  const std::vector<std::string> before = machine.files.List();
  const ConsoleRun run =
      machine.Run(0, {"move", "Anna", "Bob", "--dry-run", "--folders", "documents,desktop"});
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
  const std::string documents = machine.Path("Users/Anna/Documents/x");
  ExpectRefused(machine, {"copy"},
                {{{"Nobody", "Bob"}, "\"Nobody\" is neither a local account nor a full path"},
                 {{"Anna", "data"}, "\"data\" is neither"},
                 {{"data\\deep", "Bob"}, "is neither"},
                 {{"", "Bob"}, "\"\" is neither"},
                 {{"Data (old)", "Bob"}, "\"Data (old)\" is neither"},
                 {{"Away", "Bob"}, "does not exist"},
                 {{machine.Path("none"), away}, "does not exist"},
                 {{machine.Path("file.txt"), away}, "is a file"},
                 {{data, machine.Path("file.txt")}, "is a file"},
                 {{data, machine.Path("file.txt/x")}, "can't be made"},
                 {{data, machine.Path("x/y/z")}, "can't be made"},
                 {{"C:\\", away}, "root of a drive"},
                 {{data, "C:"}, "root of a drive"},
                 {{data, data}, "lie one inside the other"},
                 {{data, machine.Path("data/deep/x")}, "lie one inside the other"},
                 {{data, machine.Path("data/../DATA")}, "lie one inside the other"},
                 {{"Anna", documents, "--folders", "music"}, "one inside the other"},
                 {{data, away, "--folders", "desktop"}, "leave --folders out"},
                 {{"Anna", away, "--folders", "docs"}, "\"docs\" is no folder", 2}});
  ExpectRefused(machine, {"move"},
                {{{place, data}, "lie one inside the other"},
                 {{"Anna", "Anna"}, "lie one inside the other"},
                 {{data, "Q:\\x\\data"}, "can't be made"},
                 {{data, "\\\\server\\share\\data"}, "can't be"}});
}

}  // namespace
