#include "operations/plain_path.h"

#include <gtest/gtest.h>

#include "support/test_place.h"

namespace {

// A key of a stranger's info file that leads out of the folder it is put behind, or to a device or a stream.
TEST(PlainPath, RelativePathsStayBelowTheirFolder) {
  for (const char* path : {"Data", "Data\\Work", "Größe\\日本", ".config", "a..b", "CONSOLE", "COMA",
                           "com10\\x", "nulls.txt", "x CON"}) {
    EXPECT_TRUE(IsPlainRelativePath(Wide(path).CStr())) << path;
  }
  const char* elsewhere[] = {"",        "..",  ".",          "...",         "a\\..\\b", "..\\..\\x",
                             "a\\.\\b", "\\a", "a\\",        "a\\\\b",      "a/../b",   "a/b",
                             "C:\\a",   "C:",  "\\\\srv\\x", "\\\\?\\C:\\x"};
  const char* devices[] = {"NUL",         "x\\nul",      "nul.txt", "CON .log", "com1",
                           "LPT9.x.y\\a", "COM\xC2\xB9", "conin$",  "Aux\\deep"};
  const char* impossible[] = {"a:stream", "a.",  "a ",   "a \\b", "a*",    "a?b",
                              "a|b",      "a<b", "a\"b", "a\tb",  "a\001b"};
  for (const char* path : elsewhere) EXPECT_FALSE(IsPlainRelativePath(Wide(path).CStr())) << path;
  for (const char* path : devices) EXPECT_FALSE(IsPlainRelativePath(Wide(path).CStr())) << path;
  for (const char* path : impossible) EXPECT_FALSE(IsPlainRelativePath(Wide(path).CStr())) << path;
  EXPECT_FALSE(IsPlainRelativePath(nullptr));
}

// A value of a stranger's hive or info file that no folder can have, or that goes round every check by a
// device's road.
TEST(PlainPath, FullPathsBeginAtADriveOrAShare) {
  for (const char* path : {"C:\\", "d:\\Data", "D:\\Data\\Work", "\\\\server\\share\\a"}) {
    EXPECT_TRUE(IsPlainFullPath(Wide(path).CStr())) << path;
  }
  const char* relative[] = {"",         "C",    "C:",     "C:Data",          "C:/Data",
                            "1:\\Data", "Data", "\\Data", "%USERPROFILE%\\x"};
  const char* others[] = {"\\\\?\\C:\\Data", "\\\\.\\C:\\Data",       "\\??\\C:\\Data",  "\\\\",
                          "\\\\\\server",    "\\\\server\\..\\share", "C:\\..\\Windows", "C:\\Data\\",
                          "C:\\Data:x",      "C:\\Data.\\x",          "C:\\PRN"};
  for (const char* path : relative) EXPECT_FALSE(IsPlainFullPath(Wide(path).CStr())) << path;
  for (const char* path : others) EXPECT_FALSE(IsPlainFullPath(Wide(path).CStr())) << path;
  EXPECT_FALSE(IsPlainFullPath(nullptr));
}

// A value of 64 KiB that reaches the system's calls.
TEST(PlainPath, HasABound) {
  const std::string part(100, 'a');
  std::string path = "C:\\" + part;
  while (path.size() < 31000) path += "\\" + part;
  EXPECT_TRUE(IsPlainFullPath(Wide(path).CStr()));
  while (path.size() < 33000) path += "\\" + part;
  EXPECT_FALSE(IsPlainFullPath(Wide(path).CStr()));
  EXPECT_FALSE(IsPlainRelativePath(Wide(path.substr(3)).CStr()));
}

}  // namespace
