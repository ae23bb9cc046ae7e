#include "command_machine.h"
#include "operations/md5_name.h"
#include "support/account_database.h"

namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

std::string NameInSet(const std::string& path) {
  WString name;
  EXPECT_TRUE(Md5Name(Wide(path).CStr(), name));
  return Utf8(name);
}

// A set that came from elsewhere, in the folder "set", and the accounts of this machine.
struct Machine : CommandMachine {
  std::string accounts = "Anna=2|Anna Berg\r\nBob=1|Bob Okafor\r\nEve=1|Eve M\r\n";
  std::string folders;

  Machine() {
    place.Add({.name = "Anna"});
    place.Add({.name = "robert", .fullName = "Bob Okafor"});
    files.File("set/Users/Anna/Documents/letter.txt", "dear");
    files.File("set/Users/Bob/Desktop/note.txt", "hello");
    files.File("set/Users/Bob/Music/song.mp3", "la");
    files.File("set/Users/Eve/Documents/diary.txt", "today");
    Save();
  }

  void Save() {
    files.File("set/BackupInfo.grxsv", "[Users]\r\n" + accounts + "[ExtraFolders]\r\n" + folders);
  }
  void AddAccount(const std::string& line) {
    accounts += line + "\r\n";
    Save();
  }
  void AddFolder(const std::string& path) {
    files.File("set/ExtraFolders/" + NameInSet(path) + "/plan.txt", "work");
    folders += path + "=1\r\n";
    Save();
  }

  ConsoleRun Restore(int exitCode, const Words& words) const {
    return Run(exitCode, {"restore", Path("set")}, words);
  }
};

// Where a restore may write, in both builds; no test does.
constexpr char kFreeFolder[] = "C:\\Free place\\x";

bool HasAccount(const std::string& name) {
  KnownAccount account;
  return LookAtAccount(name, account);
}

// Choices that a stranger has put into the file must not be taken for the person's own.
TEST(RestoreCommand, TakesNoChoiceFromTheFile) {
  Machine machine;
  const std::string taken = machine.Path("taken");
  machine.AddFolder(machine.Path("projects"));
  const std::string choices = "[RTBackupUsers]\r\nEve=Anna\r\nBob=Mallory <create>\r\n[RTExtraFolders]\r\n" +
                              NameInSet(machine.Path("projects")) + "=" + taken + "\r\n";
  machine.folders += choices + choices;
  machine.Save();
  machine.Restore(0, {"--skip", "Eve", "--skip", "Bob", "--no-extra"});
  EXPECT_EQ(machine.files.Read("Users/Anna/Documents/letter.txt"), "dear");
  EXPECT_FALSE(machine.files.Exists("Users/Anna/Documents/diary.txt"));
  EXPECT_FALSE(machine.files.Exists("taken"));
  EXPECT_FALSE(HasAccount("Mallory"));
}

// The road as a whole: one account by name, one by its full name only, one made, a folder to its place.
// Once more, and nothing may change.
TEST(RestoreCommand, BringsASetToAnotherMachine) {
  Machine machine;
  machine.AddFolder(machine.Path("projects"));
  // Named, because under Wine the place of a test lies in somebody's profile.
  const ConsoleRun run = machine.Restore(0, {"--extra", machine.Path("projects")});
  EXPECT_EQ(run.results,
            "Successfully restored a backup named \"set\"\nThe account \"Eve\" was created without a "
            "password.\n");
  EXPECT_THAT(run.errors, AllOf(HasSubstr("\"Bob\" goes to the local account \"robert\""),
                                HasSubstr("\"Eve\" will be made as a standard user, without a password")));
  EXPECT_EQ(machine.files.Read("Users/Anna/Documents/letter.txt"), "dear");
  EXPECT_EQ(machine.files.Read("Users/robert/Desktop/note.txt"), "hello");
  EXPECT_EQ(ReadInProfile("Eve", "Documents/diary.txt"), "today");
  EXPECT_EQ(machine.files.Read("projects/plan.txt"), "work");
  EXPECT_EQ(machine.place.Known("Eve").fullName, "Eve M");

  const std::vector<std::string> before = machine.files.List("Users");
  const ConsoleRun again = machine.Restore(0, {"--json"});
  EXPECT_EQ(again.Event("end")["files"], 0);
  EXPECT_THAT(again.Event("end")["accountsCreated"], IsEmpty());
  EXPECT_EQ(machine.files.List("Users"), before);
}

// Data in the wrong account's hands is worse than data that isn't restored.
TEST(RestoreCommand, FollowsTheChoices) {
  Machine machine;
  machine.AddFolder(machine.Path("a"));
  machine.AddFolder(machine.Path("b"));
  machine.files.File("Users/robert/Documents/letter.txt", "own");
  const ConsoleRun run = machine.Restore(
      0, {"--map", "anna=ROBERT", "--create", "Bob=Bobby", "--skip", "EVE", "--folders", "documents,music",
          "--no-extra", "--extra", machine.Path("b") + "=" + machine.Path("c=d"), "--json"});
  EXPECT_THAT(run.Event("end")["accountsCreated"], ElementsAre("Bobby"));
  EXPECT_EQ(machine.files.Read("Users/robert/Documents/letter.txt"), "own");
  EXPECT_EQ(ReadInProfile("Bobby", "Music/song.mp3"), "la");
  EXPECT_EQ(machine.files.Read("c=d/plan.txt"), "work");
  for (const char* path : {"Users/Anna/Documents/letter.txt", "a", "b"})
    EXPECT_FALSE(machine.files.Exists(path)) << path;
  EXPECT_EQ(ReadInProfile("Bobby", "Desktop/note.txt"), "(missing)");
  EXPECT_FALSE(HasAccount("Eve"));
  machine.Restore(0, {"--map", "Anna=robert", "--overwrite", "--skip", "Eve", "--skip", "Bob"});
  EXPECT_EQ(machine.files.Read("Users/robert/Documents/letter.txt"), "dear");
}

// An info file is anybody's, and its word alone makes nobody an administrator.
TEST(RestoreCommand, MakesAdministratorsOnlyWhenAsked) {
  for (const bool isAsked : {false, true}) {
    Machine machine;
    machine.AddAccount("Zoe=2|Zoe Z");
    machine.files.Folder("set/Users/Zoe");
    const ConsoleRun run = machine.Restore(0, isAsked ? Words{"--create", "Zoe"} : Words{});
    EXPECT_THAT(machine.place.Known("Zoe").groups, ElementsAre(isAsked ? "Administrators" : "Users"));
    EXPECT_FALSE(machine.place.Known("Zoe").hasPassword);
    EXPECT_THAT(run.errors, HasSubstr(isAsked ? "\"Zoe\" will be made as an administrator"
                                              : "give --create \"Zoe\" to make it one"));
  }
}

// Where a path of the set leads to the system or nowhere, only a person's own word takes it.
TEST(RestoreCommand, LeavesProtectedPlacesAlone) {
  Machine machine;
  const std::vector<std::string> evil = {"C:\\Windows\\evil", "C:\\", "..\\evil", "C:\\Users"};
  for (const std::string& path : evil) machine.AddFolder(path);
  const ConsoleRun run = machine.Restore(0, {"--skip", "Eve"});
  for (const std::string& path : evil) {
    EXPECT_THAT(run.errors, HasSubstr("The folder \"" + path + "\" isn't restored, because")) << path;
  }
  EXPECT_THAT(run.errors, HasSubstr("--extra PATH=TARGET"));
  EXPECT_NE(GetFileAttributesW(L"C:\\Windows"), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(GetFileAttributesW(L"C:\\Windows\\evil"), INVALID_FILE_ATTRIBUTES);
  machine.Restore(0, {"--no-extra", "--extra", "..\\evil=" + machine.Path("taken")});
  EXPECT_TRUE(machine.files.Exists("taken/plan.txt"));
  machine.AddFolder(kFreeFolder);
  const ConsoleRun dry = machine.Restore(0, {"--dry-run", "--json", "--folders", "videos"});
  EXPECT_EQ(dry.Event("phase")["target"], kFreeFolder) << "it was left out with the others";
  EXPECT_EQ(dry.Event("end")["entries"], 1);
  const nlohmann::json phase =
      machine.Restore(0, {"--dry-run", "--json", "--folders", "videos", "--no-extra", "--extra", evil[0]})
          .Event("phase");
  EXPECT_EQ(phase["target"], evil[0]);
}

// Names that no backup wrote, and too many of them to read.
TEST(RestoreCommand, TellsOfKeysThatItPassesOver) {
  Machine machine;
  const std::string evil[] = {"..\\..\\outside", "C:\\Windows", "\\\\srv\\share", "a:b", "<create>"};
  for (const std::string& name : evil) machine.AddAccount(name + "=2|x");
  machine.AddAccount("x:\x81=1|x");
  machine.AddAccount("Gone=1|x");
  machine.AddAccount("anna=1|x");
  const ConsoleRun run = machine.Restore(0, {"--json", "--skip", "Eve"});
  for (const std::string& name : evil) {
    EXPECT_THAT(run.errors, HasSubstr("Note: The info file names \"" + name + "\", passed over")) << name;
  }
  EXPECT_THAT(run.errors, AllOf(HasSubstr("\"x:\\x81\", passed over"), Not(HasSubstr("Gone")),
                                HasSubstr("\"anna\" more than once, and only the first entry counts")));
  EXPECT_THAT(run.Event("note")["text"], HasSubstr("outside"));
  EXPECT_TRUE(machine.files.Exists("Users/Anna/Documents/letter.txt"));
  for (int i = 0; i < 30; ++i) machine.accounts += "x:" + std::to_string(i) + "=1|x\r\n";
  machine.Save();
  EXPECT_THAT(
      machine.Restore(0, {"--dry-run"}).errors,
      AllOf(HasSubstr("\"x:13\""), Not(HasSubstr("\"x:14\"")), HasSubstr("names 16 others, passed over")));
}

// One account that can't be there must not cost the others their data, nor pass without a word.
TEST(RestoreCommand, GoesOnWithoutAnImpossibleAccount) {
  for (const std::string name : {"a name of more than twenty units", "CON"}) {
    Machine machine;
    machine.AddAccount(name + "=1|x");
    machine.files.File("set/Users/" + name + "/Documents/x");
    const ConsoleRun run = machine.Restore(1, {"--json"});
    EXPECT_THAT(run.errors, HasSubstr("\"" + name + "\" was left out"));
    EXPECT_EQ(run.Event("end")["failures"], 1);
    EXPECT_FALSE(HasAccount(name));
    EXPECT_TRUE(machine.files.Exists("Users/Anna/Documents/letter.txt"));
    machine.Restore(0, {"--create", name + "=Short"});
    EXPECT_EQ(ReadInProfile("Short", "Documents/x"), "x");
  }
}

// What goes into a temporary profile is gone when the account logs off.
TEST(RestoreCommand, LeavesTemporaryProfilesAlone) {
  Machine machine;
  machine.place.Add({.name = "Eve", .profileImagePath = Utf8(machine.files.Folder("Users/TEMP.PC"))});
  machine.place.ListProfile(machine.place.Sid("Eve") + ".bak", machine.place.Profile("Eve"));
  const ConsoleRun run = machine.Restore(1, {});
  EXPECT_THAT(run.errors, AllOf(HasSubstr("\"Eve\" was left out, because"), HasSubstr("TEMP.PC\"")));
  EXPECT_THAT(machine.files.List("Users/TEMP.PC"), IsEmpty());
  EXPECT_TRUE(machine.files.Exists("Users/Anna/Documents/letter.txt"));
  machine.Restore(0, {"--create", "Eve=Evi"});
}

TEST(RestoreCommand, ADryRunChangesNothing) {
  Machine machine;
  machine.AddFolder(kFreeFolder);
  const std::vector<std::string> before = machine.files.List();
  const std::string info = machine.files.Read("set/BackupInfo.grxsv");
  const ConsoleRun run = machine.Restore(0, {"--dry-run"});
  EXPECT_THAT(run.results, AllOf(HasSubstr("Bob -> robert\n"), HasSubstr("Eve -> Eve (a new account)\n"),
                                 HasSubstr(machine.Path("set/Users/Eve/Documents") + ": 1 entry, 5 B"),
                                 HasSubstr("In all 5 entries, 20 B. Nothing was changed.")));
  const ConsoleRun json = machine.Restore(0, {"--dry-run", "--json"});
  EXPECT_THAT(json.Event("end")["accountsToCreate"], ElementsAre("Eve"));
  EXPECT_FALSE(HasAccount("Eve"));
  EXPECT_EQ(machine.files.List(), before);
  EXPECT_EQ(machine.files.Read("set/BackupInfo.grxsv"), info);
}

// A set on a disk that can't be written is restored like any other.
TEST(RestoreCommand, RestoresASetThatCannotBeWritten) {
  Machine machine;
  SetAttributes((machine.files / "set/BackupInfo.grxsv").CStr(), FILE_ATTRIBUTE_READONLY);
  const ConsoleRun run = machine.Restore(0, {"--folders", "documents"});
  EXPECT_THAT(run.errors, HasSubstr("can't be kept in \"" + machine.Path("set/BackupInfo.grxsv") + "\""));
  EXPECT_TRUE(machine.files.Exists("Users/Anna/Documents/letter.txt"));
  EXPECT_THAT(machine.files.Read("set/BackupInfo.grxsv"), Not(HasSubstr("RT")));
}

TEST(RestoreCommand, RefusesBadInputBeforeAnythingIsMade) {
  Machine machine;
  machine.AddFolder(machine.Path("a"));
  machine.files.File("empty/BackupInfo.nvsav", "");
  machine.files.File("binary/BackupInfo.nvsav", std::string("\0\1\2", 3));
  machine.files.File("inside/BackupInfo.nvsav", "[ExtraFolders]\r\n" + machine.Path("inside") + "=1\r\n");
  machine.files.File("inside/ExtraFolders/" + NameInSet(machine.Path("inside")) + "/x");
  const std::string a = machine.Path("a"), inside = machine.Path("inside");
  const char* const overlap = "this restore writes to are the same or lie one";
  ExpectRefused(
      machine, {"restore", machine.Path("set")},
      {{{"--map", "Nobody=Anna"}, "holds no data of an account \"Nobody\"; there are \"Anna\", \"Bob\""},
       {{"--map", "Bob=Nobody"}, "--create \"Bob=Nobody\" makes one"},
       {{"--map", "Bob=Administrators"}, "no local account \"Administrators\""},
       {{"--map", "Bob=x <create>"}, "no local account \"x <create>\""},
       {{"--map", "Bob"}, "--map needs two names", 2},
       {{"--map", "=Bob"}, "--map needs two names", 2},
       {{"--create", "Bob=Anna"}, "give --map \"Bob=Anna\""},
       {{"--create", "Eve=a/b"}, "\"a/b\" can't be the name of an account"},
       {{"--create", "Eve=..."}, "can't be the name"},
       {{"--create", "Eve=a name of 21 letters!"}, "can't be the name"},
       {{"--create", "Nobody"}, "\"Nobody\""},
       {{"--create", "Eve="}, "--create needs a name", 2},
       {{"--skip", "Nobody"}, "\"Nobody\""},
       {{"--skip", "Eve", "--map", "eve=Anna"}, "more than one of --map, --create and --skip", 2},
       {{"--map", "Eve=Anna", "--map", "Eve=robert"}, "more than one of", 2},
       {{"--skip", "Anna", "--skip", "Bob", "--skip", "Eve", "--no-extra"}, "Nothing is left to restore"},
       {{"--folders", "docs"}, "\"docs\" is no folder", 2},
       {{"--extra", machine.Path("none")}, "holds no additional folder"},
       {{"--extra", a + "=relative"}, "which is no full path of a folder"},
       {{"--extra", a + "="}, "which is no full path of a folder"},
       {{"--extra", a + "=C:\\x:stream"}, "which is no full path"},
       {{"--extra", a, "--extra", a + "=" + machine.Path("b")}, "more than one --extra", 2},
       {{"--extra", a + "=" + machine.Path("set/Users/Anna/x")}, overlap},
       {{"--extra", a + "=" + machine.Path("")}, overlap}});
  ExpectRefused(machine, {"restore"},
                {{{machine.Path("none")}, "does not exist"},
                 {{machine.Path("set/Users")}, "does not exist"},
                 {{machine.Path("empty")}, "holds no account"},
                 {{machine.Path("binary")}, "holds no text"},
                 {{inside, "--extra", inside}, "lie one inside the other"}});
  EXPECT_FALSE(HasAccount("Eve"));
}

}  // namespace
