#include <gtest/gtest.h>
#include <windows.h>
#include <shellapi.h>

#include <string>
#include <vector>

#include "foundation/unique_handle.h"
#include "platform/machine_settings.h"
#include "support/test_place.h"

namespace {

std::string Expand(const std::string& text) {
  wchar_t buffer[300];
  WString wide = Wide(text);
  EXPECT_GT(ExpandEnvironmentStringsW(wide.CStr(), buffer, 300), 0u);
  return Utf8(buffer);
}

std::vector<std::string> Split(const std::string& line) {
  int count = 0;
  WString wide = Wide(line);
  wchar_t** arguments = CommandLineToArgvW(wide.CStr(), &count);
  UniqueLocalMemory owner(arguments);
  std::vector<std::string> result;
  for (int i = 0; i < count; ++i) result.push_back(Utf8(arguments[i]));
  return result;
}

}  // namespace

// Folders of a registry value would be looked for in the wrong place, or a stray "%" cut the rest off.
TEST(Environment, VariablesAreThoseOfTheMachine) {
  ChangedSettings machine;
  machine.settings.systemDrive = 'F';
  machine.settings.computerName = "Büro";
  struct {
    const char *text, *expanded;
  } const cases[] = {
      {"%SystemDrive%\\x", "F:\\x"},
      {"%systemroot%\\%WINDIR%", "F:\\Windows\\F:\\Windows"},
      {"%ProgramFiles%", "F:\\Program Files (x86)"},
      {"%COMPUTERNAME%", "Büro"},
      {"%NoSuch%\\100%", "%NoSuch%\\100%"},
      {"%no%SystemDrive%", "%no%SystemDrive%"},
      {"%%", "%%"},
      {"", ""},
  };
  for (const auto& [text, expanded] : cases) EXPECT_EQ(Expand(text), expanded);
}

// A backup file whose path has blanks or a quote would not be found.
TEST(Environment, CommandLineIsSplitAsWindowsDoes) {
  struct {
    std::string line;
    std::vector<std::string> arguments;
  } const cases[] = {
      {"a b  c", {"a", "b", "c"}},
      {"\"C:\\a b\\\" x", {"C:\\a b\\", "x"}},  // in the program's name a backslash means nothing
      {"a\"b\" c", {"a\"b\"", "c"}},
      {"a \"b c\" d", {"a", "b c", "d"}},
      {"a b\"c d\"e", {"a", "bc de"}},
      {"a \\\\b \\\"c", {"a", "\\\\b", "\"c"}},
      {"a \"b\\\\\" c", {"a", "b\\", "c"}},
      {"a \"b\\\" c", {"a", "b\" c"}},
      {"a \"\" b", {"a", "", "b"}},
      {"a \"b\"\"c d\" e", {"a", "b\"c", "d e"}},
      {"a \"\"\"b c\"\"\"", {"a", "\"b", "c\""}},
      {"a \"open b", {"a", "open b"}},
      {" a", {"", "a"}},
  };
  for (const auto& [line, arguments] : cases) EXPECT_EQ(Split(line), arguments) << line;
  EXPECT_EQ(Split(""), std::vector<std::string>{machine::ThisMachine().settings.programPath});
}
