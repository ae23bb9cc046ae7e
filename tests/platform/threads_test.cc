#include <gtest/gtest.h>
#include <windows.h>

#include <tlhelp32.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "foundation/unique_handle.h"
#include "platform/privilege_switch.h"
#include "platform/test_machine.h"

namespace {

constexpr DWORD kLongWait = 20'000;

// Calls into the layer again and again, and counts.
struct Counter {
  std::atomic<uint64_t> calls{0};
  std::atomic<bool> isToEnd{false};

  static DWORD WINAPI Run(void* self) {
    auto& counter = *static_cast<Counter*>(self);
    while (!counter.isToEnd) {
      GetTickCount64();
      ++counter.calls;
    }
    return 7;
  }
  bool GoesOn() const {
    uint64_t before = calls;
    for (int i = 0; i < 2000 && calls < before + 10; ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return calls >= before + 10;
  }
  // One call may have been under way when the thread was suspended; after it there is none.
  bool StandsStill() const {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    uint64_t before = calls;
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    return calls == before;
  }
};

UniqueHandle Start(Counter& counter, DWORD flags = 0) {
  return UniqueHandle(CreateThread(nullptr, 0, Counter::Run, &counter, flags, nullptr));
}

DWORD WINAPI EndAtOnce(void*) { return 1; }

DWORD WINAPI SetOwnError(void*) {
  DWORD before = GetLastError();
  SetLastError(ERROR_CRC);
  return before;
}

DWORD ExitCode(const UniqueHandle& thread) {
  DWORD code = 0;
  EXPECT_TRUE(GetExitCodeThread(thread.Get(), &code));
  return code;
}

}  // namespace

// A runner that polls the handle would take a running worker for one that has ended, or wait for ever.
TEST(Threads, HandleIsSignalledWhenTheRoutineHasReturned) {
  Counter counter;
  UniqueHandle thread = Start(counter);
  ASSERT_TRUE(thread);

  EXPECT_EQ(WaitForSingleObject(thread.Get(), 0), WAIT_TIMEOUT);
  EXPECT_EQ(WaitForSingleObject(thread.Get(), 10), WAIT_TIMEOUT);
  EXPECT_EQ(ExitCode(thread), STILL_ACTIVE);

  counter.isToEnd = true;
  EXPECT_EQ(WaitForSingleObject(thread.Get(), kLongWait), WAIT_OBJECT_0);
  EXPECT_EQ(WaitForSingleObject(thread.Get(), 0), WAIT_OBJECT_0);
  EXPECT_EQ(ExitCode(thread), 7u);
}

// Pause would do nothing, or lose a second pause when the first one is taken back.
TEST(Threads, SuspendHoldsUntilEachOneIsTakenBack) {
  Counter counter;
  UniqueHandle thread = Start(counter);
  ASSERT_TRUE(counter.GoesOn());

  EXPECT_EQ(SuspendThread(thread.Get()), 0u);
  EXPECT_EQ(SuspendThread(thread.Get()), 1u);
  EXPECT_TRUE(counter.StandsStill());
  EXPECT_EQ(ResumeThread(thread.Get()), 2u);
  EXPECT_TRUE(counter.StandsStill());
  EXPECT_EQ(ResumeThread(thread.Get()), 1u);
  EXPECT_TRUE(counter.GoesOn());
  EXPECT_EQ(ResumeThread(thread.Get()), 0u);

  counter.isToEnd = true;
  EXPECT_EQ(WaitForSingleObject(thread.Get(), kLongWait), WAIT_OBJECT_0);
  EXPECT_EQ(SuspendThread(thread.Get()), static_cast<DWORD>(-1));
}

// A held thread that kept the layer's or the heap's lock would stop everybody else.
TEST(Threads, OthersWorkWhileOneIsHeld) {
  struct Allocator {
    static DWORD WINAPI Run(void* isToEnd) {
      while (!*static_cast<std::atomic<bool>*>(isToEnd)) {
        HeapFree(GetProcessHeap(), 0, HeapAlloc(GetProcessHeap(), 0, 10));
        GetTickCount64();
      }
      return 0;
    }
  };
  std::atomic<bool> isToEnd{false};
  UniqueHandle thread(CreateThread(nullptr, 0, Allocator::Run, &isToEnd, 0, nullptr));
  for (int round = 0; round < 50; ++round) {
    ASSERT_TRUE(HeapLock(GetProcessHeap()));
    ASSERT_NE(SuspendThread(thread.Get()), static_cast<DWORD>(-1));
    ASSERT_TRUE(HeapUnlock(GetProcessHeap()));
    HeapFree(GetProcessHeap(), 0, HeapAlloc(GetProcessHeap(), 0, 100));
    UniqueHandle other(CreateThread(nullptr, 0, EndAtOnce, nullptr, 0, nullptr));
    EXPECT_EQ(WaitForSingleObject(other.Get(), kLongWait), WAIT_OBJECT_0);
    ResumeThread(thread.Get());
  }
  isToEnd = true;
  EXPECT_EQ(WaitForSingleObject(thread.Get(), kLongWait), WAIT_OBJECT_0);
}

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

// A thread made suspended would run before its maker has filled what it reads.
TEST(Threads, CreatedSuspendedRunsOnlyWhenResumed) {
  Counter counter;
  UniqueHandle thread = Start(counter, CREATE_SUSPENDED);
  EXPECT_TRUE(counter.StandsStill());
  EXPECT_EQ(counter.calls, 0u);
  ResumeThread(thread.Get());
  EXPECT_TRUE(counter.GoesOn());
  counter.isToEnd = true;
  EXPECT_EQ(WaitForSingleObject(thread.Get(), kLongWait), WAIT_OBJECT_0);
}

// Errors of one thread would show as those of another.
TEST(Threads, LastErrorBelongsToItsThread) {
  SetLastError(ERROR_DISK_FULL);
  UniqueHandle thread(CreateThread(nullptr, 0, SetOwnError, nullptr, 0, nullptr));
  WaitForSingleObject(thread.Get(), kLongWait);
  EXPECT_EQ(ExitCode(thread), static_cast<DWORD>(ERROR_SUCCESS));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DISK_FULL));
}

// A null or closed handle must not look like a thread that has ended.
TEST(Threads, WrongHandlesFail) {
  EXPECT_EQ(WaitForSingleObject(nullptr, 0), WAIT_FAILED);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
  EXPECT_EQ(SuspendThread(INVALID_HANDLE_VALUE), static_cast<DWORD>(-1));
  EXPECT_EQ(ResumeThread(nullptr), static_cast<DWORD>(-1));
}

namespace {

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
