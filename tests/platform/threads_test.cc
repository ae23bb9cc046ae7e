#include <gtest/gtest.h>
#include <windows.h>

#include <tlhelp32.h>

#include <atomic>

#include "foundation/unique_handle.h"
#include "platform/privilege_switch.h"
#include "platform/test_machine.h"

namespace {

constexpr DWORD kLongWait = 20'000;

DWORD WINAPI SetOwnError(void*) {
  DWORD before = GetLastError();
  SetLastError(ERROR_CRC);
  return before;
}

// A thread of a process of the session at the console; 0 if there is none.
DWORD ThreadOfAnother(DWORD& processId) {
  UniqueFile snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
  THREADENTRY32 entry;
  entry.dwSize = sizeof(entry);
  for (BOOL more = Thread32First(snapshot.Get(), &entry); more; more = Thread32Next(snapshot.Get(), &entry)) {
    DWORD session = 0;
    processId = entry.th32OwnerProcessID;
    bool isConsole = ProcessIdToSessionId(processId, &session) && session != 0;
    if (isConsole && processId != GetCurrentProcessId()) return entry.th32ThreadID;
  }
  return 0;
}

}  // namespace

// A thread that slept when it was paused would go on after its sleep.
TEST(Threads, SleepDoesNotOutlastASuspension) {
  struct Sleeper {
    std::atomic<bool> isAwake{false};
    static DWORD WINAPI Run(void* self) {
      Sleep(30);
      static_cast<Sleeper*>(self)->isAwake = true;
      return 0;
    }
  } sleeper;
  UniqueHandle thread(CreateThread(nullptr, 0, Sleeper::Run, &sleeper, CREATE_SUSPENDED, nullptr));
  EXPECT_EQ(ResumeThread(thread.Get()), 1u);
  Sleep(5);
  SuspendThread(thread.Get());
  EXPECT_EQ(WaitForSingleObject(thread.Get(), 100), WAIT_TIMEOUT);
  EXPECT_FALSE(sleeper.isAwake);
  ResumeThread(thread.Get());
  EXPECT_EQ(WaitForSingleObject(thread.Get(), kLongWait), WAIT_OBJECT_0);
  EXPECT_TRUE(sleeper.isAwake);
}

// Errors of one thread would show as those of another.
TEST(Threads, LastErrorBelongsToItsThread) {
  SetLastError(ERROR_DISK_FULL);
  UniqueHandle thread(CreateThread(nullptr, 0, SetOwnError, nullptr, 0, nullptr));
  WaitForSingleObject(thread.Get(), kLongWait);
  DWORD before = ERROR_CRC;
  EXPECT_TRUE(GetExitCodeThread(thread.Get(), &before));
  EXPECT_EQ(before, static_cast<DWORD>(ERROR_SUCCESS));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DISK_FULL));
}

// The last means against a program that doesn't end would do nothing, or be open to everybody.
TEST(OtherThreads, AProcessEndsWithItsThread) {
  TestMachine place;
  DWORD processId = 0;
  DWORD threadId = ThreadOfAnother(processId);
  ASSERT_NE(threadId, 0u);

  place.RunAs("Bob");
  EXPECT_EQ(OpenThread(THREAD_TERMINATE, FALSE, threadId), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));

  place.RunAs("Anna");
  ASSERT_EQ(SetPrivilege(L"SeDebugPrivilege", true), static_cast<DWORD>(ERROR_SUCCESS));
  threadId = ThreadOfAnother(processId);
  UniqueHandle process(OpenProcess(SYNCHRONIZE, FALSE, processId));
  UniqueHandle thread(OpenThread(THREAD_TERMINATE, FALSE, threadId));
  ASSERT_TRUE(process && thread);
  EXPECT_EQ(WaitForSingleObject(process.Get(), 0), WAIT_TIMEOUT);
  EXPECT_TRUE(TerminateThread(thread.Get(), 0));
  EXPECT_EQ(WaitForSingleObject(process.Get(), 0), WAIT_OBJECT_0);
  EXPECT_EQ(OpenProcess(SYNCHRONIZE, FALSE, processId), nullptr);
}
