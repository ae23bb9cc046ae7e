// What norvanectl says and leaves behind when the disk doesn't play along, and when it is interrupted.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>

#include "console_run.h"
#include "foundation/unique_handle.h"
#include "interrupt.h"
#include "machine/faults.h"
#include "support/account_place.h"
#include "users/user_hives.h"

namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

struct Faulty {
  AccountPlace place;
  std::string to = "backups";

  Faulty() {
    place.Add({.name = "Anna"});
    place.files.Folder("backups");
  }
  ~Faulty() { machine::ClearFaults(); }

  void File(const std::string& name, size_t size) {
    place.files.File("Users/Anna/Documents/" + name, std::string(size, 'x'));
  }
  ConsoleRun Backup(const machine::FaultPlan& plan, std::vector<std::string> more = {}) {
    std::vector<std::string> words = {
        "backup",    "--to",  Utf8(place.files / to),     "--name", "Set", "--user", "Anna", "--folders",
        "documents", "--log", Utf8(place.files / "x.log")};
    words.insert(words.end(), more.begin(), more.end());
    machine::SetFaults(plan);
    ConsoleRun run = Norvanectl(words);
    machine::ClearFaults();
    return run;
  }
};

size_t Count(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
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
  EXPECT_EQ(Count(run.errors, "\n"), 1u);
}

// A target that takes nothing is told of at once, with the reason, and no empty folder stays there.
TEST(BackupFaults, RefusesATargetThatCannotBeWritten) {
  struct Case {
    const char* call;
    const char* path;
    DWORD error;
    const char* part;
  };
  for (const Case& c : {Case{"CreateDirectoryW", "*backups*", ERROR_ACCESS_DENIED, "can't be made"},
                        {"CreateFileW", "*\\backups", ERROR_ACCESS_DENIED, "can't be written to"},
                        {"CreateFileW", "*BackupInfo*", ERROR_ACCESS_DENIED, "BackupInfo.grxsv"}}) {
    Faulty test;
    machine::FaultPlan plan;
    plan.call = c.call;
    plan.path = c.path;
    plan.nth = 1;
    plan.andAllLater = true;
    plan.error = c.error;
    const ConsoleRun run = test.Backup(plan, {"--json"});
    EXPECT_EQ(run.exitCode, 4) << c.part;
    EXPECT_THAT(run.errors, HasSubstr(c.part));
    EXPECT_THAT(run.errors, HasSubstr(Utf8(test.place.files / "backups")));
    EXPECT_EQ(run.Event("end")["outcome"], "not started");
    EXPECT_THAT(test.place.files.List("backups"), IsEmpty());
  }
}

TEST(BackupFaults, RefusesATargetWithoutRoomForTheInfoFile) {
  for (int64_t room : {0, 2, 50}) {
    Faulty test;
    machine::FaultPlan plan;
    plan.bytesLeft = room;
    const ConsoleRun run = test.Backup(plan);
    EXPECT_EQ(run.exitCode, 4) << room;
    EXPECT_THAT(run.errors, HasSubstr("BackupInfo.grxsv"));
    EXPECT_THAT(test.place.files.List("backups"), IsEmpty());
  }
}

// A backup into its own source by another way grows until the disk is full. Wine gives a link's own path
// for what it leads to, so this is here alone.
TEST(BackupFaults, SeesAnOverlapThroughALink) {
  Faulty test;
  test.File("letter", 10);
  test.place.files.Link("way", "Users/Anna/Documents");
  test.to = "way/x";
  const ConsoleRun run = test.Backup({});
  EXPECT_EQ(run.exitCode, 4);
  EXPECT_THAT(run.errors, HasSubstr("one inside the other"));
  EXPECT_EQ(test.place.files.List("Users/Anna/Documents").size(), 1u);
}

// Thousands of lines that all say the same would hide what else went wrong.
TEST(BackupFaults, SaysOnceThatTheDiskIsFull) {
  Faulty test;
  for (int file = 0; file < 6; ++file) test.File("file" + std::to_string(file), 10000);
  machine::FaultPlan plan;
  plan.bytesLeft = 25000;
  const ConsoleRun run = test.Backup(plan);
  EXPECT_EQ(run.exitCode, 1) << run.errors;
  EXPECT_EQ(Count(run.errors, "The target's disk is full."), 1u) << run.errors;
  EXPECT_LE(Count(run.errors, "Error!"), 1u) << run.errors;
  EXPECT_THAT(run.results, HasSubstr("items could not be copied."));

  Faulty again;
  for (int file = 0; file < 6; ++file) again.File("file" + std::to_string(file), 10000);
  const ConsoleRun json = again.Backup(plan, {"--json"});
  EXPECT_GE(Count(json.results, "\"event\":\"failure\""), 3u) << json.results;
  EXPECT_EQ(json.Event("failure")["error"], ERROR_DISK_FULL);
  EXPECT_EQ(json.Event("end")["failures"], Count(json.results, "\"event\":\"failure\""));
}

TEST(BackupFaults, NamesEachFileThatFailedWithTheReason) {
  Faulty test;
  test.File("good", 10);
  test.File("bad", 10);
  machine::FaultPlan plan;
  plan.call = "ReadFile";
  plan.path = "*\\bad";
  plan.nth = 1;
  plan.andAllLater = true;
  plan.error = ERROR_CRC;
  const ConsoleRun run = test.Backup(plan);
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.errors, HasSubstr(Utf8(test.place.files / "Users/Anna/Documents/bad")));
  EXPECT_THAT(run.errors, HasSubstr("(Data error"));
  EXPECT_TRUE(test.place.files.Exists("backups/Set/Users/Anna/Documents/good"));
  EXPECT_FALSE(test.place.files.Exists("backups/Set/Users/Anna/Documents/bad"));
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
  const ConsoleRun run = test.Backup(plan, {"--json"});
  EXPECT_EQ(run.exitCode, 3) << run.errors;
  EXPECT_EQ(run.Event("end")["outcome"], "stopped");
  EXPECT_EQ(run.Event("end")["text"],
            "Failed to backup user data to \"Set\"\r\nThe operation was cancelled.");
  EXPECT_THAT(run.errors, HasSubstr("Stopping."));
  EXPECT_THAT(test.place.files.List("backups/Set/Users/Anna/Documents"), IsEmpty());
  EXPECT_TRUE(test.place.files.Exists("backups/Set/BackupInfo.grxsv"));
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
  EXPECT_EQ(test.Backup(plan).exitCode, 3);
  EXPECT_THAT(test.place.files.List("backups"), IsEmpty());
  EXPECT_FALSE(test.place.IsHiveLoaded("Anna"));
  EXPECT_EQ(test.Backup({}).exitCode, 0) << "the next run isn't concerned";
}

// A stranger's file with millions of rows, some of which would be refused in the end.
TEST(RestoreFaults, StopsWhileItPlans) {
  Faulty test;
  std::string rows = "[Users]\r\nAnna=1|A\r\n[ExtraFolders]\r\n";
  for (int i = 0; i < 1000; i++) rows += "C:\\Data" + std::to_string(i) + "=1\r\n";
  test.place.files.File("set/BackupInfo.grxsv", rows);
  test.place.files.File("set/Users/Anna/Documents/a");
  for (const char* at : {"*ExtraFolders*", "*set\\Users\\Anna*"}) {
    int asked = 0;
    machine::FaultPlan plan;
    plan.call = "GetFileAttributesW";
    plan.path = at;
    plan.before = [&asked](std::string_view, std::string_view) {
      if (++asked != 1) return;
      kill(getpid(), SIGINT);
      while (!InterruptGuard::IsRequested()) usleep(1000);
    };
    machine::SetFaults(plan);
    const ConsoleRun run =
        Norvanectl({"restore", Utf8(test.place.files / "set"), "--extra", "none", "--json"});
    machine::ClearFaults();
    EXPECT_EQ(run.exitCode, 3) << run.errors;
    EXPECT_EQ(run.Event("end")["outcome"], "stopped");
    EXPECT_LT(asked, 10) << "it went on with " << at;
    EXPECT_FALSE(test.place.files.Exists("Users/Anna/Documents/a"));
  }
}

// A link would copy a folder a second time, under another name.
TEST(BackupCommand, TakesAFolderOnceWhateverLeadsToIt) {
  Faulty test;
  test.place.files.File("data/inner/x");
  test.place.files.Link("link", "data");
  const std::string data = Utf8(test.place.files / "data"), link = Utf8(test.place.files / "link");
  const std::pair<std::string, std::string> cases[] = {
      {data, link}, {link, data}, {link, link}, {data, link + "\\inner"}, {data + "\\inner", link}};
  for (const auto& [first, second] : cases) {
    const ConsoleRun run = test.Backup({}, {"--extra", first, "--extra", second});
    EXPECT_EQ(run.exitCode, 4) << first << " " << second;
    EXPECT_THAT(run.errors, HasSubstr("already marked"));
    EXPECT_THAT(test.place.files.List("backups"), IsEmpty());
  }
  EXPECT_EQ(test.Backup({}, {"--extra", link}).exitCode, 0);
}

// A log that can't be written is no reason to stop, nor to keep silent about it.
TEST(BackupFaults, TellsThatTheLogCannotBeWritten) {
  Faulty test;
  test.File("good", 10);
  machine::FaultPlan plan;
  plan.call = "CreateFileW";
  plan.path = "*x.log";
  plan.nth = 1;
  plan.andAllLater = true;
  plan.error = ERROR_ACCESS_DENIED;
  const ConsoleRun run = test.Backup(plan);
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.errors, HasSubstr("x.log\" could not be written"));
  EXPECT_THAT(run.results, HasSubstr("Successfully"));
}

}  // namespace
