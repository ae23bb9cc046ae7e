// What each operation promises when the system lets it down: a call that fails, an end in the middle, a full
// disk, a stop, a link that is put in a folder's place. Each at every place where it can happen.
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <iostream>

#include "machine/faults.h"
#include "machine/machine.h"
#include "operations/operation_runner.h"
#include "support/host_path.h"
#include "support/operation_scene.h"
#include "users/account_lookup.h"

namespace {

using machine::FaultPlan;

class OperationFaults : public testing::TestWithParam<Operation> {
 protected:
  ~OperationFaults() override { machine::ClearFaults(); }

  // Calls on all but the log.
  FaultPlan Plan(uint64_t nth = 0) const {
    FaultPlan plan;
    plan.path = scene_.Place() + "\\*";
    plan.nth = nth;
    plan.error = ERROR_IO_DEVICE;
    return plan;
  }
  std::string When(uint64_t n, bool onlyMissing) const {
    return (onlyMissing ? "missing files, call " : "all files, call ") + std::to_string(n);
  }

  // A campaign in full takes every call; most of the usual ones take each third, another for each operation.
  static uint64_t Stride() { return std::getenv("NORVANE_EVERY_CALL") ? 1 : 3; }
  uint64_t First(uint64_t number = 0) const {
    return 1 + (static_cast<uint64_t>(GetParam()) + number) % Stride();
  }

  // Runs the operation, pauses it before the n-th call that `plan` is for, and resumes it. False if there was
  // no such call.
  bool RunWithPause(FaultPlan plan, uint64_t n, const std::string& when) {
    LPTHREAD_START_ROUTINE entry = GetParam() == Operation::kBackup ? BackupEntry : RestoreEntry;
    if (GetParam() >= Operation::kCopy) entry = CopyMoveEntry;
    std::atomic<bool> isThere{false}, mayGoOn{false};
    uint64_t calls = 0;
    plan.before = [&](std::string_view, std::string_view) {
      if (++calls != n) return;
      isThere = true;
      while (!mayGoOn) sched_yield();
    };
    machine::SetFaults(plan);
    OperationRunner runner(*scene_.run->context);
    EXPECT_TRUE(runner.Start(entry)) << when;
    while (!isThere && !runner.WaitForEnd(0)) sched_yield();
    EXPECT_TRUE(runner.Pause() || !isThere) << when;
    mayGoOn = true;
    std::vector<std::string> memory(20, std::string(n % 5000, 'x'));
    EXPECT_TRUE(runner.Resume()) << when;
    EXPECT_TRUE(runner.WaitForEnd(60000)) << when;
    machine::ClearFaults();
    scene_.ExpectWhole(when);
    for (const SceneFile& file : scene_.files) {
      EXPECT_TRUE(scene_.IsNewAtTarget(file) || scene_.IsTold(file)) << file.target << ", " << when;
    }
    return isThere;
  }

  // The size of a campaign, for docs/reliability.md.
  void Begin(bool onlyMissing) {
    runs_++;
    scene_.Reset(onlyMissing);
  }
  void TearDown() override { std::cout << "[ runs     ] " << runs_ << "\n"; }

  OperationScene scene_{GetParam()};
  int runs_ = 0;
};

// Any call that fails, for every one: the run ends, what isn't there is told and counted, and all else is
// there. Without this, one bad answer of a disk costs an account its data and nobody hears of it.
TEST_P(OperationFaults, EveryCallMayFail) {
  for (uint64_t n = 1;; n++) {
    Begin(false);
    const std::string when = When(n, false);
    machine::SetFaults(Plan(n));
    scene_.run->Run();
    const uint64_t calls = machine::FaultCalls();
    machine::ClearFaults();
    if (calls < n) break;
    scene_.ExpectWhole(when);
    const OperationContext& context = *scene_.run->context;
    if (context.outcome == OperationOutcome::kNotStarted) continue;
    for (const SceneFile& file : scene_.files) {
      EXPECT_TRUE(scene_.IsNewAtTarget(file) || scene_.IsTold(file)) << file.target << ", " << when;
    }
    EXPECT_EQ(context.outcome,
              context.failures > 0 ? OperationOutcome::kFailures : OperationOutcome::kComplete)
        << when;
    EXPECT_FALSE(context.logFailed) << when;
  }
}

// The process ends before any change of the disk: no file is torn or lost, and a second run with the
// defaults brings what is missing, without taking half a file for a whole one.
TEST_P(OperationFaults, TheEndMayComeAtEveryChange) {
  for (const bool onlyMissing : {false, true}) {
    for (uint64_t n = 1;; n++) {
      Begin(onlyMissing);
      const std::string when = When(n, onlyMissing);
      const pid_t child = fork();
      if (child == 0) {
        FaultPlan plan;
        plan.endAtChange = n;
        machine::SetFaults(plan);
        scene_.run->Run();
        _exit(0);
      }
      int status = 0;
      waitpid(child, &status, 0);
      ASSERT_TRUE(WIFEXITED(status) && (WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == 99)) << when;
      scene_.ExpectWhole(when, true);
      scene_.Again(true);
      scene_.run->Run();
      EXPECT_EQ(scene_.run->context->outcome, OperationOutcome::kComplete)
          << when << testing::PrintToString(scene_.run->told);
      scene_.ExpectWhole(when + ", second run");
      for (const SceneFile& file : scene_.files) {
        EXPECT_TRUE(scene_.IsNewAtTarget(file) || scene_.Read(file.target) == file.old)
            << file.target << ", " << when;
      }
      if (WEXITSTATUS(status) == 0) break;
    }
  }
}

// A stop at every call: nothing partial stays, and a stop is no failure.
TEST_P(OperationFaults, AStopMayComeAtEveryCall) {
  for (uint64_t n = First();; n += Stride()) {
    Begin(false);
    const std::string when = When(n, false);
    FaultPlan plan = Plan();
    uint64_t calls = 0;
    plan.before = [&](std::string_view, std::string_view) {
      if (++calls == n) scene_.run->context->stop = 1;
    };
    machine::SetFaults(plan);
    const int32_t result = scene_.run->Run();
    machine::ClearFaults();
    scene_.ExpectWhole(when);
    // The system's own copy says that it was cancelled, and that is logged as it stands.
    EXPECT_LE(scene_.run->context->failures, 1) << when;
    if (calls < n) break;
    EXPECT_TRUE(result == -1 || scene_.IsNewAtTarget(scene_.files.back())) << when;
  }
}

// A pause, with the memory that a window takes meanwhile: the run goes on as if nothing had been.
TEST_P(OperationFaults, APauseMayComeAtAnyCall) {
  for (uint64_t n = First(1);; n += 5 * Stride()) {
    Begin(false);
    if (!RunWithPause(Plan(), n, When(n, false))) break;
  }
}

// The same at each entry of the tree, whatever way its file goes.
TEST_P(OperationFaults, APauseMayComeAtEveryEntry) {
  const std::vector<SceneFile> files = scene_.files;
  for (const SceneFile& file : files) {
    Begin(false);
    FaultPlan plan;
    plan.path = scene_.Place() + "\\" + file.target;
    std::replace(plan.path.begin(), plan.path.end(), '/', '\\');
    EXPECT_TRUE(RunWithPause(plan, 1, file.target)) << "nobody came to " << plan.path;
  }
}

// A disk that fills up at any byte: overwriting costs no old file, each file is told, the reason is known.
TEST_P(OperationFaults, TheDiskMayFillUpAtEveryByte) {
  size_t bytes = 0;
  for (const SceneFile& file : scene_.files) bytes += file.bytes.size();
  for (size_t room = 0; room <= bytes; room++) {
    Begin(false);
    const std::string when = std::to_string(room) + " bytes left";
    FaultPlan plan;
    plan.bytesLeft = static_cast<int64_t>(room);
    machine::SetFaults(plan);
    scene_.run->Run();
    machine::ClearFaults();
    scene_.ExpectWhole(when);
    bool isComplete = true;
    for (const SceneFile& file : scene_.files) {
      isComplete = isComplete && scene_.IsNewAtTarget(file);
      EXPECT_TRUE(scene_.IsNewAtTarget(file) || scene_.IsTold(file)) << file.target << ", " << when;
    }
    EXPECT_NE(isComplete, scene_.run->context->failures > 0) << when;
    // A move over a read-only file is refused, with room or without.
    if (GetParam() != Operation::kMove) {
      EXPECT_NE(isComplete, scene_.run->context->targetFull) << when;
    }
  }
}

// A disk that goes away half-way, or takes nothing more: the run comes to its end, and each file that isn't
// there is told.
TEST_P(OperationFaults, ADiskMayGoAwayAtAnyCall) {
  const std::string source = scene_.files[0].source, target = scene_.files[0].target;
  for (const std::string& path : {source, target}) {
    for (uint64_t n = First();; n += 4 * Stride()) {
      Begin(false);
      const std::string when = path + ", call " + std::to_string(n);
      FaultPlan plan = Plan(n);
      plan.path = scene_.Place() + "\\" + path.substr(0, path.find('/')) + "*";
      plan.andAllLater = true;
      plan.error = path == source ? ERROR_NOT_READY : ERROR_WRITE_PROTECT;
      machine::SetFaults(plan);
      scene_.run->Run();
      const uint64_t calls = machine::FaultCalls();
      machine::ClearFaults();
      scene_.ExpectWhole(when, true);
      if (calls < n) break;
      if (scene_.run->context->outcome == OperationOutcome::kNotStarted) continue;
      for (const SceneFile& file : scene_.files) {
        EXPECT_TRUE(scene_.IsNewAtTarget(file) || scene_.IsTold(file)) << file.target << ", " << when;
      }
    }
  }
}

// The drive of another installation goes away with all that it holds, and with it its letter. The system
// says of each file that it isn't there, which must not pass for an account that has none.
TEST(DriveFaults, ADriveMayGoAwayAtAnyCall) {
  OperationScene scene(Operation::kRestoreFrom);
  machine::Machine attached = machine::ThisMachine();
  attached.settings.drives['D'] = HostPath(scene.run->files.Path());
  machine::UseMachine(attached);
  scene.run->document.path = L"D:\\old\\BackupInfo.grxsv";
  for (uint64_t n = 2;; n += 2) {  // without the info file there is no run
    scene.Reset(false);
    FaultPlan plan;
    plan.path = "D:\\*";
    plan.nth = n;
    plan.andAllLater = true;
    plan.error = ERROR_PATH_NOT_FOUND;
    machine::SetFaults(plan);
    scene.run->Run();
    const uint64_t calls = machine::FaultCalls();
    machine::ClearFaults();
    for (std::string& line : scene.run->told) {
      if (const size_t at = line.find(": D:\\"); at != std::string::npos) line.replace(at + 2, 2, "~");
    }
    for (const SceneFile& file : scene.files) {
      EXPECT_TRUE(scene.IsNewAtTarget(file) || scene.IsTold(file)) << file.target << ", call " << n;
    }
    if (calls < n) break;
  }
}

// Moves `folder` away and puts a link to somebody else's data in its place, by the system's own calls.
void Exchange(TestPlace& place, const std::string& folder) {
  if (!MoveFileExW((place / folder).CStr(), (place / "moved away").CStr(), 0)) return;
  std::filesystem::create_directory_symlink(HostPath(place / "Users/Eve/outside"), HostPath(place / folder));
}

// At any call somebody puts a link in a folder's place, in what is read or in what is written: nothing
// beyond it is read, changed or removed. The folders are those that an account, or whoever made a set, can
// write to.
TEST_P(OperationFaults, AFolderMayBeExchangedForALinkAtEveryCall) {
  std::vector<std::string> folders;
  for (const SceneFile& file : scene_.files) {
    for (const char* end : {"Documents/c", "Documents/dir/deep/read-only", "ocal/b", "Data/b", "/e", "/f"}) {
      if (!file.target.ends_with(end)) continue;
      const std::string source = file.source.substr(0, file.source.rfind('/'));
      // Where an account's hive leads, or a person, is their own word, and is taken as it is.
      const bool isNamed = GetParam() == Operation::kBackup && !source.ends_with("deep");
      if (!isNamed) folders.push_back(source);
      folders.push_back(file.target.substr(0, file.target.rfind('/')));
    }
  }
  uint64_t number = 0;
  for (const std::string& folder : folders) {
    for (uint64_t n = First(number++);; n += 2 * Stride() - 1) {
      Begin(false);
      TestPlace& place = scene_.run->files;
      std::filesystem::remove_all(HostPath(place / "Users/Eve/outside"));
      std::filesystem::remove_all(HostPath(place / "moved away"));
      const std::string when = folder + ", call " + std::to_string(n);
      for (const char* name : {"c", "e", "b", "f", "secret", "read-only", "dir/d", "dir/deep/read-only"})
        place.File(std::string("Users/Eve/outside/") + name, "outside");
      const std::vector<std::string> outside = place.List("Users/Eve/outside");
      FaultPlan plan = Plan();
      uint64_t calls = 0;
      plan.before = [&](std::string_view, std::string_view) {
        if (++calls == n) Exchange(place, folder);
      };
      machine::SetFaults(plan);
      scene_.run->Run();
      machine::ClearFaults();
      EXPECT_EQ(place.List("Users/Eve/outside"), outside) << when;
      for (const std::string& name : outside) {
        const std::string bytes = scene_.Read("Users/Eve/outside/" + name);
        EXPECT_TRUE(bytes == "(folder)" || bytes == "outside") << name << ", " << when;
      }
      for (const SceneFile& file : scene_.files) {
        const bool isLinked = file.target.starts_with(folder + "/");
        EXPECT_TRUE(isLinked || scene_.Read(file.target) != "outside") << file.target << ", " << when;
      }
      if (calls < n) break;
    }
  }
}

// A restore that makes an account for what it brings back.
class AccountScene {
 public:
  RestoreRun run;

  AccountScene() {
    run.files.File("set/Users/Anna/Documents/a", "new bytes");
    run.Select(4, {{"Anna", "Carl <create>"}});
  }

  // On what the first run left, with nothing in the way.
  void RunAgain() {
    std::string error;
    ASSERT_TRUE(machine::Machine::Open(machine::ThisMachine().folder, again_, &error)) << error;
    machine::UseMachine(again_);
    run.NewRecord();
    run.OnlyMissing();
    run.Run();
  }

  // In the profile that the account will log on to, which a folder of its name alone isn't.
  bool IsThere() const {
    WString sid, profile;
    if (!HasKnownProfile(L"Carl") || !GetAccountSidAndProfile(L"Carl", sid, &profile)) return false;
    const std::string file = HostPath(profile + L"\\Documents\\a");
    return std::filesystem::exists(file) && std::filesystem::file_size(file) == 9;
  }
  size_t Carls() const {
    size_t carls = 0;
    for (const machine::Account& account : machine::ThisMachine().accounts) carls += account.name == "Carl";
    return carls;
  }

  // Of a run that nothing was in the way of: one account, and its file or a failure, but not both.
  void ExpectSettled(const std::string& when) const {
    EXPECT_NE(IsThere(), run.context->failures > 0) << when << testing::PrintToString(run.told);
    EXPECT_EQ(Carls(), 1u) << when;
  }

 private:
  machine::Machine again_;
};

// Killed while an account is made: the second run comes to the end with it, and its person can log on.
TEST(AccountFaults, TheEndMayComeAtEveryChange) {
  for (uint64_t n = 1;; n++) {
    AccountScene scene;
    const std::string when = "change " + std::to_string(n);
    const pid_t child = fork();
    if (child == 0) {
      FaultPlan plan;
      plan.endAtChange = n;
      machine::SetFaults(plan);
      scene.run.Run();
      machine::LeaveMachine();
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status) && (WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == 99)) << when;
    scene.RunAgain();
    scene.ExpectSettled(when);
    EXPECT_TRUE(scene.IsThere()) << when << testing::PrintToString(scene.run.told);
    EXPECT_EQ(machine::ThisMachine().FindAccount("Carl")->groups, std::vector<std::string>{"Users"}) << when;
    if (WEXITSTATUS(status) == 0) break;
  }
}

// Any call fails while an account is made, those for accounts, profiles and hives among them.
TEST(AccountFaults, EveryCallMayFail) {
  for (uint64_t n = 1;; n++) {
    AccountScene scene;
    const std::string when = "call " + std::to_string(n);
    FaultPlan plan;
    plan.nth = n;
    plan.error = ERROR_ACCESS_DENIED;
    machine::SetFaults(plan);
    scene.run.Run();
    const uint64_t calls = machine::FaultCalls();
    machine::ClearFaults();
    const OperationContext& context = *scene.run.context;
    if (context.outcome != OperationOutcome::kNotStarted) {
      EXPECT_TRUE(scene.IsThere() || context.failures > 0) << when;
    }
    EXPECT_LE(scene.Carls(), 1u) << when;
    scene.RunAgain();
    scene.ExpectSettled(when + ", second run");
    if (calls < n) break;
  }
}

INSTANTIATE_TEST_SUITE_P(All, OperationFaults,
                         testing::Values(Operation::kBackup, Operation::kRestore, Operation::kRestoreFrom,
                                         Operation::kCopy, Operation::kMove),
                         [](const auto& info) { return OperationName(info.param); });

}  // namespace
