#include "foundation/file_object.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/test_place.h"

namespace {

using namespace std::string_literals;

const wchar_t kText[] = L"a\u00c4\u20ac\U0001F600\r\n";
const std::string kUtf8 = "a\xc3\x84\xe2\x82\xac\xf0\x9f\x98\x80\r\n";
const std::string kUtf16LE = "a\0\xc4\0\xac\x20\x3d\xd8\0\xde\r\0\n\0"s;
const std::string kUtf16BE = "\0a\0\xc4\x20\xac\xd8\x3d\xde\0\0\r\0\n"s;

// Each encoding writes its mark once, at the start of an empty file, and is read by its mark alone.
TEST(FileObject, WritesAndReadsEachEncoding) {
  struct Case {
    uint32_t flags;
    std::string bytes;
  };
  const Case cases[] = {
      {kFileUtf16LE, "\xff\xfe" + kUtf16LE},
      {kFileUtf16BE, "\xfe\xff" + kUtf16BE},
      {kFileUtf8Mark, "\xef\xbb\xbf" + kUtf8},
      {kFileUtf8, kUtf8},
  };
  TestPlace place;
  const WString path = place / "text.txt";
  for (const Case& c : cases) {
    FileObject file(path.CStr(), kFileCreateAlways | c.flags);
    ASSERT_TRUE(file.IsOpen());
    EXPECT_TRUE(file.WriteText(kText));
    file.Close();
    EXPECT_EQ(place.Read("text.txt"), c.bytes) << c.flags;

    WString text(L"old");
    ASSERT_TRUE(file.Open(path.CStr(), c.flags & kFileUtf8));  // the one without a mark
    EXPECT_EQ(file.flags, c.flags);
    EXPECT_EQ(file.ReadAllText(text), UnitCount(kText));
    EXPECT_EQ(text, kText);
  }
}

TEST(FileObject, AnsiGivesAUnitForAByte) {
  TestPlace place;
  const WString path = place / "ansi.txt";
  FileObject file(path.CStr(), kFileCreateAlways);
  EXPECT_TRUE(file.WriteText(L"plain=1\r\n"));
  file.Close();
  EXPECT_EQ(place.Read("ansi.txt"), "plain=1\r\n");
  WriteBytes(path.CStr(), "x\xe4y");
  WString text;
  file.Open(path.CStr(), 0);
  EXPECT_EQ(file.ReadAllText(text), 3);
}

// What the first bytes are decides, not what the caller expects of the file.
TEST(FileObject, FirstBytesDecideTheEncoding) {
  struct Case {
    std::string bytes;
    uint32_t flags, found;
    const wchar_t* text;
  };
  const Case cases[] = {
      {"\xef\xbb\xbf" + kUtf8, 0, kFileUtf8Mark, kText},
      {"\xff\xfe" + kUtf16LE, kFileUtf8, kFileUtf16LE, kText},
      {"\xfe\xff" + kUtf16BE, kFileUtf16LE, kFileUtf16BE, kText},
      {"x", 0, 0, L"x"},
      {"\xff", 0, 0, nullptr},             // one byte is no mark
      {"\xff\xfe", 0, kFileUtf16LE, L""},  // a mark alone
      {"\xef\xbb\xbf", 0, kFileUtf8Mark, L""},
      {"\xff\xfe"
       "a\0b"s,
       0, kFileUtf16LE, L"ab"},  // half a unit at the end
      {"\xff\xfe"
       "a\0\0\0b\0"s,
       0, kFileUtf16LE, L"a"},  // a zero ends the text
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

TEST(FileObject, WritesTheMarkOnce) {
  TestPlace place;
  const WString path = place.File("info.nvsav", "");
  for (int round = 0; round < 2; ++round) {
    FileObject file(path.CStr(), 0x22);
    EXPECT_TRUE(file.IsOpen());
  }
  EXPECT_EQ(place.Read("info.nvsav"), "\xff\xfe");
  { FileObject file((place / "raw").CStr(), kFileRaw | kFileCreateAlways); }
  EXPECT_EQ(place.Read("raw"), "");
}

TEST(FileObject, MakesTheFoldersAndRefusesWhatIsShared) {
  TestPlace place;
  const WString path = place / "a/b/c.txt";
  FileObject first(path.CStr(), 0x2e);
  ASSERT_TRUE(first.IsOpen());
  FileObject second;
  EXPECT_EQ(second.Open(path.CStr(), 0), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
  EXPECT_EQ(second.handle, INVALID_HANDLE_VALUE);
  first.Close();
  EXPECT_NE(second.Open(path.CStr(), 0), nullptr);

  FileObject refused;
  place.File("plain", "x");
  EXPECT_EQ(refused.Open((place / "plain/c.txt").CStr(), 0x2e), nullptr);
  EXPECT_EQ(refused.Open((place / "missing.txt").CStr(), 0), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

// A closed file or an empty text is no success, and takes the old text of the output with it.
TEST(FileObject, DoesNothingWhenClosed) {
  TestPlace place;
  FileObject file;
  WString text(L"old");
  EXPECT_EQ(file.ReadAllText(text), 0);
  EXPECT_TRUE(text.IsEmpty());
  EXPECT_FALSE(file.WriteText(L"x"));
  EXPECT_FALSE(file.Seek(0, FILE_BEGIN));
  file.Open((place / "x").CStr(), 0x22);
  EXPECT_FALSE(file.WriteText(L""));
  EXPECT_FALSE(file.WriteText(nullptr));
}

TEST(FileObject, OpensPathsBeyondTheSystemsLimit) {
  TestPlace place;
  std::string deep = "d";
  while (deep.size() < 300) deep += "/a folder with a long name";
  const WString path = place / (deep + "/file.txt");
  ASSERT_GT(path.Length(), 300);
  FileObject file(path.CStr(), 0x2e);
  ASSERT_TRUE(file.IsOpen()) << GetLastError();
  EXPECT_TRUE(file.WriteText(L"deep"));
  file.Close();
  EXPECT_NE(file.Open(path.CStr(), 0), nullptr);
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

bool IsDirectory(const WString& path) {
  const uint32_t attributes = Attributes(path.CStr());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

TEST(MakeDirectoryPath, MakesAllParents) {
  TestPlace place;
  EXPECT_TRUE(MakeDirectoryPath((place / "a/b/c").CStr()));
  EXPECT_TRUE(IsDirectory(place / "a/b/c"));
  EXPECT_TRUE(MakeDirectoryPath((place / "a/b/c").CStr()));
  EXPECT_TRUE(MakeDirectoryPath((place / "a/d/").CStr()));
  EXPECT_TRUE(IsDirectory(place / "a/d"));
  WString doubled = (place / "e") + L"\\\\f\\g";
  EXPECT_TRUE(MakeDirectoryPath(doubled.CStr()));
  EXPECT_TRUE(IsDirectory(place / "e/f/g"));
}

TEST(MakeDirectoryPath, TakesAnExistingRoot) {
  TestPlace place;
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
  EXPECT_FALSE(MakeDirectoryPath((place / "file").CStr()));
  EXPECT_FALSE(MakeDirectoryPath((place / "file/below").CStr()));
  EXPECT_FALSE(MakeDirectoryPath((place / "file/far/below").CStr()));
  for (const wchar_t* path : {L"", L"a", L"\\\\", L"\\\\?\\", L"\\\\?\\C", L"\\\\?\\ab"}) {
    EXPECT_FALSE(MakeDirectoryPath(path)) << Utf8(path);
  }
  EXPECT_FALSE(MakeDirectoryPath(nullptr));
}

}  // namespace
