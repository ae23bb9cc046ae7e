#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "operations/backup_set.h"
#include "support/backup_run.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

// The tree of a whole set, as every other reader expects it.
TEST(BackupWorker, FillsTheSet) {
  BackupRun run;
  run.machine.Add({.name = "Anna"});
  TestPlace& files = run.machine.files;
  for (const char* file : {"AppData/Roaming/a", "AppData/Roaming/Microsoft/Windows/SendTo/b",
                           "AppData/Roaming/Microsoft/Windows/Recent/no", "AppData/Local/c",
                           "AppData/Local/Packages/no", "Desktop/d", "Documents/e", "Downloads/f", "Music/g",
                           "Pictures/h", "Videos/i", "Contacts/j", "loose file"}) {
    files.File(std::string("Users/Anna/") + file, file);
  }
  run.Select(L"255", {L"Anna"});
  EXPECT_GE(run.Run(), 10);
  EXPECT_EQ(run.context->outcome, OperationOutcome::kComplete);
  EXPECT_EQ(run.context->failures, 0) << testing::PrintToString(run.told);
  EXPECT_THAT(
      files.List("set/Users"),
      ElementsAre("Anna", "Anna/AppData", "Anna/AppData/Microsoft", "Anna/AppData/Microsoft/Windows",
                  "Anna/AppData/Microsoft/Windows/SendTo", "Anna/AppData/Microsoft/Windows/SendTo/b",
                  "Anna/AppData/a", "Anna/Contacts", "Anna/Contacts/j", "Anna/Desktop", "Anna/Desktop/d",
                  "Anna/Documents", "Anna/Documents/e", "Anna/Downloads", "Anna/Downloads/f",
                  "Anna/LocalAppData", "Anna/LocalAppData/c", "Anna/Music", "Anna/Music/g", "Anna/Pictures",
                  "Anna/Pictures/h", "Anna/Videos", "Anna/Videos/i"));
  EXPECT_EQ(files.Read("set/Users/Anna/AppData/Microsoft/Windows/SendTo/b"),
            "AppData/Roaming/Microsoft/Windows/SendTo/b");
}

// Folders that aren't in the mask stay out, and so does the whole pass for a mask of 0.
TEST(BackupWorker, FollowsTheMask) {
  BackupRun run;
  run.machine.Add({.name = "Anna"});
  run.machine.files.File("Users/Anna/Music/song");
  run.machine.files.File("Users/Anna/Contacts/card");
  run.machine.files.File("extra/x");
  run.Select(L"0", {L"Anna"});
  run.document.SetValue(kNewExtraFoldersSection, (run.machine.files / "extra").CStr(),
                        L"0123456789ABCDEF0123456789ABCDEF");
  EXPECT_EQ(run.Run(), 1);
  EXPECT_THAT(run.machine.files.List("set"),
              ElementsAre("ExtraFolders", "ExtraFolders/0123456789ABCDEF0123456789ABCDEF",
                          "ExtraFolders/0123456789ABCDEF0123456789ABCDEF/x"));
  run.Select(L"16", {L"Anna"});
  run.Run();
  EXPECT_THAT(run.machine.files.List("set/Users"), ElementsAre("Anna", "Anna/Music", "Anna/Music/song"));
}

// Options of the document decide, and not what the record held before.
TEST(BackupWorker, TakesOptionsFromTheDocument) {
  BackupRun run;
  run.machine.Add({.name = "Anna"});
  SetAttributes(run.machine.files.File("Users/Anna/Music/hidden").CStr(), FILE_ATTRIBUTE_HIDDEN);
  run.Select(L"16", {L"Anna"});
  run.document.SetValue(kSettingsSection, kBackupOptionsKey, L"1");
  run.document.SetValue(kSettingsSection, kSkipAttributesKey, L"6");
  run.context->copyOptions = 2;
  run.Run();
  EXPECT_EQ(run.context->copyOptions, 1u);
  EXPECT_EQ(run.context->attributeMask, 6u);
  EXPECT_THAT(run.machine.files.List("set/Users/Anna/Music"), IsEmpty());
}

// An account that is chosen and can't be found is missing from the set; nobody must take that for done.
TEST(BackupWorker, TellsOfAccountsAndFoldersThatItCannotFind) {
  BackupRun run;
  run.machine.Add({.name = "Anna"});
  run.machine.Add({.name = "Bob", .hasHive = false});
  run.machine.files.File("Users/Anna/Music/song");
  run.Select(L"16", {L"Nobody", L"Bob", L"Anna"});
  EXPECT_EQ(run.Run(), 1);
  EXPECT_EQ(run.context->outcome, OperationOutcome::kFailures);
  EXPECT_EQ(run.context->failures, 3);
  EXPECT_THAT(run.told, AllOf(Contains("Error! Could not get profile path for user: Nobody"),
                              Contains("Error! Could not load user hive: ~\\Users\\Bob\\NTUSER.DAT"),
                              Contains("Error! Could not find user folder: Bob\\Music")));
  EXPECT_THAT(run.machine.files.List("set/Users"),
              ElementsAre("Anna", "Anna/Music", "Anna/Music/song", "Bob"));
}

// An extra folder that has gone passes by; a name from the info file never leads out of the set.
TEST(BackupWorker, CopiesExtraFoldersIntoTheSetOnly) {
  BackupRun run;
  run.machine.files.File("extra/x");
  run.document.SetValue(kNewExtraFoldersSection, (run.machine.files / "gone").CStr(), L"A");
  run.document.SetValue(kNewExtraFoldersSection, (run.machine.files / "extra").CStr(), L"..\\..\\out");
  EXPECT_EQ(run.Run(), 1);
  EXPECT_EQ(run.context->outcome, OperationOutcome::kComplete);
  EXPECT_FALSE(run.machine.files.Exists("out"));
  EXPECT_EQ(run.machine.files.List("set/ExtraFolders").size(), 2u);
}

// Stopped between two folders: what is done stays, and what comes later isn't begun.
TEST(BackupWorker, StopsBetweenFolders) {
  for (size_t phase = 1; phase <= 3; phase++) {
    BackupRun run;
    run.machine.Add({.name = "Anna"});
    run.machine.Add({.name = "Bob"});
    for (const char* file : {"Anna/Desktop/a", "Anna/Music/b", "Bob/Desktop/c"}) {
      run.machine.files.File(std::string("Users/") + file);
    }
    run.Select(L"18", {L"Anna", L"Bob"});
    run.stopAtPhase = phase;
    EXPECT_EQ(run.Run(), -1);
    EXPECT_EQ(run.context->outcome, OperationOutcome::kStopped);
    EXPECT_EQ(run.told.size(), phase);
    EXPECT_EQ(run.machine.files.Exists("set/Users/Anna/Desktop/a"), phase > 1);
    EXPECT_EQ(run.machine.files.Exists("set/Users/Anna/Music/b"), phase > 2);
    EXPECT_EQ(run.machine.files.Exists("set/Users/Bob"), phase > 2);
    EXPECT_EQ(run.context->failures, 0);
  }
}

}  // namespace
