// What norvanectl says and leaves behind when the disk doesn't play along, and when it is interrupted.
#include <signal.h>
#include <unistd.h>

#include <atomic>

#include "command_machine.h"
#include "foundation/unique_handle.h"
#include "interrupt.h"
#include "machine/faults.h"
#include "support/log_text.h"
#include "users/user_hives.h"

namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

struct Faulty : CommandMachine {
  Faulty() {
    place.Add({.name = "Anna"});
    files.Folder("backups");
  }

  void File(const std::string& name, size_t size) {
    files.File("Users/Anna/Documents/" + name, std::string(size, 'x'));
  }
  ConsoleRun RunWith(int exitCode, const machine::FaultPlan& plan, const Words& words,
                     const Words& more = {}) const {
    machine::SetFaults(plan);
    ConsoleRun run = Run(exitCode, words, more);
    machine::ClearFaults();
    return run;
  }
  ConsoleRun Backup(int exitCode, const machine::FaultPlan& plan, const Words& more = {}) const {
    return RunWith(
        exitCode, plan,
        {"backup", "--to", Path("backups"), "--name", "Set", "--user", "Anna", "--folders", "documents"},
        more);
  }
};

// Every matching call fails.
machine::FaultPlan Failing(const char* call, const char* path, DWORD error) {
  machine::FaultPlan plan;
  plan.call = call;
  plan.path = path;
  plan.nth = 1;
  plan.andAllLater = true;
  plan.error = error;
  return plan;
}

machine::FaultPlan Room(int64_t bytes) {
  machine::FaultPlan plan;
  plan.bytesLeft = bytes;
  return plan;
}

// A hive that stays loaded costs the account its profile at the next logon, unless somebody knows of it.
TEST(BackupFaults, TellsOfAHiveThatStaysLoaded) {
  Faulty test;
  const std::string sid = test.place.Sid("Anna");
  EXPECT_THAT(Norvanectl({"users"}).errors, IsEmpty());
  ASSERT_TRUE(EnsureUserHiveLoaded(Wide(sid).CStr()));
  UniqueKey indexer;
  ASSERT_EQ(RegOpenKeyExW(HKEY_USERS, Wide(sid).CStr(), 0, KEY_READ, indexer.Receive()), ERROR_SUCCESS);
  const ConsoleRun run = Norvanectl({"users", "--json"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.errors,
              HasSubstr("\"" + Utf8(test.place.Profile("Anna")) + "\" (HKEY_USERS\\" + sid + ")"));
  EXPECT_EQ(LogPlace::Count(run.errors, "\n"), 1u);
}

// A target that takes nothing is told of at once, with the reason, and no empty folder stays there.
TEST(BackupFaults, RefusesATargetThatCannotBeWritten) {
  const std::pair<machine::FaultPlan, const char*> cases[] = {
      {Failing("CreateDirectoryW", "*backups*", ERROR_ACCESS_DENIED), "can't be made"},
      {Failing("CreateFileW", "*\\backups", ERROR_ACCESS_DENIED), "can't be written to"},
      {Failing("CreateFileW", "*BackupInfo*", ERROR_ACCESS_DENIED), "BackupInfo.grxsv"},
      {Room(0), "BackupInfo.grxsv"},
      {Room(2), "BackupInfo.grxsv"},
      {Room(50), "BackupInfo.grxsv"}};
  for (const auto& [plan, part] : cases) {
    SCOPED_TRACE(plan.call + plan.path + std::to_string(plan.bytesLeft));
    Faulty test;
    const ConsoleRun run = test.Backup(4, plan, {"--json"});
    EXPECT_THAT(run.errors, HasSubstr(part));
    EXPECT_THAT(run.errors, HasSubstr(test.Path("backups")));
    EXPECT_EQ(run.Event("end")["outcome"], "not started");
    EXPECT_THAT(test.files.List("backups"), IsEmpty());
  }
}

// Thousands of lines that all say the same would hide what else went wrong.
TEST(BackupFaults, SaysOnceThatTheDiskIsFull) {
  for (const bool isJson : {false, true}) {
    Faulty test;
    for (int file = 0; file < 6; ++file) test.File("file" + std::to_string(file), 10000);
    const ConsoleRun run = test.Backup(1, Room(25000), isJson ? Words{"--json"} : Words{});
    if (!isJson) {
      EXPECT_EQ(LogPlace::Count(run.errors, "The target's disk is full."), 1u) << run.errors;
      EXPECT_LE(LogPlace::Count(run.errors, "Error!"), 1u) << run.errors;
      EXPECT_THAT(run.results, HasSubstr("items could not be copied."));
      continue;
    }
    EXPECT_GE(LogPlace::Count(run.results, "\"event\":\"failure\""), 3u) << run.results;
    EXPECT_EQ(run.Event("failure")["error"], ERROR_DISK_FULL);
    EXPECT_EQ(run.Event("end")["failures"], LogPlace::Count(run.results, "\"event\":\"failure\""));
  }
}

TEST(BackupFaults, NamesEachFileThatFailedWithTheReason) {
  Faulty test;
  test.File("good", 10);
  test.File("bad", 10);
  const ConsoleRun run = test.Backup(1, Failing("ReadFile", "*\\bad", ERROR_CRC));
  EXPECT_THAT(run.errors, HasSubstr(test.Path("Users/Anna/Documents/bad")));
  EXPECT_THAT(run.errors, HasSubstr("(Data error"));
  EXPECT_TRUE(test.files.Exists("backups/Set/Users/Anna/Documents/good"));
  EXPECT_FALSE(test.files.Exists("backups/Set/Users/Anna/Documents/bad"));
}

// Ctrl+C in the middle of a file: no torn file stays, and the script hears of it.
TEST(BackupFaults, StopsAtAnInterrupt) {
  Faulty test;
  test.File("big", 9 << 20);
  std::atomic<int> writes{0};
  machine::FaultPlan plan;
  plan.call = "WriteFile";
  plan.path = "*Users\\Anna\\Documents*";
  plan.before = [&writes](std::string_view, std::string_view) {
    if (++writes != 2) return;
    kill(getpid(), SIGINT);
    usleep(300000);  // the handler has a thread of its own
  };
  const ConsoleRun run = test.Backup(3, plan, {"--json"});
  EXPECT_EQ(run.Event("end")["outcome"], "stopped");
  EXPECT_EQ(run.Event("end")["text"],
            "Failed to backup user data to \"Set\"\r\nThe operation was cancelled.");
  EXPECT_THAT(run.errors, HasSubstr("Stopping."));
  EXPECT_THAT(test.files.List("backups/Set/Users/Anna/Documents"), IsEmpty());
  EXPECT_TRUE(test.files.Exists("backups/Set/BackupInfo.grxsv"));
  EXPECT_LT(writes, 4);
}

// An interrupt while accounts are looked at must end before anything is made, with no hive left loaded.
TEST(BackupFaults, StopsBeforeAnythingIsMade) {
  Faulty test;
  machine::FaultPlan plan;
  plan.call = "RegLoadKeyW";
  plan.before = [](std::string_view, std::string_view) {
    kill(getpid(), SIGINT);
    usleep(300000);
  };
  test.Backup(3, plan);
  EXPECT_THAT(test.files.List("backups"), IsEmpty());
  EXPECT_FALSE(test.place.IsHiveLoaded("Anna"));
  test.Backup(0, {});  // the next run isn't concerned
}

// A stranger's file with millions of rows, some of which would be refused in the end.
TEST(RestoreFaults, StopsWhileItPlans) {
  Faulty test;
  std::string rows = "[Users]\r\nAnna=1|A\r\n";
  for (int i = 0; i < 1000; i++) rows += "User" + std::to_string(i) + "=1|U\r\n";
  rows += "[ExtraFolders]\r\n";
  for (int i = 0; i < 1000; i++) rows += "C:\\Data" + std::to_string(i) + "=1\r\n";
  test.files.File("set/BackupInfo.grxsv", rows);
  test.files.File("set/Users/Anna/Documents/a");
  for (const char* at : {"*ExtraFolders*", "*set\\Users\\Anna*", "*set\\Users\\User*"}) {
    int asked = 0;
    machine::FaultPlan plan;
    plan.call = "GetFileAttributesW";
    plan.path = at;
    plan.before = [&asked](std::string_view, std::string_view) {
      if (++asked != 1) return;
      kill(getpid(), SIGINT);
      while (!InterruptGuard::IsRequested()) usleep(1000);
    };
    const ConsoleRun run = test.RunWith(3, plan, {"restore", test.Path("set"), "--extra", "none", "--json"});
    EXPECT_EQ(run.Event("end")["outcome"], "stopped");
    EXPECT_LT(asked, 10) << "it went on with " << at;
    EXPECT_FALSE(test.files.Exists("Users/Anna/Documents/a"));
  }
}

// A link would copy a folder a second time, under another name.
TEST(BackupCommand, TakesAFolderOnceWhateverLeadsToIt) {
  Faulty test;
  test.files.File("data/inner/x");
  test.files.Link("link", "data");
  const std::string data = test.Path("data"), link = test.Path("link");
  const std::pair<std::string, std::string> cases[] = {
      {data, link}, {link, data}, {link, link}, {data, link + "\\inner"}, {data + "\\inner", link}};
  for (const auto& [first, second] : cases) {
    const ConsoleRun run = test.Backup(4, {}, {"--extra", first, "--extra", second});
    EXPECT_THAT(run.errors, HasSubstr("already marked"));
    EXPECT_THAT(test.files.List("backups"), IsEmpty());
  }
  test.Backup(0, {}, {"--extra", link});
}

// A log that can't be written is no reason to stop, nor to keep silent about it.
TEST(BackupFaults, TellsThatTheLogCannotBeWritten) {
  Faulty test;
  test.File("good", 10);
  const ConsoleRun run = test.Backup(0, Failing("CreateFileW", "*norvane.log", ERROR_ACCESS_DENIED));
  EXPECT_THAT(run.errors, HasSubstr("norvane.log\" could not be written"));
  EXPECT_THAT(run.results, HasSubstr("Successfully"));
}

}  // namespace
