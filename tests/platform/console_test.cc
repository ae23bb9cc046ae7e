#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>
#include <windows.h>

#include <atomic>

namespace {

std::atomic<int> firstCalls{0};
std::atomic<int> lastCalls{0};
std::atomic<DWORD> handlerThread{0};

BOOL WINAPI First(DWORD) {
  ++firstCalls;
  return TRUE;
}
BOOL WINAPI LastLetsGoOn(DWORD event) {
  EXPECT_EQ(event, static_cast<DWORD>(CTRL_C_EVENT));
  handlerThread = GetCurrentThreadId();
  ++lastCalls;
  return FALSE;
}

}  // namespace

// Ctrl+C would end the program in the middle of a file instead of stopping the run.
TEST(Console, ControlHandlersAreAskedFromTheLastOnOnAThreadOfTheirOwn) {
  ASSERT_TRUE(SetConsoleCtrlHandler(First, TRUE));
  ASSERT_TRUE(SetConsoleCtrlHandler(LastLetsGoOn, TRUE));
  for (int signal : {SIGINT, SIGTERM}) {
    int before = firstCalls;
    raise(signal);
    for (int i = 0; i < 1000 && firstCalls == before; ++i) Sleep(2);
    EXPECT_EQ(firstCalls, before + 1);
    EXPECT_EQ(lastCalls, firstCalls);
  }
  EXPECT_NE(handlerThread, GetCurrentThreadId());
  EXPECT_TRUE(SetConsoleCtrlHandler(LastLetsGoOn, FALSE));
  EXPECT_TRUE(SetConsoleCtrlHandler(First, FALSE));
  EXPECT_FALSE(SetConsoleCtrlHandler(First, FALSE));
}

// With no handler left, a signal must end the process as it does any other. (Suites of this name run first,
// before a thread listens that a copy of the process would lack.)
TEST(ConsoleDeathTest, SignalThatNobodyTakesEndsTheProcess) {
  EXPECT_EXIT(
      {
        SetConsoleCtrlHandler(LastLetsGoOn, TRUE);
        raise(SIGINT);
        Sleep(20'000);
        _exit(0);
      },
      testing::KilledBySignal(SIGINT), "");
}
