#include <gtest/gtest.h>
#include <windows.h>

#include "platform/machine_settings.h"

namespace {

uint64_t Ticks(const FILETIME& time) {
  return static_cast<uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}
uint64_t Ticks(const SYSTEMTIME& time) {
  FILETIME result = {};
  EXPECT_TRUE(SystemTimeToFileTime(&time, &result));
  return Ticks(result);
}

constexpr int64_t kTicksPerHour = 36'000'000'000;

}  // namespace

// Times of files would be off by days around leap years, or by the fraction of a second.
TEST(Time, DatesAndTicksAgree) {
  struct {
    SYSTEMTIME time;
    uint64_t ticks;
  } const cases[] = {
      {{1601, 1, 1, 1, 0, 0, 0, 0}, 0},
      {{1970, 1, 4, 1, 0, 0, 0, 0}, 116444736000000000},
      {{2000, 2, 2, 29, 23, 59, 59, 999}, 125963423999990000},
      {{2024, 3, 2, 5, 7, 8, 9, 45}, 133540960890450000},
      {{9999, 12, 5, 31, 23, 59, 59, 999}, 2650467743999990000},
  };
  for (const auto& [time, ticks] : cases) {
    EXPECT_EQ(Ticks(time), ticks);
    const uint64_t more = ticks + 9999;  // less than a millisecond is cut off
    FILETIME fileTime = {static_cast<DWORD>(more), static_cast<DWORD>(more >> 32)};
    SYSTEMTIME back = {};
    ASSERT_TRUE(FileTimeToSystemTime(&fileTime, &back));
    EXPECT_EQ(memcmp(&back, &time, sizeof(time)), 0) << ticks << ": day of week " << back.wDayOfWeek;
  }
}

TEST(Time, ImpossibleDatesFail) {
  FILETIME fileTime = {};
  for (const SYSTEMTIME& time :
       {SYSTEMTIME{1600, 1, 0, 1, 0, 0, 0, 0}, SYSTEMTIME{2023, 2, 0, 29, 0, 0, 0, 0},
        SYSTEMTIME{2023, 13, 0, 1, 0, 0, 0, 0}, SYSTEMTIME{2023, 1, 0, 1, 24, 0, 0, 0},
        SYSTEMTIME{2023, 1, 0, 0, 0, 0, 0, 0}}) {
    EXPECT_FALSE(SystemTimeToFileTime(&time, &fileTime));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  }
}

// Log entries would carry the time of another zone than the machine's.
TEST(Time, LocalTimeIsThatOfTheMachine) {
  ChangedSettings machine;
  for (auto [zone, hours] : {std::pair{"Etc/GMT+5", -5}, {"Etc/GMT-14", 14}, {"", 0}}) {
    machine.settings.timeZone = zone;
    SYSTEMTIME local, universal;
    GetSystemTime(&universal);
    GetLocalTime(&local);
    const auto difference = static_cast<int64_t>(Ticks(local) - Ticks(universal)) - hours * kTicksPerHour;
    EXPECT_GE(difference, 0) << zone;
    EXPECT_LT(difference, 100'000'000) << zone;
  }
}
