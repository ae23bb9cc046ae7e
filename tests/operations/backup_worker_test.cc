#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "operations/backup_set.h"
#include "support/backup_run.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

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

}  // namespace
