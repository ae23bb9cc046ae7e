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
  // But a rename may change the case alone.
  EXPECT_TRUE(MoveFileExW((place / "Folder").CStr(), (place / "FOLDER").CStr(), 0));
  EXPECT_THAT(place.List(), ElementsAre("FOLDER", "FOLDER/Grüße Ärger.TXT"));
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
                               "low\xed\xb8\x80x",
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
    const char16_t *pattern, *matching, *other;
  } cases[] = {
      {u"*.*", u"readme", nullptr},
      {u"*.TXT", u"a.b.txt", u"readme.txt.bak"},
      {u"a??", u"ab", u"abcd"},
      {u"a??.txt", u"a.txt", u"abcd.txt"},
      {u"*.nvsav", u"x.nvsav", u"x.nvsavx"},
      {u"Ä*z", u"ärz", u"arz"},
      {u"readme.*", u"readme", u"readme1"},
      {u"*", u"", nullptr},
  };
  for (const auto& c : cases) {
    EXPECT_TRUE(machine::MatchesPattern(c.matching, c.pattern)) << machine::ToUtf8(c.pattern);
    if (!c.other) continue;
    EXPECT_FALSE(machine::MatchesPattern(c.other, c.pattern)) << machine::ToUtf8(c.pattern);
  }
}

}  // namespace
