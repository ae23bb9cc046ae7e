// Names and paths: what Windows would find, whatever the disk holds.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include "machine/name_pattern.h"
#include "machine/names.h"
#include "machine/windows_path.h"
#include "platform/disk_side.h"
#include "platform/machine_settings.h"

namespace {

using testing::ElementsAre;

// A file that a set holds as "Photo.JPG" would be copied again as "photo.jpg" beside it.
TEST(FileNames, MatchWithoutCaseAndStayAsWritten) {
  TestPlace place;
  place.File("Folder/Grüße Ärger.TXT");
  EXPECT_EQ(OpenError(place / "FOLDER/grüße ärger.txt"), 0u);
  EXPECT_EQ(OpenError(place / "folder/GRÜSSE ÄRGER.TXT"), DWORD{ERROR_FILE_NOT_FOUND});
  EXPECT_EQ(OpenError(place / "folder/GRÜßE ÄRGER.TXT", CREATE_NEW), DWORD{ERROR_FILE_EXISTS});
  EXPECT_EQ(OpenError(place / "folder/GRÜßE ÄRGER.TXT", CREATE_ALWAYS), 0u);
  EXPECT_EQ(ErrorOf(CreateDirectoryW((place / "fOLDER").CStr(), nullptr)), DWORD{ERROR_ALREADY_EXISTS});
  EXPECT_THAT(place.List(), ElementsAre("Folder", "Folder/Grüße Ärger.TXT"));
}

// On a disk of Linux both may be there; each must be reached by its own name.
TEST(FileNames, AnExactNameGoesFirst) {
  TestPlace place;
  MakeOnDisk(OnDisk(place.Path()) + "/a.txt", "lower");
  MakeOnDisk(OnDisk(place.Path()) + "/A.TXT", "upper");
  EXPECT_EQ(place.Read("a.txt"), "lower");
  EXPECT_EQ(place.Read("A.TXT"), "upper");
  EXPECT_EQ(place.Read("A.txt"), "upper");  // the first in the order of bytes, always the same
}

TEST(FileNames, ARenameMayChangeTheCaseAlone) {
  TestPlace place;
  place.File("name.txt", "1");
  place.File("other.txt", "2");
  EXPECT_TRUE(MoveFileExW((place / "name.txt").CStr(), (place / "NAME.txt").CStr(), 0));
  EXPECT_THAT(place.List(), ElementsAre("NAME.txt", "other.txt"));
  EXPECT_EQ(ErrorOf(MoveFileExW((place / "other.txt").CStr(), (place / "Name.TXT").CStr(), 0)),
            DWORD{ERROR_ALREADY_EXISTS});
  EXPECT_TRUE(
      MoveFileExW((place / "other.txt").CStr(), (place / "Name.TXT").CStr(), MOVEFILE_REPLACE_EXISTING));
  EXPECT_THAT(place.List(), ElementsAre("Name.TXT"));
  EXPECT_EQ(place.Read("Name.TXT"), "2");
}

// Nothing of a foreign disk may be left out, and what is listed must be found again.
TEST(FileNames, NamesThatWindowsCannotSpellFindTheirFile) {
  TestPlace place;
  const std::string folder = OnDisk(place.Path());
  const std::string names[] = {"a:b",
                               "back\\slash",
                               "<>|?*\"\a",
                               "latin1-\xe9",
                               "half\xc3",
                               "moved-\xef\x80\xba",
                               "lone\xed\xa0\x80",
                               "over\xed\xa0\xbd\xed\xb8\x80",
                               "dot.",
                               "blank "};
  for (const std::string& name : names) ASSERT_TRUE(MakeOnDisk(folder + "/" + name, name));
  WIN32_FIND_DATAW data;
  UniqueFind search(FindFirstFileW((place / "*").CStr(), &data));
  size_t count = 0;
  do {
    if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) continue;
    WString path = L"\\\\?\\" + place.Path() + L"\\" + WString(data.cFileName);
    EXPECT_EQ(machine::DiskName(reinterpret_cast<const char16_t*>(data.cFileName)), ReadBytes(path.CStr()));
    EXPECT_TRUE(DeleteFileW(path.CStr())) << Utf8(path);
    ++count;
  } while (FindNextFileW(search.Get(), &data));
  EXPECT_EQ(count, std::size(names));
}

// A lone surrogate is a name on NTFS. Taken for U+FFFD, two files would become one.
TEST(FileNames, LoneSurrogatesSurvive) {
  TestPlace place;
  const wchar_t name[] = {0xD83D, L'x', 0xDE00, L'\xF0C3', 0};
  const WString path = place.Path() + L"\\" + WString(name);
  EXPECT_EQ(OpenError(path, CREATE_NEW), 0u);
  WIN32_FIND_DATAW data;
  UniqueFind search(FindFirstFileW((place / "*x*").CStr(), &data));
  ASSERT_TRUE(search);
  EXPECT_EQ(WString(data.cFileName), WString(name));
}

// A name that would read back as another one is refused rather than stored as that other one.
TEST(FileNames, NamesWithoutAPlaceOnTheDiskAreRefused) {
  TestPlace place;
  const wchar_t moved[] = {0xF0C3, 0xF0A9, 0};  // the bytes of an é
  EXPECT_EQ(OpenError(place.Path() + L"\\" + WString(moved), CREATE_NEW), DWORD{ERROR_INVALID_NAME});
  std::string wide;
  for (int i = 0; i < 200; ++i) wide += "あ";  // 200 units, 600 bytes
  EXPECT_EQ(OpenError(place / wide, CREATE_NEW), DWORD{ERROR_FILENAME_EXCED_RANGE});
  EXPECT_THAT(place.List(), ElementsAre());
}

TEST(FileNames, PathsAreReadAsWindowsReadsThem) {
  TestPlace place;
  place.File("a/b.txt");
  const std::string base = Utf8(place.Path());
  const std::string longName(250, 'n');
  const struct {
    std::string path;
    DWORD error;
  } cases[] = {
      {base + "\\a\\.\\..\\a//b.txt", 0},
      {base + "\\a\\b.txt. .", 0},  // dots and blanks at the end go
      {"\\\\?\\" + base + "\\a\\b.txt", 0},
      {"\\\\?\\" + base + "\\a\\b.txt.", ERROR_FILE_NOT_FOUND},
      {"\\\\?\\" + base + "\\a\\..\\a\\b.txt", ERROR_INVALID_NAME},
      {"\\\\?\\" + base + "\\a/b.txt", ERROR_INVALID_NAME},
      {"\\\\?\\" + base + "\\a\\\\b.txt", ERROR_INVALID_NAME},
      {base + "\\a\\b.txt\\", ERROR_INVALID_NAME},
      {base + "\\a\\b.txt:stream", ERROR_INVALID_NAME},
      {base + "\\a\\b?txt", ERROR_INVALID_NAME},
      {base + "\\a\\nul.txt", ERROR_INVALID_NAME},
      {"\\\\?\\" + base + "\\a\\nul.txt", ERROR_FILE_NOT_FOUND},  // a plain name there
      {base + "\\a\\none.txt", ERROR_FILE_NOT_FOUND},
      {base + "\\none\\b.txt", ERROR_PATH_NOT_FOUND},
      {base + "\\a\\b.txt\\c", ERROR_PATH_NOT_FOUND},
      {base + "\\" + longName + "\\" + longName, ERROR_PATH_NOT_FOUND},  // beyond MAX_PATH
      {"\\\\?\\" + base + "\\" + longName, ERROR_FILE_NOT_FOUND},
      {"\\\\?\\" + base + "\\" + longName + "nnnnnn", ERROR_INVALID_NAME},
      {"Q:\\x", ERROR_PATH_NOT_FOUND},
      {"", ERROR_PATH_NOT_FOUND},
      {"\\\\server\\share\\x", ERROR_BAD_NETPATH},
      {"\\\\?\\UNC\\server\\share\\x", ERROR_BAD_NETPATH},
      {base, ERROR_ACCESS_DENIED},  // a directory without FILE_FLAG_BACKUP_SEMANTICS
  };
  for (const auto& c : cases) EXPECT_EQ(OpenError(Wide(c.path)), c.error) << c.path;
}

TEST(FileNames, ANewDirectoryLeavesRoomForShortNames) {
  TestPlace place;
  const size_t base = place.Path().Length();
  const WString fits = place / std::string(247 - base - 1, 'd'),
                tooLong = place / std::string(248 - base - 1, 'e');
  EXPECT_TRUE(CreateDirectoryW(fits.CStr(), nullptr));
  EXPECT_EQ(ErrorOf(CreateDirectoryW(tooLong.CStr(), nullptr)), DWORD{ERROR_FILENAME_EXCED_RANGE});
  EXPECT_TRUE(CreateDirectoryW((L"\\\\?\\" + tooLong).CStr(), nullptr));
}

TEST(FileNames, FullPathsAreMadeByTheTextAlone) {
  ChangedSettings changed;
  changed.settings.programPath = "C:\\Norvane\\Norvane.exe";
  const struct {
    const char *path, *full;
  } cases[] = {
      {"C:/a//b/../c. ", "C:\\a\\c"},
      {"C:\\..\\..\\a", "C:\\a"},
      {"c:\\", "c:\\"},
      {"a\\b", "C:\\Norvane\\a\\b"},
      {"\\a", "C:\\a"},
      {"C:\\a\\", "C:\\a\\"},
      {"..", "C:\\"},
      {"C:a", "C:\\Norvane\\a"},
      {"D:", "D:\\"},
      {"//srv/share/../x", "\\\\srv\\share\\x"},
      {"\\\\?\\C:\\a\\..\\b", "\\\\?\\C:\\b"},
  };
  for (const auto& c : cases) {
    wchar_t buffer[300];
    EXPECT_GT(GetFullPathNameW(Wide(c.path).CStr(), 300, buffer, nullptr), 0u);
    EXPECT_EQ(Utf8(buffer), c.full) << c.path;
  }
}

TEST(FileNames, WildcardsMatchAsInASearch) {
  const struct {
    const char16_t *name, *pattern;
    bool matches;
  } cases[] = {
      {u"readme", u"*.*", true},
      {u"readme.txt", u"*.TXT", true},
      {u"readme.txt.bak", u"*.txt", false},
      {u"a.b.txt", u"*.txt", true},
      {u"ab", u"a??", true},
      {u"abcd", u"a??", false},
      {u"a", u"?", true},
      {u"a.txt", u"a??.txt", true},
      {u"a.txt", u"?.txt", true},
      {u"x.nvsav", u"*.nvsav", true},
      {u"x.nvsavx", u"*.nvsav", false},
      {u"ärz", u"Ä*z", true},
      {u"readme", u"readme.*", true},
      {u"", u"*", true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(machine::MatchesPattern(c.name, c.pattern), c.matches)
        << machine::ToUtf8(c.name) << " " << machine::ToUtf8(c.pattern);
  }
}

}  // namespace
