// What the engine promises when the system lets it down: a call that fails, an end in the middle, a full
// disk, a stop, a folder that is exchanged under way. Each at every place where it can happen.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <map>

#include "foundation/unique_handle.h"
#include "machine/faults.h"
#include "machine/machine.h"
#include "support/copy_run.h"

namespace {

using machine::FaultPlan;

struct FaultsOff {
  ~FaultsOff() { machine::ClearFaults(); }
};

// Matches "source" and "target", and not the log.
std::string CallsOnTheTrees(const TestPlace& place) { return Utf8(place.Path()) + "\\*r*e*"; }

enum class Way { kFiltered, kUpdate, kFast };

// A small tree with everything in it that has a road of its own through the engine, over an older copy.
class SmallTree {
 public:
  CopyRun run;
  std::map<std::string, std::string> fresh, old;  // by relative path

  explicit SmallTree(Way way) : way_(way) {
    fresh = {{"a", "new a"}, {"dir/b", "new b"}, {"dir/deep/c", ""}, {"dir/ro", "new ro"}, {"z", "new z"}};
    old = {{"a", "old bytes of a"}, {"dir/ro", "old read-only"}, {"z", "old"}, {"only here", "kept"}};
    for (const auto& [path, bytes] : fresh) {
      WString file = run.place.File("source/" + path, bytes);
      SetWriteTime(file.CStr(), kSomeTime);
      SetAttributes(file.CStr(), path == "z" ? FILE_ATTRIBUTE_HIDDEN : FILE_ATTRIBUTE_ARCHIVE);
    }
    for (const auto& [path, bytes] : old) {
      WString file = run.place.File("target/" + path, bytes);
      SetWriteTime(file.CStr(), kSomeTime - kDay);
      if (path == "dir/ro") SetAttributes(file.CStr(), FILE_ATTRIBUTE_READONLY);
    }
    Begin();
  }

  void Begin() {
    run.told.clear();
    run.reasons.clear();
    run.NewRecord();
    if (way_ == Way::kUpdate) run.context->copyOptions = kCopyOnlyNewer;
  }

  bool Copy() { return run.Run(way_ == Way::kFast); }

  // A target file is the old one or the new one, and nothing of a file in the making is left.
  void ExpectNothingTorn(const std::string& when) {
    for (const std::string& path : run.place.List("target")) {
      if (IsFolder(path)) continue;
      auto isNew = fresh.find(path), isOld = old.find(path);
      std::string bytes = run.place.Read("target/" + path);
      bool isWhole =
          (isNew != fresh.end() && bytes == isNew->second) || (isOld != old.end() && bytes == isOld->second);
      EXPECT_TRUE(isWhole) << path << ": \"" << bytes << "\", " << when;
    }
    for (const auto& [path, bytes] : old)
      EXPECT_TRUE(run.place.Exists("target/" + path)) << path << ", " << when;
  }

  bool IsCurrent(const std::string& path) {
    if (!run.place.Exists("target/" + path) || run.place.Read("target/" + path) != fresh[path]) return false;
    FileFacts source = Facts(run.place / ("source/" + path)), target = Facts(run.place / ("target/" + path));
    return source.attributes == target.attributes && source.written == target.written;
  }

  bool IsComplete() {
    bool isComplete = true;
    for (const auto& [path, bytes] : fresh) isComplete = isComplete && IsCurrent(path);
    return isComplete;
  }

  // Whether a failure was told of this file or of a folder that it lies in.
  bool IsTold(const std::string& path) {
    for (const std::string& line : run.told) {
      if (!line.starts_with("failed ")) continue;
      size_t at = line.find("~\\");
      std::string named = line.substr(
          line.find('\\', at + 2) == std::string::npos ? line.size() : line.find('\\', at + 2) + 1);
      for (char& unit : named) unit = unit == '\\' ? '/' : unit;
      if (named.empty() || path == named || path.starts_with(named + "/")) return true;
    }
    return false;
  }

 private:
  bool IsFolder(const std::string& path) {
    return Attributes((run.place / ("target/" + path)).CStr()) & FILE_ATTRIBUTE_DIRECTORY;
  }

  Way way_;
};

std::string Describe(Way way, uint64_t n, DWORD error) {
  const char* names[] = {"filtered", "update", "fast"};
  return std::string(names[static_cast<int>(way)]) + ", call " + std::to_string(n) + ", error " +
         std::to_string(error);
}

class CopyFaults : public testing::TestWithParam<Way> {
 protected:
  FaultsOff off_;
};

// Any call on source or target that fails, for every one: the run ends, what isn't there is told, logged
// and counted, and all else is there.
TEST_P(CopyFaults, EveryCallMayFail) {
  for (DWORD error : {ERROR_IO_DEVICE, ERROR_ACCESS_DENIED}) {
    for (uint64_t n = 1;; n++) {
      SmallTree tree(GetParam());
      std::string when = Describe(GetParam(), n, error);
      FaultPlan plan;
      plan.path = CallsOnTheTrees(tree.run.place);
      plan.nth = n;
      plan.error = error;
      machine::SetFaults(plan);
      bool isDone = tree.Copy();
      uint64_t calls = machine::FaultCalls();
      machine::ClearFaults();
      if (calls < n) break;
      tree.ExpectNothingTorn(when);
      int64_t told = 0;
      for (const std::string& line : tree.run.told) told += line.starts_with("failed ");
      EXPECT_EQ(tree.run.context->failures, told) << when;
      EXPECT_EQ(tree.run.Log().size(), static_cast<size_t>(told)) << when;
      for (const auto& [path, bytes] : tree.fresh) {
        EXPECT_TRUE(tree.IsCurrent(path) || tree.IsTold(path)) << path << ", " << when;
      }
      EXPECT_TRUE(isDone || told > 0) << when;
    }
  }
}

// FAT, CDs and file servers don't know every call that NTFS knows, and a profile that names its reader in no
// list answers only what asks with the backup privilege. Nothing of a copy may hang on these.
TEST_P(CopyFaults, ACallMayBeUnknownOrDenied) {
  const struct {
    const char* call;
    bool andAllLater;
    std::vector<DWORD> errors;
  } cases[] = {
      {"GetFileInformationByHandleEx",
       true,
       {ERROR_INVALID_PARAMETER, ERROR_INVALID_FUNCTION, ERROR_NOT_SUPPORTED}},
      {"FindFirstFileW", false, {ERROR_INVALID_PARAMETER, ERROR_INVALID_FUNCTION, ERROR_NOT_SUPPORTED}},
      {"CreateDirectoryExW", true, {ERROR_INVALID_PARAMETER, ERROR_NOT_SUPPORTED, ERROR_EAS_NOT_SUPPORTED}},
      {"FlushFileBuffers", true, {ERROR_INVALID_PARAMETER, ERROR_INVALID_FUNCTION, ERROR_NOT_SUPPORTED}},
      {"GetFileAttributesW", true, {ERROR_ACCESS_DENIED, ERROR_SHARING_VIOLATION}},
  };
  for (const auto& test : cases) {
    for (DWORD error : test.errors) {
      SmallTree tree(GetParam());
      FaultPlan plan;
      plan.call = test.call;
      plan.path = CallsOnTheTrees(tree.run.place);
      plan.nth = 1;
      plan.andAllLater = test.andAllLater;
      plan.error = error;
      machine::SetFaults(plan);
      EXPECT_TRUE(tree.Copy()) << test.call << ", " << error;
      machine::ClearFaults();
      EXPECT_TRUE(tree.IsComplete()) << test.call << ", " << error;
      EXPECT_EQ(tree.run.context->failures, 0) << test.call << ", " << error;
    }
  }
}

// A disk that takes no rename any more must not be answered by deleting the old copies.
TEST_P(CopyFaults, OldCopiesStayWhenNoRenameWorks) {
  SmallTree tree(GetParam());
  FaultPlan plan;
  plan.call = "MoveFileExW";
  plan.nth = 1;
  plan.andAllLater = true;
  plan.error = ERROR_IO_DEVICE;
  machine::SetFaults(plan);
  tree.Copy();
  machine::ClearFaults();
  tree.ExpectNothingTorn("no rename");
  for (const auto& [path, bytes] : tree.old) EXPECT_EQ(tree.run.place.Read("target/" + path), bytes);
  EXPECT_EQ(tree.run.context->failures, static_cast<int64_t>(tree.fresh.size()));
  EXPECT_EQ(tree.run.context->errors, GetParam() == Way::kFast ? 0 : static_cast<int64_t>(tree.fresh.size()));
}

// The process ends before any change of the disk: each file is the old or the new one, and a second run
// completes the set and cleans up.
TEST_P(CopyFaults, TheEndMayComeAtEveryChange) {
  for (uint64_t n = 1;; n++) {
    SmallTree tree(GetParam());
    std::string when = Describe(GetParam(), n, 0);
    pid_t child = fork();
    if (child == 0) {
      FaultPlan plan;
      plan.endAtChange = n;
      machine::SetFaults(plan);
      tree.Copy();
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status) && (WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == 99)) << when;
    std::vector<std::string> leftovers;
    for (const std::string& path : tree.run.place.List("target")) {
      if (path.find("~{") == std::string::npos) continue;
      leftovers.push_back(path);
      tree.fresh[path] = tree.run.place.Read("target/" + path);
    }
    EXPECT_LE(leftovers.size(), 1u) << when;
    tree.ExpectNothingTorn(when);
    for (const std::string& path : leftovers) tree.fresh.erase(path);
    tree.Begin();
    EXPECT_TRUE(tree.Copy());
    EXPECT_TRUE(tree.IsComplete()) << when;
    EXPECT_EQ(tree.run.context->failures, 0) << when;
    tree.ExpectNothingTorn(when + ", second run");
    if (WEXITSTATUS(status) == 0) break;
  }
}

// A stop at every call: nothing partial stays, and a stop is no failure.
TEST_P(CopyFaults, AStopMayComeAtEveryCall) {
  for (uint64_t n = 1;; n++) {
    SmallTree tree(GetParam());
    std::string when = Describe(GetParam(), n, 0);
    UseSmallBlocks(*tree.run.context);
    FaultPlan plan;
    plan.path = CallsOnTheTrees(tree.run.place);
    uint64_t calls = 0;
    plan.before = [&](std::string_view, std::string_view) {
      if (++calls == n) tree.run.context->stop = 1;
    };
    machine::SetFaults(plan);
    tree.Copy();
    machine::ClearFaults();
    tree.ExpectNothingTorn(when);
    // The system's own copy says that it was cancelled, and that is logged as it stands.
    EXPECT_LE(tree.run.context->failures, GetParam() == Way::kFast ? 1 : 0) << when;
    EXPECT_EQ(tree.run.context->errors, 0) << when;
    if (calls < n) break;
  }
}

// A disk that fills up at any byte: the last good copies stay, each file is told, the reason is known.
TEST_P(CopyFaults, TheDiskMayFillUpAtEveryByte) {
  for (int64_t room = 0; room <= 24; room++) {
    SmallTree tree(GetParam());
    std::string when = std::to_string(room) + " bytes left";
    FaultPlan plan;
    plan.bytesLeft = room;
    machine::SetFaults(plan);
    tree.Copy();
    machine::ClearFaults();
    tree.ExpectNothingTorn(when);
    bool isComplete = tree.IsComplete();
    EXPECT_NE(isComplete, tree.run.context->targetFull) << when;
    EXPECT_NE(isComplete, tree.run.context->failures > 0) << when;
    for (const auto& [path, bytes] : tree.fresh) {
      EXPECT_TRUE(tree.IsCurrent(path) || tree.IsTold(path)) << path << ", " << when;
    }
  }
}

// An update walks as the plain copy does.
class CopyExchanges : public CopyFaults {};

std::filesystem::path OnDisk(const WString& path) {
  std::string relative = Utf8(path).substr(3);
  for (char& unit : relative) unit = unit == '\\' ? '/' : unit;
  return std::filesystem::path(machine::ThisMachine().DriveFolder('C')) / relative;
}

// At any call somebody tries to put a link in a folder's place, by the system's own calls: nothing beyond
// it is read, written, or changed.
TEST_P(CopyExchanges, AFolderMayBeExchangedForALinkAtEveryCall) {
  for (const char* side : {"source", "target"}) {
    for (uint64_t n = 1;; n++) {
      SmallTree tree(GetParam());
      TestPlace& place = tree.run.place;
      std::string when = std::string(side) + ", " + Describe(GetParam(), n, 0);
      for (const char* name : {"outside/b", "outside/secret", "outside/deep/c", "outside/ro"})
        place.File(name, "outside");
      std::vector<std::string> outside = place.List("outside");
      std::string folder = std::string(side) + "/dir";
      FaultPlan plan;
      plan.path = CallsOnTheTrees(place);
      uint64_t calls = 0;
      plan.before = [&](std::string_view, std::string_view) {
        if (++calls != n) return;
        WString moved = place / (std::string(side) + "-moved");
        if (MoveFileExW((place / folder).CStr(), moved.CStr(), 0)) {
          std::filesystem::create_directory_symlink(OnDisk(place / "outside"), OnDisk(place / folder));
        }
      };
      machine::SetFaults(plan);
      tree.Copy();
      machine::ClearFaults();
      EXPECT_EQ(place.List("outside"), outside) << when;
      for (const char* name : {"outside/b", "outside/deep/c", "outside/ro"})
        EXPECT_EQ(place.Read(name), "outside") << when;
      for (const char* name : {"target/dir/b", "target-moved/b"}) {
        if (std::string(side) == "source" && place.Exists(name)) {
          EXPECT_NE(place.Read(name), "outside") << name << ", " << when;
        }
      }
      EXPECT_FALSE(std::string(side) == "source" && place.Exists("target/dir/secret")) << when;
      if (calls < n) break;
    }
  }
}

// Turns an empty folder into a junction where it stands.
bool MakeJunction(const WString& path, const WString& target) {
  std::u16string name = u"\\??\\" + std::u16string(reinterpret_cast<const char16_t*>(target.CStr()));
  std::vector<uint8_t> point(16 + name.size() * 2 + 4);
  auto put = [&point](size_t at, size_t value) {
    point[at] = static_cast<uint8_t>(value);
    point[at + 1] = static_cast<uint8_t>(value >> 8);
  };
  put(0, 3);
  put(2, 0xa000);
  put(4, point.size() - 8);
  put(10, name.size() * 2);
  put(12, name.size() * 2 + 2);
  memcpy(point.data() + 16, name.data(), name.size() * 2);
  UniqueFile handle(CreateFileW(path.CStr(), FILE_WRITE_ATTRIBUTES, 7, nullptr, OPEN_EXISTING,
                                FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  DWORD size = 0;
  return handle && DeviceIoControl(handle.Get(), FSCTL_SET_REPARSE_POINT, point.data(),
                                   static_cast<DWORD>(point.size()), nullptr, 0, &size, nullptr);
}

// The one exchange that no hold prevents: an empty folder becomes a junction. Nothing comes from beyond
// it, and nothing stays there.
TEST_P(CopyExchanges, AnEmptyFolderMayBecomeAJunctionAtEveryCall) {
  for (const char* folder : {"source/empty", "target/dir", "target/dir/deep"}) {
    for (uint64_t n = 1;; n++) {
      SmallTree tree(GetParam());
      TestPlace& place = tree.run.place;
      std::string when = std::string(folder) + ", " + Describe(GetParam(), n, 0);
      for (const char* name : {"outside/b", "outside/c", "outside/ro", "outside/deep/c"})
        place.File(name, "outside");
      std::vector<std::string> outside = place.List("outside");
      place.Folder("source/empty");
      SetAttributes((place / "target/dir/ro").CStr(), FILE_ATTRIBUTE_NORMAL);
      DeleteFileW((place / "target/dir/ro").CStr());
      RemoveDirectoryW((place / "target/dir").CStr());
      FaultPlan plan;
      plan.path = CallsOnTheTrees(place);
      uint64_t calls = 0;
      bool isTurned = false;
      plan.before = [&](std::string_view, std::string_view) {
        if (++calls == n) isTurned = MakeJunction(place / folder, place / "outside");
      };
      machine::SetFaults(plan);
      tree.Copy();
      machine::ClearFaults();
      EXPECT_EQ(place.List("outside"), outside) << when;
      for (const std::string& name : outside) {
        if (name != "deep") {
          EXPECT_EQ(place.Read("outside/" + name), "outside") << when;
        }
      }
      for (const std::string& path : place.List("target")) {
        if (path.starts_with("empty/")) ADD_FAILURE() << path << ", " << when;
      }
      if (isTurned && std::string(folder) != "source/empty" && tree.run.context->failures == 0) {
        EXPECT_TRUE(tree.IsComplete()) << when;
      }
      if (calls < n) break;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Ways, CopyFaults, testing::Values(Way::kFiltered, Way::kUpdate, Way::kFast));
INSTANTIATE_TEST_SUITE_P(Ways, CopyExchanges, testing::Values(Way::kFiltered, Way::kFast));

}  // namespace
