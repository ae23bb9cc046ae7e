// Programs that really run, and window messages: a machine folder has neither.
#include <gtest/gtest.h>

#include "foundation/processes.h"
#include "foundation/unique_handle.h"
#include "foundation/waiting_messages.h"
#include "support/test_place.h"

namespace {

WString SystemProgram(const wchar_t* name) {
  wchar_t folder[MAX_PATH];
  GetSystemDirectoryW(folder, MAX_PATH);
  return WString(folder) + L"\\" + name;
}

TEST(RunningProcesses, ExitCodeComesBackAndTheWorkingFolderIsUsed) {
  const WString shell = SystemProgram(L"cmd.exe");
  EXPECT_EQ(RunProcess(shell.CStr(), L"cmd /c exit 7", nullptr, kProcessWait), 7);
  EXPECT_EQ(RunProcess(nullptr, L"cmd /c exit 3", L"C:\\", kProcessWait | kProcessWithoutRedirection), 3);
  TestPlace place;
  EXPECT_EQ(RunProcess(shell.CStr(), L"cmd /c echo x>made.txt", place.Path().CStr(), kProcessWait), 0);
  EXPECT_TRUE(place.Exists("made.txt"));
}

// A program that waits for ever, as one does that hangs.
TEST(RunningProcesses, IsTerminatedForGood) {
  const UniqueHandle process(StartProcess(SystemProgram(L"cmd.exe").CStr(), L"cmd /c pause", nullptr, 0));
  ASSERT_TRUE(process);
  const DWORD id = GetProcessId(process.Get());
  EXPECT_TRUE(IsProcessAlive(id));
  wchar_t path[kImagePathCapacity];
  EXPECT_TRUE(GetProcessImagePath(id, path));
  EXPECT_TRUE(WString(path).LastComponent().EqualsNoCase(L"cmd.exe")) << Utf8(path);
  TerminateProcessHard(id);
  EXPECT_FALSE(IsProcessAlive(id));
  EXPECT_EQ(WaitForSingleObject(process.Get(), 0), DWORD{WAIT_OBJECT_0});
}

// Redirection that stays off leads the loader astray for the rest of the process.
TEST(RunningProcesses, RedirectionIsOnlyOffMeanwhile) {
  const WString marker = SystemProgram(L"norvane-test.txt");
  WriteBytes(marker.CStr(), "x");  // lies in SysWOW64
  ASSERT_TRUE(IsWow64());
  void* saved = nullptr;
  ASSERT_TRUE(DisableRedirection(saved));
  const bool isSeen = Attributes(marker.CStr()) != INVALID_FILE_ATTRIBUTES;
  RestoreRedirection(saved);
  EXPECT_FALSE(isSeen);
  EXPECT_NE(Attributes(marker.CStr()), INVALID_FILE_ATTRIBUTES);
  DeleteFileW(marker.CStr());
}

TEST(RunningProcesses, ThreadTakesOnAnIdentity) {
  EXPECT_EQ(ImpersonateProcess(L"no such program.exe"), nullptr);
  wchar_t own[MAX_PATH];
  GetModuleFileNameW(nullptr, own, MAX_PATH);
  UniqueHandle token(ImpersonateProcess(CharUpperW(WString(own).LastComponent().CStr())));
  ASSERT_TRUE(token);
  HANDLE used = nullptr;
  EXPECT_TRUE(OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &used));
  CloseHandle(used);
  EXPECT_TRUE(RevertToSelf());
  EXPECT_FALSE(OpenThreadToken(GetCurrentThread(), TOKEN_QUERY, TRUE, &used));
}

// A quit that is swallowed during long work leaves a program that can't be closed.
TEST(WaitingMessages, AreHandledAndAQuitStays) {
  HandleWaitingMessages();
  EXPECT_FALSE(HandleWaitingMessages());
  PostThreadMessageW(GetCurrentThreadId(), WM_APP, 0, 0);
  EXPECT_TRUE(HandleWaitingMessages());
  PostQuitMessage(5);
  EXPECT_FALSE(HandleWaitingMessages());
  MSG message;
  ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
  EXPECT_EQ(message.message, UINT{WM_QUIT});
  EXPECT_EQ(message.wParam, 5u);
}

TEST(WaitingMessages, FindsTheVisibleWindowOfAProcess) {
  const HWND hidden =
      CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(FindVisibleWindow(GetCurrentProcessId()), nullptr);
  const HWND shown = CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, 9, 9, nullptr, nullptr,
                                     nullptr, nullptr);
  EXPECT_EQ(FindVisibleWindow(GetCurrentProcessId()), shown);
  DestroyWindow(shown);
  DestroyWindow(hidden);
}

}  // namespace
