// What needs links, depths and rights that Wine doesn't have.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "foundation/unique_handle.h"
#include "machine/faults.h"
#include "operations/copy_engine.h"
#include "support/copy_run.h"
#include "support/host_path.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

// A link planted in the source leads nowhere, isn't counted as an item, and its number is known at the end.
TEST(CopyEngineLinks, AreLeftOutOfTheSource) {
  for (bool fast : {false, true}) {
    CopyRun run;
    run.place.File("outside/secret");
    run.place.File("source/dir/file");
    run.place.Link("source/link", "outside");
    run.place.Link("source/dir/up", "source");
    std::filesystem::create_symlink("file", HostPath(run.place / "source/dir/alias"));
    std::filesystem::create_symlink("nothing", HostPath(run.place / "source/broken"));
    EXPECT_TRUE(run.Run(fast));
    EXPECT_THAT(run.place.List("target"), ElementsAre("dir", "dir/file"));
    EXPECT_EQ(run.context->linksSkipped, 4);
    EXPECT_EQ(run.context->itemsTotal, 1 + 2);
    EXPECT_THAT(run.Log(), IsEmpty());
  }
}

// A link planted at the target is never written through: for a folder it is refused, a file takes its
// place.
TEST(CopyEngineLinks, AreNotWrittenThroughAtTheTarget) {
  for (bool fast : {false, true}) {
    CopyRun run;
    run.place.File("outside/kept", "kept");
    run.place.File("source/dir/file", "new");
    run.place.File("source/name", "new");
    run.place.Folder("target");
    run.place.Link("target/dir", "outside");
    std::filesystem::create_symlink(HostPath(run.place / "outside/kept"),
                                    HostPath(run.place / "target/name"));
    EXPECT_FALSE(run.Run(fast));
    EXPECT_THAT(run.place.List("outside"), ElementsAre("kept"));
    EXPECT_EQ(run.place.Read("outside/kept"), "kept");
    EXPECT_EQ(run.place.Read("target/name"), "new");
    EXPECT_FALSE(std::filesystem::is_symlink(HostPath(run.place / "target/name")));
    EXPECT_THAT(run.Log(), ElementsAre("Error! Could not create destination directory: ~\\target\\dir"));
    EXPECT_EQ(run.context->errors, 1);
  }
}

// A link at the temporary name would lead the bytes of the next file out of the target.
TEST(CopyEngineLinks, AtATemporaryNameArePassedBy) {
  for (bool fast : {false, true}) {
    CopyRun run;
    run.place.File("outside/kept", "kept");
    run.place.File("source/file", "new");
    run.place.Folder("target");
    std::filesystem::create_symlink(HostPath(run.place / "outside/kept"),
                                    HostPath(run.place / "target/~{5B1F0C8E-6D0A-4E57-9C43-2A7E1D9F6B34}.1"));
    EXPECT_TRUE(run.Run(fast));
    EXPECT_EQ(run.place.Read("outside/kept"), "kept");
    EXPECT_EQ(run.place.Read("target/file"), "new");
  }
}

// People move their folders to another disk by a link; both ends of a phase are taken as they are.
TEST(CopyEngineLinks, AreFollowedAtTheRootsOfAPhase) {
  CopyRun run;
  run.place.File("real source/file", "bytes");
  run.place.Folder("real target");
  run.place.Link("source", "real source");
  run.place.Link("target", "real target");
  EXPECT_TRUE(run.Run());
  EXPECT_EQ(run.place.Read("real target/file"), "bytes");
  EXPECT_EQ(run.context->linksSkipped, 0);
}

// Gives a file or folder a reparse tag of its own: by itself one that stands for no other place, as
// deduplication does.
void MarkAsReparsePoint(const WString& path, DWORD tag = 0x80000013) {
  struct {
    DWORD tag;
    WORD length = 4, reserved = 0;
    char data[4] = {1, 2, 3, 4};
  } point = {.tag = tag};
  UniqueFile handle(CreateFileW(path.CStr(), GENERIC_WRITE, 7, nullptr, OPEN_EXISTING,
                                FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  DWORD size = 0;
  ASSERT_TRUE(DeviceIoControl(handle.Get(), FSCTL_SET_REPARSE_POINT, &point, sizeof(point), nullptr, 0, &size,
                              nullptr))
      << GetLastError();
}

// Every profile of today has a dozen aliases of store applications, which nobody can open. As failures they
// would hide the real ones.
TEST(CopyEngineLinks, AreWhatNamesAnApplicationOrASocket) {
  for (bool fast : {false, true}) {
    CopyRun run;
    run.place.File("source/WindowsApps/plain", "bytes");
    MarkAsReparsePoint(run.place.File("source/WindowsApps/winget.exe", ""), 0x8000001b);
    MarkAsReparsePoint(run.place.File("source/WindowsApps/socket", ""), 0x80000023);
    EXPECT_TRUE(run.Run(fast));
    EXPECT_EQ(run.place.List("target"), (std::vector<std::string>{"WindowsApps", "WindowsApps/plain"}));
    EXPECT_EQ(run.context->linksSkipped, 2);
    EXPECT_EQ(run.context->failures, 0);
  }
}

// FAT refuses attributes and all times together where one of the times lies before 1980. The others must not
// be lost for it, and that one was must be told.
TEST(CopyEngine, KeepsWhatTheDiskCanHoldOfAttributesAndTimes) {
  CopyRun run;
  const WString source = run.place.File("source/file", "bytes");
  SetWriteTime(source.CStr(), kSomeTime);
  SetAttributes(source.CStr(), FILE_ATTRIBUTE_HIDDEN);
  machine::FaultPlan plan;
  plan.call = "SetFileInformationByHandle";
  plan.nth = 1;
  plan.error = ERROR_INVALID_PARAMETER;
  machine::SetFaults(plan);
  run.Run();
  machine::ClearFaults();
  EXPECT_EQ(Facts(run.place / "target/file").written, kSomeTime);
  EXPECT_EQ(Facts(run.place / "target/file").attributes, DWORD{FILE_ATTRIBUTE_HIDDEN});
  EXPECT_EQ(run.context->failures, 1);
}

// On a deduplicated disk or in a cloud folder nearly every file is a reparse point; a backup without them
// would be an empty one.
TEST(CopyEngineLinks, AreNotWhatOtherReparsePointsAre) {
  for (bool fast : {false, true}) {
    CopyRun run;
    run.place.File("source/dir/file", "bytes");
    MarkAsReparsePoint(run.place / "source/dir/file");
    MarkAsReparsePoint(run.place / "source/dir");
    EXPECT_TRUE(run.Run(fast));
    EXPECT_EQ(run.place.Read("target/dir/file"), "bytes");
    EXPECT_EQ(run.context->linksSkipped, 0);
    EXPECT_EQ(run.context->itemsTotal, 1 + 2);
    EXPECT_FALSE(Attributes((run.place / "target/dir/file").CStr()) & FILE_ATTRIBUTE_REPARSE_POINT);
  }
}

// Two names that the target takes for one: the second must not replace the first, vanish without a word,
// or, in a move, be neither here nor there.
TEST(CopyEngine, GivesOnePlaceToTheFirstOfTwoNamesThatDifferInCase) {
  const std::vector<std::string> names = {"file", "FILE", "Sub/f", "sub/f"};
  for (int kind = 0; kind < 24; ++kind) {
    const bool fast = kind & 1, moves = kind & 2, isThere = kind & 4;
    constexpr uint32_t kOptions[] = {0, kCopyOnlyMissing, kCopyOnlyNewer};
    CopyRun run;
    run.place.Folder("source/dir");
    const std::filesystem::path source = HostPath(run.place / "source/dir");
    for (const std::string& name : names) {
      std::filesystem::create_directories((source / name).parent_path());
      std::ofstream(source / name) << name;
    }
    if (isThere) run.place.File("target/dir/sub/old");
    run.context->copyOptions = kOptions[kind / 8];
    run.context->moveFiles = moves;
    run.Run(fast);
    const std::string when = "kind " + std::to_string(kind);
    EXPECT_EQ(run.context->filesCopied, 2) << when;
    EXPECT_EQ(run.context->failures, 2) << when << testing::PrintToString(run.Log());
    const std::string there = run.place.Read("target/dir/file") + run.place.Read("target/dir/sub/f");
    for (const std::string& name : names) {
      const bool isAtTarget = there.find(name) != there.npos;
      EXPECT_NE(std::filesystem::exists(source / name), moves && isAtTarget) << name << ", " << when;
    }
  }
}

// A name in another case than at the target is the same file, and no clash.
TEST(CopyEngine, ReplacesAFileOfAnotherCase) {
  CopyRun run;
  run.place.File("source/README.TXT", "new");
  run.place.File("source/other~1", "new");
  run.place.File("target/readme.txt", "old");
  run.place.File("target/OTHER~1", "old");
  EXPECT_TRUE(run.Run());
  EXPECT_EQ(run.place.Read("target/readme.txt"), "new");
  EXPECT_EQ(run.place.Read("target/other~1"), "new");
  EXPECT_EQ(run.context->failures, 0);
}

void* RunOnThread(void* run) {
  static_cast<CopyRun*>(run)->Run();
  return nullptr;
}

void RunWithSmallStack(CopyRun& run) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 512 * 1024);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, RunOnThread, &run), 0);
  pthread_join(thread, nullptr);
}

// Folders in each other, below the calls' limits of length, straight on the disk.
int MakeDeepFolder(int directory, const std::string& name, int levels) {
  for (int i = 0; i < levels; i++) {
    mkdirat(directory, name.c_str(), 0777);
    int next = openat(directory, name.c_str(), O_RDONLY | O_DIRECTORY);
    close(directory);
    directory = next;
  }
  return directory;
}

int OpenFolder(const WString& path) { return open(HostPath(path).c_str(), O_RDONLY | O_DIRECTORY); }

// Trees as deep as people make them by accident must not take the thread's stack.
TEST(CopyEngine, CopiesDeepTreesOnASmallStack) {
  CopyRun run;
  constexpr int kLevels = 2000;
  int deepest = MakeDeepFolder(OpenFolder(run.place.Folder("source")), "d", kLevels);
  close(openat(deepest, "file", O_CREAT | O_WRONLY, 0666));
  close(deepest);
  RunWithSmallStack(run);
  EXPECT_EQ(run.context->failures, 0) << testing::PrintToString(run.Log());
  EXPECT_EQ(run.context->itemsDone, kLevels + 1);
  EXPECT_EQ(run.context->filesCopied, 1);
}

// Longer than any call takes: told once, with the way to it, and all else is copied.
TEST(CopyEngine, TellsOfPathsThatAreTooLong) {
  CopyRun run;
  run.place.File("source/other");
  int deepest = MakeDeepFolder(OpenFolder(run.place / "source"), std::string(250, 'd'), 135);
  close(deepest);
  RunWithSmallStack(run);
  EXPECT_EQ(run.context->failures, 1);
  EXPECT_THAT(run.Log(), ElementsAre(StartsWith("Error! Could not ")));
  EXPECT_TRUE(run.place.Exists("target/other"));
}

// The same where only the target's path is too long: it is a folder that couldn't be made.
TEST(CopyEngine, CountsFoldersWhoseTargetPathIsTooLong) {
  CopyRun run;
  run.place.File("source/other");
  close(MakeDeepFolder(OpenFolder(run.place / "source"), std::string(250, 'd'), 129));
  std::string longer(401, 't');
  longer[200] = '/';
  EXPECT_FALSE(RunCopyPhase((run.place / "source").CStr(), (run.place / longer).CStr(), *run.context, false));
  EXPECT_EQ(run.context->failures, 1);
  EXPECT_EQ(run.context->errors, 1);
  EXPECT_THAT(run.Log(), ElementsAre(StartsWith("Error! Could not create destination directory: ")));
  EXPECT_TRUE(run.place.Exists(longer + "/other"));
}

}  // namespace
