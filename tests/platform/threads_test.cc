#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>

#include "foundation/unique_handle.h"

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
  EXPECT_EQ(WaitForSingleObject(thread.Get(), 20'000), WAIT_OBJECT_0);
  EXPECT_TRUE(sleeper.isAwake);
}
