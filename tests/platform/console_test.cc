#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <windows.h>

#include <atomic>
#include <string>

namespace {

// Standard error goes elsewhere while one of these lives.
class ErrorStreamTo {
 public:
  explicit ErrorStreamTo(int descriptor) : before_(dup(2)) { dup2(descriptor, 2); }
  ~ErrorStreamTo() {
    dup2(before_, 2);
    close(before_);
  }

 private:
  int before_;
};

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

// A progress line would be drawn into a file, or not at all on a terminal.
TEST(Console, OnlyATerminalIsAConsole) {
  HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
  DWORD mode, written;
  CONSOLE_SCREEN_BUFFER_INFO info;
  int file = open("/dev/null", O_WRONLY);
  {
    ErrorStreamTo redirected(file);
    EXPECT_FALSE(GetConsoleMode(error, &mode));
    EXPECT_FALSE(GetConsoleScreenBufferInfo(error, &info));
    EXPECT_FALSE(WriteConsoleW(error, L"x", 1, &written, nullptr));
  }
  close(file);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));

  int master, slave;
  winsize size = {40, 123, 0, 0};
  ASSERT_EQ(openpty(&master, &slave, nullptr, nullptr, &size), 0);
  {
    ErrorStreamTo terminal(slave);
    EXPECT_TRUE(GetConsoleMode(error, &mode));
    ASSERT_TRUE(GetConsoleScreenBufferInfo(error, &info));
    EXPECT_EQ(info.dwSize.X, 123);
    EXPECT_EQ(info.srWindow.Right - info.srWindow.Left, 122);
    EXPECT_TRUE(WriteConsoleW(error, L"\x00e4\x20ac", 2, &written, nullptr));
    EXPECT_EQ(written, 2u);
  }
  char bytes[20];
  ssize_t count = read(master, bytes, sizeof(bytes));
  EXPECT_EQ(std::string(bytes, static_cast<size_t>(std::max<ssize_t>(count, 0))), "ä€");
  close(master);
  close(slave);
}

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
