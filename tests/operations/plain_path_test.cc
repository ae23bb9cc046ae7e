#include "operations/plain_path.h"

#include <gtest/gtest.h>

#include "support/test_place.h"

namespace {

struct Case {
  const char* path;
  bool isPlain;
};

// A key of a stranger's info file that leads out of the folder it is put behind, or to a device or a stream.
TEST(PlainPath, RelativePathsStayBelowTheirFolder) {
  const Case cases[] = {
      {"Data", true},
      {"Data\\Work", true},
      {"Größe\\日本", true},
      {".config", true},
      {"a..b", true},
      {"CONSOLE", true},
      {"COMA", true},
      {"com10\\x", true},
      {"nulls.txt", true},
      {"x CON", true},
      {"", false},
      {"..", false},
      {".", false},
      {"a\\..\\b", false},
      {"..\\..\\x", false},
      {"a\\.\\b", false},
      {"\\a", false},
      {"a\\", false},
      {"a\\\\b", false},
      {"C:\\a", false},
      {"C:", false},
      {"a:stream", false},
      {"a/../b", false},
      {"a/b", false},
      {"a.", false},
      {"a ", false},
      {"a \\b", false},
      {"...", false},
      {"\\\\srv\\x", false},
      {"\\\\?\\C:\\x", false},
      {"a*", false},
      {"a?b", false},
      {"a\x01"
       "b",
       false},
      {"a|b", false},
      {"a<b", false},
      {"a\"b", false},
      {"NUL", false},
      {"x\\nul", false},
      {"nul.txt", false},
      {"CON .log", false},
      {"com1", false},
      {"LPT9.x.y\\a", false},
      {"COM\xC2\xB9", false},
      {"conin$", false},
      {"Aux\\deep", false},
      {"a\tb", false},
  };
  for (const Case& test : cases) {
    EXPECT_EQ(IsPlainRelativePath(Wide(test.path).CStr()), test.isPlain) << test.path;
  }
  EXPECT_FALSE(IsPlainRelativePath(nullptr));
}

// A value of a stranger's hive or info file that no folder can have, or that goes round every check by a
// device's road.
TEST(PlainPath, FullPathsBeginAtADriveOrAShare) {
  const Case cases[] = {
      {"C:\\", true},
      {"d:\\Data", true},
      {"D:\\Data\\Work", true},
      {"\\\\server\\share\\a", true},
      {"", false},
      {"C", false},
      {"C:", false},
      {"C:Data", false},
      {"C:/Data", false},
      {"1:\\Data", false},
      {"Data", false},
      {"\\Data", false},
      {"\\\\?\\C:\\Data", false},
      {"\\\\.\\C:\\Data", false},
      {"\\??\\C:\\Data", false},
      {"\\\\", false},
      {"\\\\\\server", false},
      {"\\\\server\\..\\share", false},
      {"C:\\..\\Windows", false},
      {"C:\\Data\\", false},
      {"C:\\Data:x", false},
      {"C:\\Data.\\x", false},
      {"C:\\PRN", false},
      {"%USERPROFILE%\\x", false},
  };
  for (const Case& test : cases) {
    EXPECT_EQ(IsPlainFullPath(Wide(test.path).CStr()), test.isPlain) << test.path;
  }
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
