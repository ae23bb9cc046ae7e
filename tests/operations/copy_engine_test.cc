#include "operations/copy_engine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/unique_handle.h"
#include "operations/temporary_file.h"
#include "support/copy_run.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// Texts must come out whole, also those of names and depths that the calls don't take without a prefix.
TEST(CopyEngine, CopiesTreesWithHostileNames) {
  CopyRun run;
  std::string deep = "source";
  for (int i = 0; i < 12; i++) deep += "/" + std::string(30, static_cast<char>('a' + i));
  const std::vector<std::string> files = {
      "source/plain.txt",
      "source/Größe Ωмега 日本語.txt",
      "source/emoji \xF0\x9F\x98\x80",
      "source/.hidden",
      "source/a=b;[c].ini",
      "source/" + std::string(250, 'n') + ".txt",
      "source/no extension",
      "source/two..dots",
      deep + "/far down.txt",
  };
  for (const std::string& file : files) run.place.File(file, "bytes of " + file);
  for (bool fast : {false, true}) {
    run.NewRecord();
    WString target = run.place / (fast ? "fast" : "filtered");
    EXPECT_TRUE(RunCopyPhase((run.place / "source").CStr(), target.CStr(), *run.context, fast));
    EXPECT_EQ(run.place.List("source"), run.place.List(fast ? "fast" : "filtered"));
    for (const std::string& file : files) {
      EXPECT_EQ(run.place.Read((fast ? "fast" : "filtered") + file.substr(6)), "bytes of " + file);
    }
    EXPECT_EQ(run.context->filesCopied, static_cast<int64_t>(files.size()));
    EXPECT_EQ(run.context->failures, 0);
  }
  EXPECT_THAT(run.Log(), IsEmpty());
}

// A copy that loses attributes or times makes every later update copy it again, or show hidden files.
TEST(CopyEngine, KeepsBytesAttributesAndTimes) {
  CopyRun run;
  const std::vector<std::pair<std::string, uint32_t>> files = {
      {"plain", FILE_ATTRIBUTE_NORMAL},
      {"archive", FILE_ATTRIBUTE_ARCHIVE},
      {"hidden", FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE},
      {"read-only system", FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_SYSTEM},
  };
  for (const auto& [name, attributes] : files) {
    WString path = run.place.File("source/" + name, name == "plain" ? "" : "some bytes");
    SetWriteTime(path.CStr(), kSomeTime + 12345670);
    SetAttributes(path.CStr(), attributes);
  }
  EXPECT_TRUE(run.Run());
  for (const auto& [name, attributes] : files) {
    FileFacts source = Facts(run.place / ("source/" + name));
    FileFacts target = Facts(run.place / ("target/" + name));
    EXPECT_EQ(target.bytes, source.bytes) << name;
    EXPECT_EQ(target.attributes, source.attributes) << name;
    EXPECT_EQ(target.created, source.created) << name;
    EXPECT_EQ(target.written, source.written) << name;
  }
}

// What is left out by its attributes is counted beforehand and never done, and a hidden folder is no
// hidden file.
TEST(CopyEngine, LeavesOutFilesByTheirAttributes) {
  CopyRun run;
  for (const char* name : {"n", "h", "f/h"}) run.place.File(std::string("source/") + name);
  for (const char* name : {"h", "f/h", "f"}) {
    SetAttributes((run.place / (std::string("source/") + name)).CStr(), FILE_ATTRIBUTE_HIDDEN);
  }
  run.context->attributeMask = FILE_ATTRIBUTE_HIDDEN;
  EXPECT_TRUE(run.Run());
  EXPECT_THAT(run.place.List("target"), ElementsAre("f", "n"));
  EXPECT_EQ(run.context->bytesTotal, 1 + 3);
  EXPECT_EQ(run.context->bytesDone, 1);
}

struct UpdateCase {
  const char* what;
  uint32_t options;
  int64_t targetAge;        // of the target against the source, in days; above 0 is newer
  const char* targetBytes;  // null: no target
  bool isCopied;
  bool isCounted;  // its bytes count as done
};

// The table of the update test: one wrong row loses changed files, or copies everything every time.
TEST(CopyEngine, DecidesByWhatIsAtTheTarget) {
  const UpdateCase cases[] = {
      {"no option, same", 0, 0, "same", true, true},
      {"newer only, missing", kCopyOnlyNewer, 0, nullptr, true, true},
      {"newer only, same age and size", kCopyOnlyNewer, 0, "same", false, true},
      {"newer only, target newer", kCopyOnlyNewer, 1, "same", false, true},
      {"newer only, target older", kCopyOnlyNewer, -1, "same", true, true},
      {"newer only, target newer, other size", kCopyOnlyNewer, 1, "other", true, true},
      {"newer only, same age, other size", kCopyOnlyNewer, 0, "other", true, true},
      {"missing only, missing", kCopyOnlyMissing, 0, nullptr, true, true},
      {"missing only, target older", kCopyOnlyMissing, -1, "other", false, false},
      {"both, target older", kCopyOnlyNewer | kCopyOnlyMissing, -1, "other", false, false},
  };
  for (bool moves : {false, true}) {
    for (const UpdateCase& given : cases) {
      CopyRun run;
      SetWriteTime(run.place.File("source/file", "data").CStr(), kSomeTime);
      if (given.targetBytes) {
        WString target = run.place.File("target/file", given.targetBytes);
        SetWriteTime(target.CStr(), kSomeTime + given.targetAge * kDay);
      }
      run.context->copyOptions = given.options;
      run.context->moveFiles = moves;
      EXPECT_TRUE(run.Run());
      EXPECT_EQ(run.place.Read("target/file"), given.isCopied ? "data" : given.targetBytes) << given.what;
      EXPECT_EQ(run.context->bytesDone, given.isCounted ? 4 : 0) << given.what;
      EXPECT_EQ(run.place.Exists("source/file"), !(moves && given.isCopied)) << given.what;
      EXPECT_EQ(run.context->failures, 0) << given.what;
    }
  }
}

// A folder of the same name is no current file; the update test alone would take its time for one.
TEST(CopyEngine, TakesNoFolderForACurrentFile) {
  CopyRun run;
  SetWriteTime(run.place.File("source/thing", "").CStr(), kSomeTime);
  run.place.File("target/thing/kept", "old");
  run.context->copyOptions = kCopyOnlyNewer;
  EXPECT_TRUE(run.Run());
  EXPECT_THAT(run.Log(), ElementsAre("Error! Could not open destination file: ~\\target\\thing"));
  EXPECT_EQ(run.place.Read("target/thing/kept"), "old");
  EXPECT_EQ(run.context->errors, 0);
  EXPECT_EQ(run.context->failures, 1);
}

// A file that another program holds is told, and costs only itself.
TEST(CopyEngine, GoesOnAfterFilesThatAreInUse) {
  CopyRun run;
  for (const char* name : {"source/a", "source/b", "source/c", "target/c"}) run.place.File(name, name);
  UniqueFile source(
      CreateFileW((run.place / "source/b").CStr(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  UniqueFile target(CreateFileW((run.place / "target/c").CStr(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                OPEN_EXISTING, 0, nullptr));
  EXPECT_TRUE(run.Run());
  EXPECT_THAT(run.Log(), UnorderedElementsAre("Error! Could not open source file: ~\\source\\b",
                                              "Error! Could not open destination file: ~\\target\\c"));
  EXPECT_THAT(run.reasons, Contains(ERROR_SHARING_VIOLATION));
  EXPECT_THAT(run.place.List("target"), ElementsAre("a", "c"));
  EXPECT_EQ(run.place.Read("target/c"), "target/c");
  EXPECT_EQ(run.context->errors, 0);
  EXPECT_EQ(run.context->failures, 2);
}

// Moving must leave the folders, and must not lose a file that can't be moved.
TEST(CopyEngine, MovesFilesAndLeavesFolders) {
  for (bool fast : {false, true}) {
    CopyRun run;
    run.place.File("source/dir/a", "new");
    run.place.File("source/b", "b");
    run.place.File("target/dir/a", "old");
    run.place.Folder("target/b");
    run.context->moveFiles = true;
    EXPECT_TRUE(run.Run(fast));
    EXPECT_THAT(run.place.List("source"), ElementsAre("b", "dir"));
    EXPECT_EQ(run.place.Read("target/dir/a"), "new");
    EXPECT_THAT(run.Log(), ElementsAre("Error! Could not move file: ~\\source\\b"));
    EXPECT_EQ(run.context->errors, 0);
    EXPECT_EQ(run.context->failures, 1);
  }
}

// The fast copy must not carry what only its own machine can use, and nothing else must be missing.
TEST(CopyEngine, FastCopyLeavesOutFoldersByNameAndDepth) {
  CopyRun run;
  for (const char* file :
       {"Packages/x", "packages2/x", "PACKAGE CACHE/x", "comms/x", "Windows/x", "Microsoft/windows/x",
        "Microsoft/Packages/x", "Microsoft/Office/Windows/x", "Microsoft/y"}) {
    run.place.File(std::string("source/") + file);
  }
  run.context->attributeMask = FILE_ATTRIBUTE_HIDDEN;
  run.context->copyOptions = kCopyOnlyMissing;
  SetAttributes((run.place / "source/Microsoft/y").CStr(), FILE_ATTRIBUTE_HIDDEN);
  EXPECT_TRUE(run.Run(true));
  EXPECT_THAT(run.place.Files("target"),
              UnorderedElementsAre("packages2/x", "Windows/x", "Microsoft/Packages/x",
                                   "Microsoft/Office/Windows/x", "Microsoft/y"));
  EXPECT_EQ(run.context->itemsTotal, 1 + 9 + 10);
  EXPECT_LT(run.context->progress, 1000);
}

// A name that a stopped run has left must neither stay, nor be carried on, nor keep files out.
TEST(CopyEngine, RemovesLeftoversOfARunThatWasCutOff) {
  const std::string leftover = "~{5B1F0C8E-6D0A-4E57-9C43-2A7E1D9F6B34}.";
  ASSERT_TRUE(IsTemporaryName(Wide(leftover + "1").CStr()));
  for (bool fast : {false, true}) {
    CopyRun run;
    run.place.File("source/file", "new");
    run.place.File("source/" + leftover + "1", "torn");
    SetAttributes(run.place.File("target/" + leftover + "1", "torn").CStr(), FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(run.Run(fast));
    EXPECT_THAT(run.place.List("target"), ElementsAre("file"));
    EXPECT_EQ(run.context->itemsTotal, 1 + 1);
    // The next run may have nothing to write.
    run.place.File("target/" + leftover + "2", "torn");
    run.context->copyOptions = kCopyOnlyMissing;
    // An old file that had stepped aside when the run was ended: one of them without a new one in its place.
    run.place.File("target/" + leftover + "old.file", "old");
    run.place.File("target/" + leftover + "old.lone", "old");
    EXPECT_TRUE(run.Run(fast));
    EXPECT_THAT(run.place.List("target"), ElementsAre("file", "lone"));
    EXPECT_EQ(run.place.Read("target/file"), "new");
  }
}

// Names that something else holds are passed by; with all three taken, the file fails and says so.
TEST(CopyEngine, TakesAnotherTemporaryNameWhereOneResists) {
  const std::string leftover = "target/~{5B1F0C8E-6D0A-4E57-9C43-2A7E1D9F6B34}.";
  CopyRun run;
  run.place.File("source/file", "new");
  run.place.Folder(leftover + "1");
  WString used = run.place.File(leftover + "2", "of another run");
  UniqueFile holder(CreateFileW(used.CStr(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  EXPECT_TRUE(run.Run());
  EXPECT_EQ(run.place.Read("target/file"), "new");
  run.place.Folder(leftover + "3");
  run.place.File("source/file", "newer");
  EXPECT_TRUE(run.Run());
  EXPECT_THAT(run.Log(), ElementsAre("Error! Could not open destination file: ~\\target\\file"));
  EXPECT_EQ(run.place.Read("target/file"), "new");
}

// A phase that can't begin must not claim a tree, and only what somebody should look at is told.
TEST(CopyEngine, TellsWhyAPhaseDidNotBegin) {
  CopyRun run;
  EXPECT_FALSE(run.Run());
  EXPECT_FALSE(run.place.Exists("target"));
  EXPECT_THAT(run.told, IsEmpty());

  run.place.File("source");
  EXPECT_FALSE(run.Run());
  EXPECT_THAT(run.Log(), ElementsAre("Error! Could not read source directory: ~\\source"));

  run.place.File("file");
  run.place.Folder("folder");
  WString target = run.place / "file/below";
  EXPECT_FALSE(RunCopyPhase((run.place / "folder").CStr(), target.CStr(), *run.context, false));
  EXPECT_THAT(run.Log(), Contains("Error! Could not create destination directory: ~\\file\\below"));
  EXPECT_EQ(run.context->errors, 0);
  EXPECT_EQ(run.context->failures, 2);
}

// Whoever draws the progress relies on this order, and on counters that begin anew.
TEST(CopyEngine, TellsPhasesAndCounts) {
  CopyRun run;
  UseSmallBlocks(*run.context);
  run.place.File("source/a", "12345");
  run.place.File("source/d/b", "678");
  EXPECT_TRUE(run.Run());
  EXPECT_THAT(run.told, ElementsAre("phase ~\\source > ~\\target", "3 items, 8 bytes"));
  EXPECT_EQ(run.context->itemsDone, 3);
  EXPECT_EQ(run.context->bytesDone, 8);
  EXPECT_EQ(run.context->bytesCopied, 8);
  EXPECT_EQ(run.context->progress, 3 * 500 / 4 + 8 * 500 / 9);
  EXPECT_TRUE(run.Run());
  EXPECT_EQ(run.context->itemsTotal, 4);
  EXPECT_EQ(run.context->filesCopied, 4);
}

// A run that was stopped before must not copy a single file.
TEST(CopyEngine, CopiesNothingOnceStopped) {
  for (bool fast : {false, true}) {
    CopyRun run;
    run.place.File("source/a");
    run.context->stop = 1;
    EXPECT_FALSE(run.Run(fast));
    EXPECT_THAT(run.place.List("target"), IsEmpty());
    EXPECT_THAT(run.Log(), IsEmpty());
  }
}

}  // namespace
