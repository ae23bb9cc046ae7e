#include "progress_line.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr double kMemorySeconds = 5;  // how long an earlier rate still counts

size_t Columns(const std::string& utf8) {
  return static_cast<size_t>(
      std::count_if(utf8.begin(), utf8.end(), [](char byte) { return (byte & 0xc0) != 0x80; }));
}

// The end of a path says more than its start.
std::string ShortenedFront(const std::string& utf8, size_t columns) {
  if (Columns(utf8) <= columns) return utf8;
  if (columns < 4) return std::string();
  size_t start = utf8.size();
  for (size_t kept = 0; kept < columns - 3 && start > 0;) {
    --start;
    if ((utf8[start] & 0xc0) != 0x80) ++kept;
  }
  return "..." + utf8.substr(start);
}

std::string Numbers(const ProgressState& state) {
  if (state.isFlushing) return "writing to disk";
  if (state.isCounting) {
    return "counting  " + EntriesText(state.itemsTotal) + "  " + BytesText(state.bytesTotal);
  }
  char text[160];
  snprintf(text, sizeof(text), "%3d.%d%%  %lld/%lld entries  %s/%s", state.perMille / 10, state.perMille % 10,
           static_cast<long long>(state.items), static_cast<long long>(state.itemsTotal),
           BytesText(state.bytes).c_str(), BytesText(state.bytesTotal).c_str());
  std::string numbers = text;
  if (state.bytesPerSecond > 0)
    numbers += "  " + BytesText(static_cast<int64_t>(state.bytesPerSecond)) + "/s";
  if (state.secondsLeft >= 0) numbers += "  " + DurationText(state.secondsLeft) + " left";
  return numbers;
}

}  // namespace

std::string BytesText(int64_t bytes) {
  static constexpr const char* kUnits[] = {"KiB", "MiB", "GiB", "TiB", "PiB"};
  char text[32];
  if (bytes < 1024) {
    snprintf(text, sizeof(text), "%lld B", static_cast<long long>(bytes));
    return text;
  }
  double amount = static_cast<double>(bytes) / 1024;
  size_t unit = 0;
  // 1023.95 would be written as 1024.0.
  while (amount >= 1023.95 && unit + 1 < std::size(kUnits)) {
    amount /= 1024;
    ++unit;
  }
  snprintf(text, sizeof(text), "%.1f %s", amount, kUnits[unit]);
  return text;
}

std::string EntriesText(int64_t entries) {
  return std::to_string(entries) + (entries == 1 ? " entry" : " entries");
}

std::string DurationText(int64_t seconds) {
  char text[32];
  const auto hours = static_cast<long long>(seconds / 3600);
  const int minutes = static_cast<int>(seconds / 60 % 60), rest = static_cast<int>(seconds % 60);
  if (hours > 0) {
    snprintf(text, sizeof(text), "%lld:%02d:%02d", hours, minutes, rest);
  } else {
    snprintf(text, sizeof(text), "%d:%02d", minutes, rest);
  }
  return text;
}

std::string ProgressText(const ProgressState& state, int columns) {
  const size_t room = columns > 1 ? static_cast<size_t>(columns) - 1 : 0;
  const std::string numbers = "  " + Numbers(state);
  if (numbers.size() >= room) return numbers.substr(2, room);
  return ShortenedFront(state.phase, room - numbers.size()) + numbers;
}

void RateMeter::Restart(Clock::time_point now) {
  last_ = now;
  lastBytes_ = 0;
  rate_ = 0;
}

void RateMeter::Add(int64_t bytes, Clock::time_point now) {
  const double seconds = std::chrono::duration<double>(now - last_).count();
  if (bytes < lastBytes_) {
    Restart(now);
    return;
  }
  if (seconds < 0.2) return;  // too short a time tells nothing
  const double rate = static_cast<double>(bytes - lastBytes_) / seconds;
  const double weight = rate_ > 0 ? std::min(1.0, seconds / kMemorySeconds) : 1.0;
  rate_ += (rate - rate_) * weight;
  last_ = now;
  lastBytes_ = bytes;
}

int64_t RateMeter::SecondsLeft(int64_t bytes) const {
  return rate_ >= 1 ? static_cast<int64_t>(static_cast<double>(std::max<int64_t>(bytes, 0)) / rate_) : -1;
}
