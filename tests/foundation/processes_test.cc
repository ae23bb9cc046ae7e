#include "foundation/processes.h"

#include <gtest/gtest.h>

#include <memory>

#include "foundation/privileges.h"
#include "foundation/unique_handle.h"
#include "support/test_place.h"

namespace {

// Cut to the buffer, a command line that is too long would be another command.
TEST(Processes, ProgramThatCanNotBeStartedIsTold) {
  TestPlace place;
  const WString missing = place / "missing.exe";
  EXPECT_EQ(StartProcess(missing.CStr(), L"", nullptr, 0), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
  EXPECT_EQ(RunProcess(missing.CStr(), L"missing", L"", kProcessWait), -1);
  EXPECT_EQ(RunProcess(missing.CStr(), nullptr, nullptr, kProcessWithoutRedirection), 0);
  EXPECT_EQ(StartProcess(nullptr, Wide(std::string(32000, 'x')).CStr(), nullptr, 0), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_FILENAME_EXCED_RANGE});
}

// Ids below 5 are never opened: 0 is the idle process and 4 the system's own.
TEST(Processes, KnowsWhatIsAlive) {
  for (const uint32_t id : {0u, 1u, 2u, 3u}) EXPECT_FALSE(IsProcessAlive(id)) << id;
  EXPECT_TRUE(IsProcessAlive(4));
  EXPECT_TRUE(IsProcessAlive(GetCurrentProcessId()));
  EXPECT_FALSE(IsProcessAlive(0x7ffffff0));
}

TEST(Processes, PathOfAProgram) {
  wchar_t output[kImagePathCapacity] = L"old";
  EXPECT_TRUE(GetProcessImagePath(GetCurrentProcessId(), output));
  wchar_t own[MAX_PATH];
  GetModuleFileNameW(nullptr, own, MAX_PATH);
  EXPECT_TRUE(WString(output).EqualsNoCase(own)) << Utf8(output);
  EXPECT_FALSE(GetProcessImagePath(0x7ffffff0, output));
  EXPECT_EQ(output[0], 0);
}

TEST(Processes, KernelPathsBecomePaths) {
  wchar_t windows[MAX_PATH];
  GetSystemWindowsDirectoryW(windows, MAX_PATH);
  struct Case {
    const wchar_t* kernel;
    WString path;
  };
  const Case cases[] = {
      {L"\\SystemRoot\\System32\\x.exe", WString(windows) + L"\\System32\\x.exe"},
      {L"\\systemroot\\x.exe", WString(windows) + L"\\x.exe"},
      {L"\\??\\C:\\x.exe", L"C:\\x.exe"},
      {L"\\SystemRootX\\x.exe", L"\\SystemRootX\\x.exe"},
      {L"C:\\SystemRoot\\x.exe", L"C:\\SystemRoot\\x.exe"},
      {L"\\\\server\\x.exe", L"\\\\server\\x.exe"},
      {L"", L""},
  };
  for (const Case& c : cases) {
    WString path(c.kernel);
    FromKernelPath(path);
    EXPECT_EQ(path, c.path);
  }
}

// Without them everything works until the first file that denies its reader.
TEST(Processes, PrivilegesAreEnabled) {
  UniqueHandle token;
  ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, token.Receive()));
  TOKEN_PRIVILEGES backup = {};
  backup.PrivilegeCount = 1;
  ASSERT_TRUE(LookupPrivilegeValueW(nullptr, L"SeBackupPrivilege", &backup.Privileges[0].Luid));
  ASSERT_TRUE(AdjustTokenPrivileges(token.Get(), FALSE, &backup, sizeof(backup), nullptr, nullptr));

  // Each run tells the state before it, where it changed something.
  const auto wasDisabled = [&] {
    const std::unique_ptr<uint8_t[]> state(EnableProcessPrivileges());
    const auto before = reinterpret_cast<TOKEN_PRIVILEGES*>(state.get());
    for (DWORD index = 0; before != nullptr && index < before->PrivilegeCount; ++index) {
      const LUID_AND_ATTRIBUTES& entry = before->Privileges[index];
      if (entry.Luid.LowPart != backup.Privileges[0].Luid.LowPart) continue;
      return (entry.Attributes & SE_PRIVILEGE_ENABLED) == 0;
    }
    return false;
  };
  EXPECT_TRUE(wasDisabled());
  EXPECT_FALSE(wasDisabled());
}

}  // namespace
