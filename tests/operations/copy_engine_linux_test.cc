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
#include "machine/machine.h"
#include "operations/copy_engine.h"
#include "support/copy_run.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

std::filesystem::path OnDisk(const WString& path) {
  std::string relative = Utf8(path).substr(3);
  for (char& unit : relative) unit = unit == '\\' ? '/' : unit;
  return std::filesystem::path(machine::ThisMachine().DriveFolder('C')) / relative;
}

// A link planted in the source leads nowhere, isn't counted as an item, and its number is known at the end.
TEST(CopyEngineLinks, AreLeftOutOfTheSource) {
  for (bool fast : {false, true}) {
    CopyRun run;
    run.place.File("outside/secret");
    run.place.File("source/dir/file");
    run.place.Link("source/link", "outside");
    run.place.Link("source/dir/up", "source");
    std::filesystem::create_symlink("file", OnDisk(run.place / "source/dir/alias"));
    std::filesystem::create_symlink("nothing", OnDisk(run.place / "source/broken"));
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
    std::filesystem::create_symlink(OnDisk(run.place / "outside/kept"), OnDisk(run.place / "target/name"));
    EXPECT_FALSE(run.Run(fast));
    EXPECT_THAT(run.place.List("outside"), ElementsAre("kept"));
    EXPECT_EQ(run.place.Read("outside/kept"), "kept");
    EXPECT_EQ(run.place.Read("target/name"), "new");
    EXPECT_FALSE(std::filesystem::is_symlink(OnDisk(run.place / "target/name")));
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
    std::filesystem::create_symlink(OnDisk(run.place / "outside/kept"),
                                    OnDisk(run.place / "target/~{5B1F0C8E-6D0A-4E57-9C43-2A7E1D9F6B34}.1"));
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

// Gives a file or folder a reparse tag that stands for no other place, as deduplication does.
void MarkDeduplicated(const WString& path) {
  struct {
    DWORD tag = 0x80000013;
    WORD length = 4, reserved = 0;
    char data[4] = {1, 2, 3, 4};
  } point;
  UniqueFile handle(CreateFileW(path.CStr(), GENERIC_WRITE, 7, nullptr, OPEN_EXISTING,
                                FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  DWORD size = 0;
  ASSERT_TRUE(DeviceIoControl(handle.Get(), FSCTL_SET_REPARSE_POINT, &point, sizeof(point), nullptr, 0, &size,
                              nullptr))
      << GetLastError();
}

// On a deduplicated disk or in a cloud folder nearly every file is a reparse point; a backup without them
// would be an empty one.
TEST(CopyEngineLinks, AreNotWhatOtherReparsePointsAre) {
  for (bool fast : {false, true}) {
    CopyRun run;
    run.place.File("source/dir/file", "bytes");
    MarkDeduplicated(run.place / "source/dir/file");
    MarkDeduplicated(run.place / "source/dir");
    EXPECT_TRUE(run.Run(fast));
    EXPECT_EQ(run.place.Read("target/dir/file"), "bytes");
    EXPECT_EQ(run.context->linksSkipped, 0);
    EXPECT_EQ(run.context->itemsTotal, 1 + 2);
    EXPECT_FALSE(Attributes((run.place / "target/dir/file").CStr()) & FILE_ATTRIBUTE_REPARSE_POINT);
  }
}

// A disk that tells names apart by their case holds two files for one place. Nobody looks into a folder that
// was just made, and all the same neither may the second one replace the first, nor a move lose it.
TEST(CopyEngine, GivesOnePlaceToTheFirstOfTwoNamesThatDifferInCase) {
  for (bool moves : {false, true}) {
    CopyRun run;
    run.place.Folder("source/dir");
    for (const char* name : {"file", "FILE"}) {
      std::ofstream(OnDisk(run.place / "source/dir") / name) << name;
    }
    run.context->copyOptions = kCopyOnlyMissing;
    run.context->moveFiles = moves;
    EXPECT_TRUE(run.Run());
    EXPECT_THAT(run.place.List("target"), SizeIs(2));  // the folder and one file
    EXPECT_EQ(run.context->filesCopied, 1);
    EXPECT_EQ(run.context->failures, 0);
    const std::string first = run.place.Read("target/dir/file");
    const bool isFirstThere = std::filesystem::exists(OnDisk(run.place / "source/dir") / first);
    EXPECT_EQ(isFirstThere, !moves);
    EXPECT_TRUE(
        std::filesystem::exists(OnDisk(run.place / "source/dir") / (first == "file" ? "FILE" : "file")));
  }
}

// A folder that its reader may not list is told, and not taken for an empty one.
TEST(CopyEngine, TellsOfFoldersThatItCannotRead) {
  CopyRun run;
  run.place.File("source/closed/file");
  run.place.File("source/open");
  UniqueFile holder(CreateFileW((run.place / "source/closed").CStr(), FILE_LIST_DIRECTORY, 0, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  EXPECT_TRUE(run.Run());
  EXPECT_THAT(run.Log(), ElementsAre("Error! Could not read source directory: ~\\source\\closed"));
  EXPECT_TRUE(run.place.Exists("target/open"));
  EXPECT_EQ(run.context->errors, 0);
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

int OpenFolder(const WString& path) { return open(OnDisk(path).c_str(), O_RDONLY | O_DIRECTORY); }

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

}  // namespace
