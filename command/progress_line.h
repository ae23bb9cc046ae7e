// progress_line.h
//
// The line that shows how far a run is: phase, share, entries, bytes, rate and time left of the folder
// tree in hand. Plain texts; ConsoleOutput draws them.
#pragma once
#include <chrono>
#include <cstdint>
#include <string>

struct ProgressState {
  std::string phase;  // UTF-8, escaped
  bool isCounting = false;
  bool isFlushing = false;  // all is copied, and the system writes what it has held back
  int32_t perMille = 0;
  int64_t items = 0, itemsTotal = 0;
  int64_t bytes = 0, bytesTotal = 0;
  double bytesPerSecond = 0;  // 0: not known yet
  int64_t secondsLeft = -1;   // -1: not known
};

// At most `columns` - 1 wide, so that no terminal breaks the line; the phase is what gets shortened.
std::string ProgressText(const ProgressState& state, int columns);

std::string BytesText(int64_t bytes);       // "12.3 MiB"
std::string EntriesText(int64_t entries);   // "1 entry" or "12 entries"
std::string DurationText(int64_t seconds);  // "1:02:03" or "2:03"

// The rate of a tree, smoothed over some seconds.
class RateMeter {
 public:
  using Clock = std::chrono::steady_clock;

  void Restart(Clock::time_point now);
  // Takes what has been done until `now`; counters that have gone back begin anew.
  void Add(int64_t bytes, Clock::time_point now);
  double BytesPerSecond() const { return rate_; }
  int64_t SecondsLeft(int64_t bytes) const;  // -1 where no rate is known

 private:
  Clock::time_point last_;
  int64_t lastBytes_ = 0;
  double rate_ = 0;
};
