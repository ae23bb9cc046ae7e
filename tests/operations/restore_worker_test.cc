#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/operation_run.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// But for the hives of accounts.
std::vector<std::string> FilesOf(const OperationRun& run, const std::string& folder) {
  std::vector<std::string> files = run.files.Files(folder);
  std::erase_if(files, [](const std::string& path) { return path.find("NTUSER") != std::string::npos; });
  return files;
}

// The whole of a set: each folder in the place that the target's hive names, nothing twice, nothing else.
TEST(RestoreWorker, BringsASetBack) {
  RestoreRun run;
  std::vector<TestValue> hive = run.machine.UsualFolders("Bob");
  hive[5].text = Utf8(run.files / "Songs");
  run.machine.Add({.name = "Bob", .hive = hive});
  for (const char* file :
       {"AppData/a", "AppData/Microsoft/Windows/SendTo/b", "AppData/Microsoft/Windows/Recent/no",
        "AppData/Packages/no", "AppData/LocalLow/low", "LocalAppData/c",
        "LocalAppData/Microsoft/Windows/Themes/d", "Desktop/e", "Documents/f", "Downloads/g", "Music/h",
        "Pictures/i", "Videos/j", "Contacts/k", "Music2/l", "Local Settings/no", "Application Data/no",
        "loose file"}) {
    run.files.File(std::string("set/Users/Anna/") + file, file);
  }
  run.files.File("set/ExtraFolders/ABC/sub/x", "extra");
  SetAttributes((run.files / "set/Users/Anna/Videos/j").CStr(), FILE_ATTRIBUTE_HIDDEN);
  run.context->attributeMask = 6;  // for another installation; a set is brought back whole
  run.Select(255, {{"Anna", "Bob"}});
  run.SelectExtra("ABC", run.files / "back/deep");
  EXPECT_GE(run.Run(), 12);
  EXPECT_EQ(run.context->outcome, OperationOutcome::kComplete);
  EXPECT_EQ(run.context->failures, 0) << testing::PrintToString(run.told);
  EXPECT_THAT(FilesOf(run, "Users/Bob"),
              ElementsAre("AppData/Local/Microsoft/Windows/Themes/d", "AppData/Local/c",
                          "AppData/LocalLow/low", "AppData/Roaming/LocalLow/low",
                          "AppData/Roaming/Microsoft/Windows/SendTo/b", "AppData/Roaming/a", "Contacts/k",
                          "Desktop/e", "Documents/f", "Downloads/g", "Music2/l", "Pictures/i", "Videos/j"));
  EXPECT_THAT(FilesOf(run, "Songs"), ElementsAre("h"));
  EXPECT_EQ(run.files.Read("back/deep/sub/x"), "extra");
  EXPECT_THAT(FilesOf(run, "Users"), Not(Contains(HasSubstr("loose"))));
}

// One entry of a file, and none of the others, comes to grief; each is named.
TEST(RestoreWorker, TellsOfEntriesThatLeadNowhere) {
  RestoreRun run;
  run.machine.Add({.name = "Bob"});
  run.machine.Add({.name = "Nohive", .hasHive = false});
  run.files.File("set/Users/Anna/Music/song");
  run.files.File("outside/Music/secret");
  run.files.File("set/ExtraFolders/ABC/x");
  run.Select(16, {{"Gone", "Bob"},
                  {"..\\..\\outside", "Bob"},
                  {"Anna ", "Bob"},
                  {"Lost", "Nobody"},
                  {"Anna", "Nohive"},
                  {"anna", "Bob"},
                  {"Other", "a\\b <create>"}});
  run.SelectExtra("ABC", Wide("relative"));
  run.SelectExtra("..", run.files / "back");
  run.SelectExtra("GONE", run.files / "back");
  run.Run();
  EXPECT_EQ(run.context->outcome, OperationOutcome::kFailures);
  EXPECT_THAT(run.told, AllOf(Contains("Error! Could not get profile path for user: ..\\..\\outside"),
                              Contains("Error! Could not get profile path for user: Nobody"),
                              Contains("Error! Could not load user hive: ~\\Users\\Nohive\\NTUSER.DAT"),
                              Contains("Error! Could not find user folder: Nohive\\My Music"),
                              Contains("Error! Could not create user account: a\\b"),
                              Contains("Error! Could not read source directory: .."),
                              Contains("Error! Could not read source directory: ABC")));
  EXPECT_EQ(run.context->failures, 7) << testing::PrintToString(run.told);
  EXPECT_FALSE(run.files.Exists("back"));
  EXPECT_THAT(run.files.List("Users/Bob/Music"), ElementsAre("song"));
}

// Whatever a target looked like when the choice was made: where it leads when the run begins is what counts,
// and only a person's own word opens another account's profile.
TEST(RestoreWorker, WritesToProtectedPlacesOnlyWhenTheyWereChosen) {
  for (const bool isChosen : {false, true}) {
    RestoreRun run;
    run.machine.Add({.name = "Eve"});
    run.files.File("set/ExtraFolders/ABC/x");
    const WString target = run.files / "Users/Eve/Documents/in";
    run.SelectExtra("ABC", target);
    WStringArray chosen;
    chosen.Add(target.CStr());
    if (isChosen) run.context->chosenPlaces = &chosen;
    run.Run();
    EXPECT_EQ(run.files.Exists("Users/Eve/Documents/in/x"), isChosen);
    EXPECT_EQ(run.IsTold("Error! Left out protected folder: ~\\Users\\Eve\\Documents\\in, which lies in the "
                         "profile of an account that is no target of this run"),
              !isChosen);
  }
}

// Two accounts of the set in one: both are there, and the first one's files stay.
TEST(RestoreWorker, PutsTwoAccountsIntoOne) {
  RestoreRun run;
  run.machine.Add({.name = "Bob"});
  run.files.File("set/Users/Anna/Music/a", "first");
  run.files.File("set/Users/Eve/Music/a", "second");
  run.files.File("set/Users/Eve/Music/b");
  run.Select(16, {{"Anna", "Bob"}, {"Eve", "bob"}});
  run.OnlyMissing();
  run.Run();
  EXPECT_EQ(run.files.Read("Users/Bob/Music/a"), "first");
  EXPECT_TRUE(run.files.Exists("Users/Bob/Music/b"));
}

// A file in a folder's place, in the set and at the target: told, and all else goes on.
TEST(RestoreWorker, TellsOfFilesInThePlaceOfFolders) {
  RestoreRun run;
  run.machine.Add({.name = "Bob"});
  run.files.File("set/Users/Anna/Music", "a file");
  run.files.File("set/Users/Anna/Contacts/a");
  run.files.File("set/Users/Anna/Documents/sub/a");
  run.files.File("set/Users/Anna/Documents/b");
  run.files.File("set/Users/Anna/AppData/a");
  run.files.File("set/Users/Anna/AppData/Microsoft", "a file");
  run.files.File("set/ExtraFolders/ABC", "a file");
  run.files.File("set/ExtraFolders/DEF/x");
  run.files.File("Users/Bob/Contacts", "a file");
  run.files.File("Users/Bob/Documents/sub", "a file");
  run.files.File("back", "a file");
  run.Select(255, {{"Anna", "Bob"}});
  run.SelectExtra("ABC", run.files / "x");
  run.SelectExtra("DEF", run.files / "back");
  run.Run();
  EXPECT_EQ(run.context->outcome, OperationOutcome::kFailures);
  EXPECT_THAT(run.told,
              AllOf(Contains("Error! Could not read source directory: ~\\set\\Users\\Anna\\Music"),
                    Contains("Error! Could not create destination directory: ~\\Users\\Bob\\Contacts"),
                    Contains("Error! Could not create destination directory: ~\\Users\\Bob\\Documents\\sub"),
                    Contains("Error! Could not read source directory: ~\\set\\ExtraFolders\\ABC"),
                    Contains("Error! Could not create destination directory: ~\\back")));
  EXPECT_EQ(run.files.Read("Users/Bob/Contacts"), "a file");
  EXPECT_EQ(run.files.Read("back"), "a file");
  EXPECT_TRUE(run.files.Exists("Users/Bob/Documents/b"));
  EXPECT_TRUE(run.files.Exists("Users/Bob/AppData/Roaming/a"));
}

// Source and target that are in each other grow until the disk is full.
TEST(RestoreWorker, RefusesToRestoreASetIntoItself) {
  RestoreRun run;
  std::vector<TestValue> hive = run.machine.UsualFolders("Bob");
  hive[5].text = Utf8(run.files / "set/Users/Anna/Music/in");
  run.machine.Add({.name = "Bob", .hive = hive});
  run.files.File("set/Users/Anna/Music/song");
  run.files.File("set/Users/Anna/Desktop/a");
  run.files.File("set/ExtraFolders/ABC/x");
  run.Select(18, {{"Anna", "Bob"}});
  run.SelectExtra("ABC", run.files / "set/ExtraFolders");
  run.Run();
  EXPECT_EQ(run.context->failures, 2) << testing::PrintToString(run.told);
  EXPECT_TRUE(run.IsTold("Error! Source and destination are in each other: ~\\set\\Users\\Anna\\Music"));
  EXPECT_TRUE(run.IsTold("Error! Source and destination are in each other: ~\\set\\ExtraFolders\\ABC"));
  EXPECT_THAT(run.files.List("set/ExtraFolders"), ElementsAre("ABC", "ABC/x"));
}

TEST(RestoreWorker, EndsAtOnceWithoutItsFile) {
  RestoreRun run;
  run.machine.Add({.name = "Bob"});
  run.files.File("set/Users/Anna/Music/song");
  run.Select(16, {{"Anna", "Bob"}});
  DeleteFileW(run.document.path.CStr());
  EXPECT_EQ(run.Run(), 0);
  EXPECT_EQ(run.context->outcome, OperationOutcome::kNotStarted);
  EXPECT_THAT(FilesOf(run, "Users/Bob"), IsEmpty());
}

// Stopped between two folders: what is done stays, and what comes later isn't begun.
TEST(RestoreWorker, StopsBetweenFolders) {
  for (size_t phase = 1; phase <= 4; phase++) {
    RestoreRun run;
    run.machine.Add({.name = "Bob"});
    run.machine.Add({.name = "Carl"});
    for (const char* file : {"Anna/Desktop/a", "Anna/Contacts/b", "Eve/Contacts/c"})
      run.files.File(std::string("set/Users/") + file);
    run.files.File("set/ExtraFolders/ABC/x");
    run.Select(130, {{"Anna", "Bob"}, {"Eve", "Carl"}});
    run.SelectExtra("ABC", run.files / "back");
    run.stopAtPhase = phase;
    EXPECT_EQ(run.Run(), -1);
    EXPECT_EQ(run.context->outcome, OperationOutcome::kStopped);
    EXPECT_EQ(run.phases, phase);
    EXPECT_EQ(run.files.Exists("Users/Bob/Desktop/a"), phase > 1);
    EXPECT_EQ(run.files.Exists("Users/Bob/Contacts/b"), phase > 2);
    EXPECT_EQ(run.files.Exists("Users/Carl/Contacts/c"), phase > 3);
    EXPECT_FALSE(run.files.Exists("back/x"));
    EXPECT_EQ(run.context->failures, 0);
  }
}

}  // namespace
