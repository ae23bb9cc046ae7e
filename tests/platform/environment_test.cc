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

// The size of a first call is what the second call gets as room.
TEST(Environment, SizesCountTheTerminator) {
  wchar_t buffer[20];
  EXPECT_EQ(ExpandEnvironmentStringsW(L"%SystemDrive%", nullptr, 0), 3u);
  EXPECT_EQ(ExpandEnvironmentStringsW(L"%SystemDrive%", buffer, 3), 3u);
  EXPECT_EQ(GetEnvironmentVariableW(L"SystemDrive", buffer, 2), 3u);
  EXPECT_EQ(GetEnvironmentVariableW(L"SystemDrive", buffer, 3), 2u);
  EXPECT_EQ(GetEnvironmentVariableW(L"NoSuch", buffer, 20), 0u);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ENVVAR_NOT_FOUND));

  DWORD size = 3;
  EXPECT_FALSE(GetComputerNameW(buffer, &size));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_BUFFER_OVERFLOW));
  EXPECT_EQ(size, machine::ThisMachine().settings.computerName.size() + 1);
  EXPECT_TRUE(GetComputerNameW(buffer, &size));
  EXPECT_EQ(size, machine::ThisMachine().settings.computerName.size());
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

// A failure would be told without its reason.
TEST(ErrorTexts, SentencesOfTheSystem) {
  wchar_t* text = nullptr;
  DWORD flags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
  EXPECT_EQ(
      FormatMessageW(flags, nullptr, ERROR_ACCESS_DENIED, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr),
      19u);
  UniqueLocalMemory owner(text);
  EXPECT_EQ(Utf8(text), "Access is denied.\r\n");
  EXPECT_EQ(FormatMessageW(flags, nullptr, 65000, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr), 0u);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MR_MID_NOT_FOUND));
}
