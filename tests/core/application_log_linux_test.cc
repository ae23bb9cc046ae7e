// What the log promises when the program ends in the middle, and what long runs cost.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "machine/faults.h"
#include "support/log_text.h"

namespace {

struct FaultsOff {
  ~FaultsOff() { machine::ClearFaults(); }
};

class LogFaults : public testing::TestWithParam<size_t> {
 protected:
  // What stands in front of the entries, and behind them, with as many lines as the parameter says.
  const std::string kept_ = "[ Backup ]\r\nkept\r\n";
  const std::string rest_ = "[ Restore ]\r\n" + LogPlace::Lines(GetParam(), "old");
  FaultsOff off_;

  static std::string Line(int number, const std::string& message) {
    return LogPlace::Stamp(number) + "=" + message + "\r\n";
  }
};

// Ended before any change of the disk: the file is whole, and every entry that was said to be written is
// there. The next program goes on with it and leaves it clean.
TEST_P(LogFaults, LoseNothingWhenTheProgramEnds) {
  constexpr int kEntries = 12;
  for (uint64_t n = 1;; n++) {
    LogPlace log;
    log.Fill(kept_ + rest_);
    int pipes[2];
    ASSERT_EQ(pipe(pipes), 0);
    pid_t child = fork();
    if (child == 0) {
      machine::FaultPlan plan;
      plan.endAtChange = n;
      machine::SetFaults(plan);
      for (int i = 0; i < kEntries; i++) {
        char mark = log.Write(L" Backup ", "entry " + std::to_string(i)) ? 'w' : 'f';
        if (write(pipes[1], &mark, 1) != 1) _exit(1);
      }
      log.Close();
      _exit(0);
    }
    close(pipes[1]);
    int status = 0;
    waitpid(child, &status, 0);
    char marks[kEntries];
    ssize_t written = read(pipes[0], marks, sizeof(marks));
    close(pipes[0]);
    ASSERT_TRUE(WIFEXITED(status) && (WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == 99));

    std::string expected = kept_;
    for (int i = 0; i < written; i++) {
      EXPECT_EQ(marks[i], 'w');
      expected += Line(i, "entry " + std::to_string(i));
    }
    std::string next = Line(static_cast<int>(written), "entry " + std::to_string(written));
    std::string text = log.TextWithoutBlankLines();
    // The entry in hand may have got there just before the end.
    EXPECT_TRUE(text == expected + rest_ || text == expected + next + rest_)
        << "change " << n << ": " << text;
    std::string before = text.substr(0, text.size() - rest_.size());
    EXPECT_TRUE(log.Write(L" Backup ", "after"));
    log.Close();
    text = log.Text();
    EXPECT_TRUE(text.starts_with(before) && text.ends_with("=after\r\n" + rest_))
        << "change " << n << ": " << text;
    EXPECT_EQ(text.find("  "), std::string::npos) << "change " << n;
    if (WEXITSTATUS(status) == 0) break;
  }
}

// Every call may fail: an entry that isn't there was said to be lost, and nothing else is lost with it.
TEST_P(LogFaults, SayWhatTheyCouldNotWrite) {
  constexpr int kEntries = 6;
  for (uint64_t n = 1;; n++) {
    LogPlace log;
    log.Fill(kept_ + rest_);
    machine::FaultPlan plan;
    plan.nth = n;
    plan.error = ERROR_DISK_FULL;
    machine::SetFaults(plan);
    std::vector<bool> written;
    for (int i = 0; i < kEntries; i++)
      written.push_back(log.Write(L" Backup ", "entry " + std::to_string(i)));
    log.Close();
    uint64_t calls = machine::FaultCalls();
    machine::ClearFaults();
    std::string text = log.TextWithoutBlankLines();
    for (int i = 0; i < kEntries; i++) {
      size_t count = LogPlace::Count(text, "=entry " + std::to_string(i) + "\r\n");
      EXPECT_EQ(count, written[static_cast<size_t>(i)] ? 1u : 0u) << "call " << n << ", entry " << i;
    }
    EXPECT_TRUE(text.ends_with(rest_)) << "call " << n;
    if (calls < n) break;
  }
}

// A full disk is when there is most to log; it must not cost what stands in the file already.
TEST_P(LogFaults, KeepTheFileWholeOnAFullDisk) {
  for (int64_t room = 0; room < 400; room += 3) {
    LogPlace log;
    log.Fill(kept_ + rest_);
    machine::FaultPlan plan;
    plan.bytesLeft = room;
    machine::SetFaults(plan);
    std::string expected = kept_;
    for (int i = 0; i < 5; i++) {
      std::string message = "entry " + std::to_string(i);
      if (log.Write(L" Backup ", message)) expected += Line(i, message);
      EXPECT_EQ(log.TextWithoutBlankLines(), expected + rest_) << room << " bytes left";
    }
    machine::ClearFaults();
    log.Close();
    EXPECT_EQ(log.Text(), expected + rest_) << room << " bytes left";
  }
}

// Two processes at once, as a program with windows and one of the console would be.
TEST_P(LogFaults, ShareTheFileWithAnotherProcess) {
  constexpr int kEntries = 150;
  LogPlace log;
  log.Fill(kept_ + rest_);
  std::vector<pid_t> children;
  for (int writer = 0; writer < 2; writer++) {
    pid_t child = fork();
    if (child == 0) {
      bool isGood = true;
      for (int i = 0; i < kEntries; i++) {
        isGood &= log.Write(L" Backup ", "w" + std::to_string(writer) + " " + std::to_string(i) + ".");
      }
      log.Close();
      _exit(isGood ? 0 : 1);
    }
    children.push_back(child);
  }
  for (pid_t child : children) {
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  std::string text = log.Text();
  for (int i = 0; i < 2 * kEntries; i++) {
    std::string entry = "=w" + std::to_string(i / kEntries) + " " + std::to_string(i % kEntries) + ".\r\n";
    EXPECT_EQ(LogPlace::Count(text, LogPlace::Stamp(i) + "=w"), 1u) << i;
    EXPECT_EQ(LogPlace::Count(text, entry), 1u) << entry;
  }
  EXPECT_TRUE(text.ends_with(rest_));
}

double BytesWritten() {
  std::ifstream file("/proc/self/io");
  std::string name;
  double number = 0;
  while (file >> name >> number && name != "wchar:") continue;
  return number;
}

// Ten times the failures must not cost much more than ten times as much.
TEST_P(LogFaults, CostNoMoreThanInProportion) {
  auto costOf = [this](int entries) {
    LogPlace log;
    log.Fill(kept_ + rest_);
    double before = BytesWritten();
    for (int i = 0; i < entries; i++) {
      EXPECT_TRUE(log.Write(L" Backup ",
                            "Error! Could not open source file: C:\\Users\\Anna\\file " + std::to_string(i)));
    }
    log.Close();
    return BytesWritten() - before;
  };
  double few = costOf(400);
  EXPECT_GT(few, 0);
  EXPECT_LT(costOf(4000), 12 * few);
}

INSTANTIATE_TEST_SUITE_P(LinesBehind, LogFaults, testing::Values(0, 500));

}  // namespace
