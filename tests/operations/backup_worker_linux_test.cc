// Whole backups on a machine that lets the program down, or that somebody has prepared against it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "machine/faults.h"
#include "machine/machine.h"
#include "support/backup_run.h"
#include "users/user_hives.h"

namespace {

using testing::Contains;
using testing::HasSubstr;

std::filesystem::path OnDisk(const WString& path) {
  std::string relative = Utf8(path).substr(3);
  for (char& unit : relative) unit = unit == '\\' ? '/' : unit;
  return std::filesystem::path(machine::ThisMachine().DriveFolder('C')) / relative;
}

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

class Backup {
 public:
  BackupRun run;
  const std::vector<std::string> files = {"AppData/a", "LocalAppData/b", "Desktop/c", "Documents/d",
                                          "Contacts/e"};

  Backup() {
    run.machine.Add({.name = "Anna"});
    for (const char* file :
         {"AppData/Roaming/a", "AppData/Local/b", "Desktop/c", "Documents/d", "Contacts/e"}) {
      run.machine.files.File(std::string("Users/Anna/") + file, file);
    }
    run.machine.files.File("extra/f", "extra");
    run.Select(L"135", {L"Anna"});
    run.document.SetValue(L"NewExtraFolders", (run.machine.files / "extra").CStr(), L"F");
  }

  // From the same state as the first time.
  void Again() {
    UnloadOwnHives();
    std::filesystem::remove_all(OnDisk(run.machine.files / "set"));
    std::filesystem::remove_all(OnDisk(run.machine.files / "log.txt"));
    run.machine.files.Folder("set");
    run.NewRecord();
  }

  bool IsThere(const std::string& file) const { return run.machine.files.Exists("set/Users/Anna/" + file); }

  // Whether a line tells of the file, of a folder on its way, of its account, or of the account's folder.
  bool IsTold(const std::string& file) const {
    std::string folder = file.substr(0, file.find('/'));
    for (const std::string& line : run.told) {
      if (line.find(": ") == std::string::npos) continue;
      for (const std::string& part : {file.substr(file.find('/') + 1), folder}) {
        if (line.ends_with("\\" + part)) return true;
      }
      for (const char* end :
           {": Anna", "\\Anna", "\\Users", "\\Roaming", "\\Local", "\\Local AppData", "\\set"}) {
        if (line.ends_with(end)) return true;
      }
    }
    return false;
  }
};

// Every call that touches the disk fails once, also those for hives and folders: what isn't in the set is
// told, and the outcome says so.
TEST(BackupWorkerFaults, EveryCallMayFail) {
  Backup backup;
  for (uint64_t n = 1;; n++) {
    backup.Again();
    machine::FaultPlan plan;
    plan.path = Utf8(backup.run.machine.files.Path()) + "\\*s*e*";  // not the log
    plan.nth = n;
    plan.error = ERROR_IO_DEVICE;
    machine::SetFaults(plan);
    backup.run.Run();
    uint64_t calls = machine::FaultCalls();
    machine::ClearFaults();
    if (calls < n) break;
    const OperationContext& context = *backup.run.context;
    for (const std::string& file : backup.files) {
      EXPECT_TRUE(backup.IsThere(file) || backup.IsTold(file)) << file << ", call " << n;
    }
    EXPECT_EQ(context.outcome,
              context.failures > 0 ? OperationOutcome::kFailures : OperationOutcome::kComplete)
        << n;
    EXPECT_FALSE(context.logFailed) << n;
  }
}

// A log that can't be written must not stop the run, and must be known at its end.
TEST(BackupWorkerFaults, TheLogMayFail) {
  Backup backup;
  backup.Again();
  machine::FaultPlan plan;
  plan.path = "*\\log.txt*";
  plan.nth = 1;
  plan.andAllLater = true;
  plan.error = ERROR_DISK_FULL;
  machine::SetFaults(plan);
  backup.run.document.SetValue(L"BackupUsers", L"Nobody", L"1");
  backup.run.Run();
  machine::ClearFaults();
  EXPECT_TRUE(backup.run.context->logFailed);
  EXPECT_EQ(backup.run.context->failures, 1);
  for (const std::string& file : backup.files) EXPECT_TRUE(backup.IsThere(file)) << file;
}

}  // namespace
