#include "foundation/file_object.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/test_place.h"

namespace {

using namespace std::string_literals;

const wchar_t kText[] = L"a\u00c4\u20ac\U0001F600\r\n";
const std::string kUtf8 = "a\xc3\x84\xe2\x82\xac\xf0\x9f\x98\x80\r\n";
const std::string kUtf16LE = "a\0\xc4\0\xac\x20\x3d\xd8\0\xde\r\0\n\0"s;
const std::string kMark8 = "\xef\xbb\xbf", kMarkLE = "\xff\xfe", kMarkBE = "\xfe\xff";
const std::string kUtf16BE = "\0a\0\xc4\x20\xac\xd8\x3d\xde\0\0\r\0\n"s;

// The mark is written once, at the start of an empty file.
TEST(FileObject, WritesEachEncodingWithItsMark) {
  struct Case {
    uint32_t flags;
    const wchar_t* text;
    std::string mark, bytes;
  };
  const Case cases[] = {
      {kFileUtf16LE, kText, kMarkLE, kUtf16LE}, {kFileUtf16BE, kText, kMarkBE, kUtf16BE},
      {kFileUtf8Mark, kText, kMark8, kUtf8},    {kFileUtf8, kText, "", kUtf8},
      {0, L"plain=1\r\n", "", "plain=1\r\n"},
  };
  TestPlace place;
  const WString path = place / "text.txt";
  for (const Case& c : cases) {
    for (const bool isEmpty : {true, false}) {
      FileObject file(path.CStr(), kFileCreateAlways | c.flags);
      EXPECT_EQ(file.WriteText(isEmpty ? L"" : c.text), !isEmpty) << c.flags;
      file.Close();
      EXPECT_EQ(place.Read("text.txt"), isEmpty ? c.mark : c.mark + c.bytes) << c.flags;
    }
  }
  FileObject unmarked(path.CStr(), kFileCreateAlways | kFileRaw);
  unmarked.Close();
  EXPECT_EQ(place.Read("text.txt"), "");
}

// What the first bytes are decides, not what the caller expects of the file.
TEST(FileObject, FirstBytesDecideTheEncoding) {
  struct Case {
    std::string bytes;
    uint32_t flags, found;
    const wchar_t* text;
  };
  const Case cases[] = {
      {kUtf8, kFileUtf8, kFileUtf8, kText},
      {kMark8 + kUtf8, 0, kFileUtf8Mark, kText},
      {kMarkLE + kUtf16LE, kFileUtf8, kFileUtf16LE, kText},
      {kMarkBE + kUtf16BE, kFileUtf16LE, kFileUtf16BE, kText},
      {"x", 0, 0, L"x"},
      {"\xff", 0, 0, nullptr},          // one byte is no mark
      {kMarkLE, 0, kFileUtf16LE, L""},  // a mark alone
      {kMark8, 0, kFileUtf8Mark, L""},
      {kMarkLE + "a\0b"s, 0, kFileUtf16LE, L"ab"},       // half a unit at the end
      {kMarkLE + "a\0\0\0b\0"s, 0, kFileUtf16LE, L"a"},  // a zero ends the text
      {kMarkBE + "\0a\0\0\0b"s, 0, kFileUtf16BE, L"a"},
      {"ab\0cd"s, 0, 0, L"ab"},
  };
  TestPlace place;
  for (const Case& c : cases) {
    const WString path = place.File("marked.txt", c.bytes);
    FileObject file(path.CStr(), c.flags);
    ASSERT_TRUE(file.IsOpen());
    EXPECT_EQ(file.flags, c.found) << c.bytes;
    WString text(L"old");
    const int32_t units = file.ReadAllText(text);
    EXPECT_EQ(units, c.text != nullptr ? UnitCount(c.text) : 1) << c.bytes;
    if (c.text != nullptr) {
      EXPECT_EQ(text, c.text) << c.bytes;
    }
  }
}

// Appending in another encoding than the file's own makes a file that nothing reads.
TEST(FileObject, AppendsInTheEncodingOfTheFile) {
  TestPlace place;
  const WString path = place.File("log.txt", "\xfe\xff\0a"s);
  FileObject file(path.CStr(), kFileKeepContent | kFileUtf16LE);
  EXPECT_EQ(file.flags, static_cast<uint32_t>(kFileKeepContent | kFileUtf16BE));
  EXPECT_TRUE(file.WriteText(L"b"));
  file.Close();
  EXPECT_EQ(place.Read("log.txt"), "\xfe\xff\0a\0b"s);

  FileObject raw(path.CStr(), kFileKeepContent | kFileRaw);
  EXPECT_TRUE(raw.Seek(-1, FILE_CURRENT));
  EXPECT_TRUE(raw.WriteText(L"!"));
  raw.Close();
  EXPECT_EQ(place.Read("log.txt"), "\xfe\xff\0a\0!"s);
}

TEST(FileObject, MakesTheFoldersAndRefusesWhatIsShared) {
  TestPlace place;
  constexpr uint32_t kNew = kFileCreateAlways | kFileExclusive | kFileMakeFolders | kFileUtf16LE;
  std::string deep = "d";  // beyond the system's limit for paths
  while (deep.size() < 300) deep += "/a folder with a long name";
  const WString path = place / (deep + "/file.txt");
  FileObject first(path.CStr(), kNew);
  ASSERT_TRUE(first.IsOpen()) << GetLastError();
  EXPECT_TRUE(first.WriteText(L"deep"));
  FileObject second;
  EXPECT_EQ(second.Open(path.CStr(), 0), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
  EXPECT_EQ(second.handle, INVALID_HANDLE_VALUE);
  first.Close();
  EXPECT_NE(second.Open(path.CStr(), 0), nullptr);

  place.File("plain");
  EXPECT_EQ(second.Open((place / "plain/c.txt").CStr(), kNew), nullptr);
  EXPECT_EQ(second.Open((place / "missing.txt").CStr(), 0), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

// A sparse file of 2 GiB costs nothing on the disk, and its size doesn't fit the count of one text.
TEST(FileObject, RefusesATextBeyondTwoGigabytes) {
  TestPlace place;
  FileObject file((place / "huge").CStr(), kFileCreateAlways | kFileRaw);
  ASSERT_TRUE(file.Seek(0x80000000ll, FILE_BEGIN));
  if (!SetEndOfFile(file.handle)) GTEST_SKIP() << "no room for a file of this size";
  file.Seek(0, FILE_BEGIN);
  WString text;
  EXPECT_EQ(file.ReadAllText(text), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_TOO_LARGE));
}

TEST(MakeDirectoryPath, MakesAllParents) {
  TestPlace place;
  for (const char* path : {"a/b/c", "a/b/c", "a/d/", "e//f/g"}) {
    EXPECT_TRUE(MakeDirectoryPath((place / path).CStr())) << path;
  }
  EXPECT_THAT(place.List(), testing::ElementsAre("a", "a/b", "a/b/c", "a/d", "e", "e/f", "e/f/g"));
  WString root;
  root.AssignMid(place.Path().CStr(), 1, 2);
  EXPECT_TRUE(MakeDirectoryPath(root.CStr()));
  EXPECT_TRUE(MakeDirectoryPath((root + L"\\").CStr()));
  EXPECT_TRUE(MakeDirectoryPath((L"\\\\?\\" + root).CStr()));
}

// True for a file in the way would let a copy go on into nothing.
TEST(MakeDirectoryPath, RefusesWhatCannotBeADirectory) {
  TestPlace place;
  place.File("file");
  for (const char* path : {"file", "file/below", "file/far/below"}) {
    EXPECT_FALSE(MakeDirectoryPath((place / path).CStr())) << path;
  }
  for (const wchar_t* path : {L"", L"a", L"\\\\", L"\\\\?\\", L"\\\\?\\C", L"\\\\?\\ab"}) {
    EXPECT_FALSE(MakeDirectoryPath(path)) << Utf8(path);
  }
  EXPECT_FALSE(MakeDirectoryPath(nullptr));
}

}  // namespace
