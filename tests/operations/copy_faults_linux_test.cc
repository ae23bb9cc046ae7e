// What the engine promises when the system lets it down: a call that fails, an end in the middle, a full
// disk, a stop, a folder that is exchanged under way. Each at every place where it can happen.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <functional>
#include <map>

#include "foundation/unique_handle.h"
#include "machine/faults.h"
#include "support/copy_run.h"
#include "support/host_path.h"

namespace {

using machine::FaultPlan;

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

  // For calls on the two trees, and not on the log: matches "source" and "target".
  FaultPlan Plan(uint64_t nth = 0, DWORD error = NO_ERROR) const {
    FaultPlan plan;
    plan.path = Utf8(run.place.Path()) + "\\*r*e*";
    plan.nth = nth;
    plan.error = error;
    return plan;
  }

  bool CopyWith(const FaultPlan& plan) {
    machine::SetFaults(plan);
    const bool isDone = Copy();
    machine::ClearFaults();
    return isDone;
  }

  // Copies, and something happens right before the n-th call. False if there are fewer calls.
  bool CopyWhile(uint64_t n, const std::function<void()>& happens) {
    FaultPlan plan = Plan();
    uint64_t calls = 0;
    plan.before = [&](std::string_view, std::string_view) {
      if (++calls == n) happens();
    };
    CopyWith(plan);
    return calls >= n;
  }

  // A target file is the old one or the new one, and nothing of a file in the making is left.
  void ExpectNothingTorn(const std::string& when) {
    for (const std::string& path : run.place.Files("target")) {
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

  // Each file is as at the source, or a failure was told of it.
  void ExpectCurrentOrTold(const std::string& when) {
    for (const auto& [path, bytes] : fresh) {
      EXPECT_TRUE(IsCurrent(path) || IsTold(path)) << path << ", " << when;
    }
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
  Way way_;
};

std::string Describe(Way way, uint64_t n, DWORD error) {
  const char* names[] = {"filtered", "update", "fast"};
  return std::string(names[static_cast<int>(way)]) + ", call " + std::to_string(n) + ", error " +
         std::to_string(error);
}

class CopyFaults : public testing::TestWithParam<Way> {
 protected:
  ~CopyFaults() override { machine::ClearFaults(); }
};

// Any call on source or target that fails, for every one: the run ends, what isn't there is told, logged
// and counted, and all else is there.
TEST_P(CopyFaults, EveryCallMayFail) {
  for (DWORD error : {ERROR_IO_DEVICE, ERROR_ACCESS_DENIED}) {
    for (uint64_t n = 1;; n++) {
      SmallTree tree(GetParam());
      std::string when = Describe(GetParam(), n, error);
      bool isDone = tree.CopyWith(tree.Plan(n, error));
      if (machine::FaultCalls() < n) break;
      tree.ExpectNothingTorn(when);
      int64_t told = 0;
      for (const std::string& line : tree.run.told) told += line.starts_with("failed ");
      EXPECT_EQ(tree.run.context->failures, told) << when;
      EXPECT_EQ(tree.run.Log().size(), static_cast<size_t>(told)) << when;
      tree.ExpectCurrentOrTold(when);
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
      FaultPlan plan = tree.Plan(1, error);
      plan.call = test.call;
      plan.andAllLater = test.andAllLater;
      EXPECT_TRUE(tree.CopyWith(plan)) << test.call << ", " << error;
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
  tree.CopyWith(plan);
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
      tree.CopyWith(plan);
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
    const bool isStopped = tree.CopyWhile(n, [&tree] { tree.run.context->stop = 1; });
    tree.ExpectNothingTorn(when);
    // The system's own copy says that it was cancelled, and that is logged as it stands.
    EXPECT_LE(tree.run.context->failures, GetParam() == Way::kFast ? 1 : 0) << when;
    EXPECT_EQ(tree.run.context->errors, 0) << when;
    if (!isStopped) break;
  }
}

// A disk that fills up at any byte: the last good copies stay, each file is told, the reason is known.
TEST_P(CopyFaults, TheDiskMayFillUpAtEveryByte) {
  for (int64_t room = 0; room <= 24; room++) {
    SmallTree tree(GetParam());
    std::string when = std::to_string(room) + " bytes left";
    FaultPlan plan;
    plan.bytesLeft = room;
    tree.CopyWith(plan);
    tree.ExpectNothingTorn(when);
    bool isComplete = tree.IsComplete();
    EXPECT_NE(isComplete, tree.run.context->targetFull) << when;
    EXPECT_NE(isComplete, tree.run.context->failures > 0) << when;
    tree.ExpectCurrentOrTold(when);
  }
}

// An update walks as the plain copy does.
class CopyExchanges : public CopyFaults {
 protected:
  // Somebody else's data beside a small tree, under names that are in the tree, too.
  class TreeWithNeighbour : public SmallTree {
   public:
    TreeWithNeighbour() : SmallTree(GetParam()) {
      for (const char* name : {"b", "c", "deep/c", "ro", "secret"}) {
        run.place.File(std::string("outside/") + name, "outside");
      }
    }

    void ExpectOutsideAsItWas(const std::string& when) {
      EXPECT_THAT(run.place.List("outside"), testing::ElementsAre("b", "c", "deep", "deep/c", "ro", "secret"))
          << when;
      for (const std::string& name : run.place.Files("outside")) {
        EXPECT_EQ(run.place.Read("outside/" + name), "outside") << name << ", " << when;
      }
    }
  };
};

// At any call somebody tries to put a link in a folder's place, by the system's own calls: nothing beyond
// it is read, written, or changed.
TEST_P(CopyExchanges, AFolderMayBeExchangedForALinkAtEveryCall) {
  for (const std::string side : {"source", "target"}) {
    bool isExchanged = true;
    for (uint64_t n = 1; isExchanged; n++) {
      TreeWithNeighbour tree;
      TestPlace& place = tree.run.place;
      const std::string when = side + ", " + Describe(GetParam(), n, 0);
      const WString folder = place / (side + "/dir"), moved = place / (side + "-moved");
      isExchanged = tree.CopyWhile(n, [&] {
        if (MoveFileExW(folder.CStr(), moved.CStr(), 0)) {
          std::filesystem::create_directory_symlink(HostPath(place / "outside"), HostPath(folder));
        }
      });
      tree.ExpectOutsideAsItWas(when);
      if (side == "target") continue;
      for (const char* name : {"target/dir/b", "target-moved/b"}) {
        if (!place.Exists(name)) continue;
        EXPECT_NE(place.Read(name), "outside") << name << ", " << when;
      }
      EXPECT_FALSE(place.Exists("target/dir/secret")) << when;
    }
  }
}

// Turns an empty folder into a junction where it stands.
bool MakeJunction(const WString& path, const WString& target) {
  const WString name = L"\\??\\" + target;
  const size_t size = static_cast<size_t>(name.Length()) * 2;
  std::vector<uint16_t> point(8 + size / 2 + 2);
  point[0] = 3;  // the tag, low word first
  point[1] = 0xa000;
  point[2] = static_cast<uint16_t>(point.size() * 2 - 8);
  point[5] = static_cast<uint16_t>(size);
  point[6] = static_cast<uint16_t>(size + 2);
  memcpy(&point[8], name.CStr(), size);
  UniqueFile handle(CreateFileW(path.CStr(), FILE_WRITE_ATTRIBUTES, 7, nullptr, OPEN_EXISTING,
                                FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  DWORD done = 0;
  return handle && DeviceIoControl(handle.Get(), FSCTL_SET_REPARSE_POINT, point.data(),
                                   static_cast<DWORD>(point.size() * 2), nullptr, 0, &done, nullptr);
}

// The one exchange that no hold prevents: an empty folder becomes a junction. Nothing comes from beyond
// it, and nothing stays there.
TEST_P(CopyExchanges, AnEmptyFolderMayBecomeAJunctionAtEveryCall) {
  for (const std::string folder : {"source/empty", "target/dir", "target/dir/deep"}) {
    bool isThere = true;
    for (uint64_t n = 1; isThere; n++) {
      TreeWithNeighbour tree;
      TestPlace& place = tree.run.place;
      const std::string when = folder + ", " + Describe(GetParam(), n, 0);
      place.Folder("source/empty");
      SetAttributes((place / "target/dir/ro").CStr(), FILE_ATTRIBUTE_NORMAL);
      DeleteFileW((place / "target/dir/ro").CStr());
      RemoveDirectoryW((place / "target/dir").CStr());
      bool isTurned = false;
      isThere = tree.CopyWhile(n, [&] { isTurned = MakeJunction(place / folder, place / "outside"); });
      tree.ExpectOutsideAsItWas(when);
      for (const std::string& path : place.List("target")) {
        if (path.starts_with("empty/")) ADD_FAILURE() << path << ", " << when;
      }
      if (isTurned && folder != "source/empty" && tree.run.context->failures == 0) {
        EXPECT_TRUE(tree.IsComplete()) << when;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Ways, CopyFaults, testing::Values(Way::kFiltered, Way::kUpdate, Way::kFast));
INSTANTIATE_TEST_SUITE_P(Ways, CopyExchanges, testing::Values(Way::kFiltered, Way::kFast));

}  // namespace
