// Whole backups on a machine that lets the program down, or that somebody has prepared against it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "machine/faults.h"
#include "support/backup_run.h"
#include "support/operation_scene.h"

namespace {

using testing::Contains;
using testing::HasSubstr;

// Phases that begin deep inside an account's folder must not be led out by a link on the way there, or
// the administrator's backup hands the account what it may not read.
TEST(BackupWorkerLinks, InTheWayToAFolderAreNotFollowed) {
  BackupRun run;
  run.machine.Add({.name = "Eve"});
  TestPlace& files = run.machine.files;
  files.File("outside/Windows/Themes/secret");
  files.File("outside/Windows/SendTo/secret");
  files.File("Users/Eve/AppData/Roaming/own");
  files.Link("Users/Eve/AppData/Roaming/Microsoft", "outside");
  files.Link("Users/Eve/Planted", "outside");
  run.Select(L"129", {L"Eve"});
  run.Run();
  for (const std::string& path : files.List("set")) EXPECT_THAT(path, testing::Not(HasSubstr("secret")));
  EXPECT_TRUE(files.Exists("set/Users/Eve/AppData/own"));
  // The tree's own, three of the phases inside it, and the one in the profile.
  EXPECT_EQ(run.context->linksSkipped, 5);
  EXPECT_EQ(run.context->failures, 0) << testing::PrintToString(run.told);
}

// The same on the way to the target, which may lie where others write.
TEST(BackupWorkerLinks, InTheWayToATargetAreNotWrittenThrough) {
  BackupRun run;
  run.machine.Add({.name = "Eve"});
  TestPlace& files = run.machine.files;
  files.File("Users/Eve/AppData/Roaming/Microsoft/Windows/SendTo/file");
  files.Folder("outside");
  files.Folder("set/Users/Eve/AppData");
  files.Link("set/Users/Eve/AppData/Microsoft", "outside");
  run.Select(L"1", {L"Eve"});
  run.Run();
  EXPECT_THAT(files.List("outside"), testing::IsEmpty());
  EXPECT_THAT(run.told, Contains(HasSubstr("Error! Could not create destination directory: ")));
  EXPECT_EQ(run.context->outcome, OperationOutcome::kFailures);
}

// A log that can't be written must not stop the run, and must be known at its end.
TEST(BackupWorkerFaults, TheLogMayFail) {
  OperationScene scene(Operation::kBackup);
  scene.Reset(false);
  machine::FaultPlan plan;
  plan.path = Utf8(scene.run->app.logPath) + "*";
  plan.nth = 1;
  plan.andAllLater = true;
  plan.error = ERROR_DISK_FULL;
  machine::SetFaults(plan);
  scene.run->document.SetValue(L"BackupUsers", L"Nobody", L"1");
  scene.run->Run();
  machine::ClearFaults();
  EXPECT_TRUE(scene.run->context->logFailed);
  EXPECT_EQ(scene.run->context->failures, 1);
  for (const SceneFile& file : scene.files) EXPECT_TRUE(scene.IsNewAtTarget(file)) << file.target;
}

}  // namespace
