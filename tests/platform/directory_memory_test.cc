// What is remembered of directories: no reading for each new file, and nothing true that isn't.
#include <gtest/gtest.h>
#include <windows.h>

#include <chrono>
#include <thread>

#include "machine/directory_memory.h"
#include "machine/name_hashes.h"
#include "machine/names.h"
#include "platform/disk_side.h"

namespace {

bool IsThere(const WString& path) { return GetFileAttributesW(path.CStr()) != INVALID_FILE_ATTRIBUTES; }

void PassAMoment() { std::this_thread::sleep_for(std::chrono::milliseconds(15)); }

// The way of the copy engine, a temporary file and a rename for each: reading the directory each time
// would cost the square of the number of files.
TEST(DirectoryMemory, NewFilesReadTheDirectoryOnce) {
  for (bool isHeld : {true, false}) {
    TestPlace place;
    UniqueFile held = isHeld ? HoldDirectory(place.Path()) : UniqueFile();
    const uint64_t before = machine::DirectoryReadings();
    for (int i = 0; i < 500; ++i) {
      const WString target = place / ("File" + std::to_string(i)), temporary = place / "temporary";
      ASSERT_FALSE(IsThere(target));
      ASSERT_EQ(OpenError(temporary, CREATE_NEW), 0u);
      ASSERT_TRUE(MoveFileExW(temporary.CStr(), target.CStr(), 0));
    }
    EXPECT_LE(machine::DirectoryReadings() - before, 3u) << isHeld;
    for (int i = 0; i < 500; ++i) EXPECT_TRUE(IsThere(place / ("FILE" + std::to_string(i))));
    EXPECT_TRUE(DeleteFileW((place / "FILE7").CStr()));
    EXPECT_FALSE(IsThere(place / "file7"));
    EXPECT_FALSE(IsThere(place / "TEMPORARY"));
  }
}

// Another program works in the same folder.
TEST(DirectoryMemory, ForeignChangesAreSeen) {
  TestPlace place;
  UniqueFile held = HoldDirectory(place.Path());
  const std::string folder = OnDisk(place.Path());
  EXPECT_FALSE(IsThere(place / "a.txt"));
  MakeOnDisk(folder + "/a.txt");
  EXPECT_TRUE(IsThere(place / "a.txt"));  // the exact name, at once
  PassAMoment();
  EXPECT_TRUE(IsThere(place / "A.TXT"));
  unlink((folder + "/a.txt").c_str());
  EXPECT_FALSE(IsThere(place / "a.txt"));
  PassAMoment();
  EXPECT_FALSE(IsThere(place / "A.TXT"));
  place.File("own.txt");
  PassAMoment();
  MakeOnDisk(folder + "/Foreign.txt");
  PassAMoment();
  EXPECT_EQ(OpenError(place / "FOREIGN.TXT", CREATE_NEW), DWORD{ERROR_FILE_EXISTS});
}

// A change right in front of one of ours hides behind it, but not for long.
TEST(DirectoryMemory, WhatHidBehindAChangeOfOursComesToLight) {
  TestPlace place;
  UniqueFile held = HoldDirectory(place.Path());
  EXPECT_FALSE(IsThere(place / "x"));
  MakeOnDisk(OnDisk(place.Path()) + "/Hidden.txt");
  place.File("own.txt");
  std::this_thread::sleep_for(std::chrono::milliseconds(1100));
  EXPECT_TRUE(IsThere(place / "HIDDEN.TXT"));
}

TEST(DirectoryMemory, ANameHasOneHashHoweverItIsSpelled) {
  for (const char* name : {"Plain.txt", "Grüße", "a:b", "bad\xff", "lone\xed\xa0\x80", "x\x7f"}) {
    EXPECT_EQ(machine::NameHashes::HashOfDiskName(name),
              machine::NameHashes::HashOf(machine::WindowsName(name)));
    EXPECT_EQ(machine::NameHashes::HashOf(machine::Fold(machine::WindowsName(name))),
              machine::NameHashes::HashOfDiskName(name));
  }
}

}  // namespace
