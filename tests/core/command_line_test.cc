#include "core/command_line.h"

#include <gtest/gtest.h>

#include "support/test_place.h"

namespace {

struct Case {
  std::string arguments;  // "~" stands for the place
  StartMode mode;
  bool postUpdate;
  std::string pending;  // relative; empty for none
};

// A double click that opens the wrong screen, or a file that nobody can restore from.
TEST(CommandLine, ChoosesTheStartMode) {
  TestPlace place;
  for (const char* name : {"a b.nvsav", "SET.GRXSV", "other.txt", "nvsav", "d.nvsav/file"}) place.File(name);
  const Case cases[] = {
      {"", StartMode::kHome, false, ""},
      {"\"~\\a b.nvsav\"", StartMode::kOpenBackup, false, "a b.nvsav"},
      {"~\\SET.GRXSV", StartMode::kOpenBackup, false, "SET.GRXSV"},
      {"/editbackup ~\\SET.GRXSV", StartMode::kEditBackup, false, "SET.GRXSV"},
      {"~\\SET.GRXSV /EditBackup", StartMode::kEditBackup, false, "SET.GRXSV"},
      {"\"~\\a b.nvsav\" ~\\SET.GRXSV", StartMode::kOpenBackup, false, "SET.GRXSV"},
      {"/EditBackup", StartMode::kHome, false, ""},
      {"/PostUpdate \"~\\a b.nvsav\"", StartMode::kOpenBackup, true, "a b.nvsav"},
      {"/POSTUPDATE", StartMode::kHome, true, ""},
      {"/Unknown ~\\missing.nvsav", StartMode::kHome, false, ""},
      {"~\\other.txt", StartMode::kHome, false, ""},
      {"~\\nvsav", StartMode::kHome, false, ""},
      {"~\\d.nvsav\\file", StartMode::kHome, false, ""},
  };
  for (const Case& given : cases) {
    WString line = Wide(given.arguments);
    line.Replace(L"~", place.Path().CStr());
    WString pending;
    AppObject::StartResult result = ParseCommandLine(line.CStr(), pending);
    EXPECT_EQ(result.mode, given.mode) << given.arguments;
    EXPECT_EQ(result.postUpdate, given.postUpdate) << given.arguments;
    EXPECT_EQ(Utf8(pending), given.pending.empty() ? "" : Utf8(place / given.pending)) << given.arguments;
  }
}

}  // namespace
