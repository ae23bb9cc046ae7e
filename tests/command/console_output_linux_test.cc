// The line of progress on a terminal.
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "console_output.h"

namespace {

// What `write` sends to a terminal that is standard output and standard error of a process.
std::string OnTerminal(const std::function<void(ConsoleOutput&)>& write) {
  int terminal = -1;
  winsize size = {24, 40, 0, 0};
  const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
  if (child == 0) {
    ConsoleOutput output;
    write(output);
    _exit(0);
  }
  std::string seen;
  char bytes[256];
  for (ssize_t count; (count = read(terminal, bytes, sizeof(bytes))) > 0;)
    seen.append(bytes, static_cast<size_t>(count));
  close(terminal);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  return seen;
}

// The rest of a longer line behind a shorter one, or of the progress behind a message, can't be read.
TEST(ConsoleOutput, DrawsOverTheLastLineAndClearsItForOthers) {
  EXPECT_EQ(
      OnTerminal([](ConsoleOutput& output) {
        output.Transient("a \xc3\xa4 longer line");
        output.Transient("short");
        output.Transient("shorter");
        output.Error("failed");
        output.Transient("x");
        output.Result("done");
        output.Transient("y");
        output.Transient("");
        output.Result(std::to_string(output.TerminalColumns()) + (output.HasTerminal() ? " yes" : " no"));
      }),
      "\ra \xc3\xa4 longer line\rshort          \rshorter\r       \rfailed\r\n\rx\r \rdone\r\n\ry\r \r"
      "40 yes\r\n");
}

// A log of a job that is full of half-drawn lines.
TEST(ConsoleOutput, DrawsNoProgressIntoAFile) {
  std::string results, errors;
  ConsoleOutput output(&results, &errors);
  output.Transient("progress");
  output.Error("failed");
  EXPECT_FALSE(output.HasTerminal());
  EXPECT_EQ(errors, "failed\n");
}

}  // namespace
