#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>
#include <windows.h>

namespace {

constexpr int kTaken = 7;
DWORD raisingThread = 0;

BOOL WINAPI EndsTheProcess(DWORD event) {
  _exit(event == CTRL_C_EVENT && GetCurrentThreadId() != raisingThread ? kTaken : 1);
}
BOOL WINAPI LetsGoOn(DWORD) { return FALSE; }

void RaiseUnder(PHANDLER_ROUTINE handler, int signal) {
  raisingThread = GetCurrentThreadId();
  SetConsoleCtrlHandler(EndsTheProcess, TRUE);
  SetConsoleCtrlHandler(EndsTheProcess, FALSE);  // isn't asked any more
  SetConsoleCtrlHandler(handler, TRUE);
  raise(signal);
  Sleep(20'000);
  _exit(0);
}

}  // namespace

// Ctrl+C would end the program in the middle of a file instead of stopping the run; and a signal that no
// handler takes must end the process as it does any other. (Suites of this name run first, before a thread
// listens that a copy of the process would lack.)
TEST(ConsoleDeathTest, ASignalIsTheHandlersOrEndsTheProcess) {
  for (const int signal : {SIGINT, SIGTERM}) {
    EXPECT_EXIT(RaiseUnder(EndsTheProcess, signal), testing::ExitedWithCode(kTaken), "");
    EXPECT_EXIT(RaiseUnder(LetsGoOn, signal), testing::KilledBySignal(signal), "");
  }
}
