#include "foundation/directory_enumerator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/file_queries.h"
#include "foundation/unique_handle.h"
#include "support/test_place.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

std::vector<std::string> Walk(const WString& pattern, uint32_t filter) {
  std::vector<std::string> names;
  DirectoryEnumerator walk;
  for (bool more = walk.First(pattern.CStr(), filter); more; more = walk.Next()) {
    names.push_back(Utf8(walk.data.cFileName));
  }
  EXPECT_TRUE(ListingEnded()) << GetLastError();
  EXPECT_EQ(walk.handle, INVALID_HANDLE_VALUE);
  return names;
}

TEST(DirectoryEnumerator, FiltersLeaveOutWhatTheyName) {
  TestPlace place;
  place.File("a.txt");
  place.File("folder/inner.txt");
  place.File(".hidden");
  place.File("...x");
  EXPECT_THAT(Walk(place / "*", 0), UnorderedElementsAre("a.txt", "folder", ".hidden", "...x"));
  EXPECT_THAT(Walk(place / "*", kSkipDirectories), UnorderedElementsAre("a.txt", ".hidden", "...x"));
  EXPECT_THAT(Walk(place / "*", kOnlyDirectories), ElementsAre("folder"));
  EXPECT_THAT(Walk(place / "*", kSkipDirectories | kOnlyDirectories),
              UnorderedElementsAre("a.txt", ".hidden", "...x"));
  EXPECT_THAT(Walk(place / "*.TXT", 0), ElementsAre("a.txt"));
  EXPECT_THAT(Walk(place / "folder", 0), ElementsAre("folder"));
}

// The engine logs a listing that broke off, and must not do so for an empty folder.
TEST(DirectoryEnumerator, TellsAnEmptyListingFromAFailedOne) {
  TestPlace place;
  place.Folder("empty");
  place.File("file");
  EXPECT_THAT(Walk(place / "empty/*", 0), IsEmpty());
  EXPECT_THAT(Walk(place / "*.none", 0), IsEmpty());
  DirectoryEnumerator walk;
  EXPECT_FALSE(walk.First((place / "missing/*").CStr(), 0));
  EXPECT_FALSE(ListingEnded());
  EXPECT_EQ(GetLastError(), DWORD{ERROR_PATH_NOT_FOUND});
  EXPECT_FALSE(walk.Next());
  EXPECT_FALSE(ListingEnded());
}

// Cloud files are reparse points and hold data that must not be left out.
TEST(DirectoryEnumerator, OnlyWhatStandsForAnotherPlaceIsALink) {
  constexpr DWORD kReparse = FILE_ATTRIBUTE_REPARSE_POINT;
  EXPECT_TRUE(IsLink(kReparse, 0));                                        // withheld
  EXPECT_FALSE(IsLink(kReparse, 0x9000001a));                              // in the cloud
  EXPECT_FALSE(IsLink(FILE_ATTRIBUTE_DIRECTORY, IO_REPARSE_TAG_SYMLINK));  // the tag's field is unused
}

TEST(FileQueries, SizeIsTold) {
  TestPlace place;
  const WString path = place.File("a.bin", std::string(70000, 'x'));
  EXPECT_EQ(GetFileSize64(path.CStr()), 70000u);
  EXPECT_EQ(GetFileSize64((place / "missing").CStr()), 0u);
  // Nobody else may open it now; its folder still knows its size.
  const UniqueFile open(CreateFileW(path.CStr(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(open);
  EXPECT_EQ(GetFileSize64(path.CStr()), 70000u);
}

TEST(FileQueries, PatternBecomesTheNameFound) {
  TestPlace place;
  place.File("set/BackupInfo.nvsav");
  wchar_t buffer[kFoundNameCapacity] = {};
  const auto resolve = [&](const WString& path) {
    CopyMemory(buffer, path.CStr(), (static_cast<size_t>(path.Length()) + 1) * sizeof(wchar_t));
    return ResolveFoundName(buffer);
  };
  EXPECT_TRUE(resolve(place / "set/*.nvsav"));
  EXPECT_EQ(WString(buffer), place / "set/BackupInfo.nvsav");
  EXPECT_TRUE(resolve(place / "SET"));  // the spelling of the disk
  EXPECT_EQ(WString(buffer), place / "set");
  EXPECT_FALSE(resolve(place / "set/*.grxsv"));
  EXPECT_EQ(WString(buffer), place / "set/*.grxsv");
}

}  // namespace
