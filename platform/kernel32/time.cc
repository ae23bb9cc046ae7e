// time.cc
//
// The clocks: the real time of day, in the time zone of the machine.
#include <windows.h>

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <mutex>

#include "machine/call.h"
#include "machine/machine.h"

using namespace machine;

namespace {

// FILETIMEs count tenths of microseconds from 1601 on.
constexpr int64_t kTicksPerMillisecond = 10'000;
constexpr int64_t kTicksPerSecond = 1000 * kTicksPerMillisecond;
constexpr int64_t kTicksPerDay = 86'400 * kTicksPerSecond;
constexpr std::chrono::sys_days kEpoch = std::chrono::year(1601) / 1 / 1;

void SetFileTimeTo(FILETIME* time, uint64_t ticks) {
  time->dwLowDateTime = static_cast<DWORD>(ticks);
  time->dwHighDateTime = static_cast<DWORD>(ticks >> 32);
}
uint64_t TicksOf(const FILETIME& time) {
  return static_cast<uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

uint64_t ToTicks(const timespec& time) {
  constexpr int64_t kUnixEpochDays = (std::chrono::sys_days{} - kEpoch).count();
  return static_cast<uint64_t>(kUnixEpochDays * kTicksPerDay + time.tv_sec * kTicksPerSecond +
                               time.tv_nsec / 100);
}

timespec Now() {
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  return now;
}

SYSTEMTIME ToSystemTime(uint64_t ticks) {
  auto days = kEpoch + std::chrono::days(ticks / kTicksPerDay);
  std::chrono::year_month_day date(days);
  uint64_t rest = ticks % kTicksPerDay / kTicksPerMillisecond;
  SYSTEMTIME time = {};
  time.wYear = static_cast<WORD>(static_cast<int>(date.year()));
  time.wMonth = static_cast<WORD>(static_cast<unsigned>(date.month()));
  time.wDay = static_cast<WORD>(static_cast<unsigned>(date.day()));
  time.wDayOfWeek = static_cast<WORD>(std::chrono::weekday(days).c_encoding());
  time.wHour = static_cast<WORD>(rest / 3'600'000);
  time.wMinute = static_cast<WORD>(rest / 60'000 % 60);
  time.wSecond = static_cast<WORD>(rest / 1000 % 60);
  time.wMilliseconds = static_cast<WORD>(rest % 1000);
  return time;
}

// The C library knows the zones, by a variable of the environment that is ours alone.
void UseTimeZone(const std::string& zone) {
  static std::mutex& lock = *new std::mutex;
  static std::string& used = *new std::string("-");
  std::lock_guard hold(lock);
  if (used == zone) return;
  if (!zone.empty() && zone != "UTC" && !std::filesystem::exists("/usr/share/zoneinfo/" + zone)) {
    Unsupported("GetLocalTime", ("the time zone \"" + zone + "\" of machine.ini").c_str());
  }
  setenv("TZ", zone.empty() || zone == "UTC" ? "UTC0" : (":" + zone).c_str(), 1);
  tzset();
  used = zone;
}

}  // namespace

void WINAPI GetSystemTimeAsFileTime(FILETIME* time) {
  EnterCall();
  SetFileTimeTo(time, ToTicks(Now()));
}

void WINAPI GetSystemTime(SYSTEMTIME* time) {
  EnterCall();
  *time = ToSystemTime(ToTicks(Now()));
}

void WINAPI GetLocalTime(SYSTEMTIME* time) {
  EnterCall();
  UseTimeZone(ThisMachine().settings.timeZone);
  timespec now = Now();
  tm local;
  localtime_r(&now.tv_sec, &local);
  now.tv_sec += local.tm_gmtoff;
  *time = ToSystemTime(ToTicks(now));
}

BOOL WINAPI FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* systemTime) {
  EnterCall();
  uint64_t ticks = TicksOf(*fileTime);
  if (ticks > INT64_MAX) return Fail(ERROR_INVALID_PARAMETER);
  *systemTime = ToSystemTime(ticks);
  return TRUE;
}

BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* systemTime, FILETIME* fileTime) {
  EnterCall();
  const SYSTEMTIME& time = *systemTime;
  std::chrono::year_month_day date(std::chrono::year(time.wYear), std::chrono::month(time.wMonth),
                                   std::chrono::day(time.wDay));
  if (!date.ok() || time.wYear < 1601 || time.wYear > 30827 || time.wHour > 23 || time.wMinute > 59 ||
      time.wSecond > 59 || time.wMilliseconds > 999) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  int64_t milliseconds =
      ((time.wHour * 60 + time.wMinute) * 60 + time.wSecond) * int64_t{1000} + time.wMilliseconds;
  SetFileTimeTo(fileTime,
                static_cast<uint64_t>((std::chrono::sys_days(date) - kEpoch).count() * kTicksPerDay +
                                      milliseconds * kTicksPerMillisecond));
  return TRUE;
}

LONG WINAPI CompareFileTime(const FILETIME* a, const FILETIME* b) {
  EnterCall();
  uint64_t first = TicksOf(*a);
  uint64_t second = TicksOf(*b);
  return first < second ? -1 : first > second;
}

ULONGLONG WINAPI GetTickCount64() {
  EnterCall();
  timespec now;
  clock_gettime(CLOCK_BOOTTIME, &now);
  return static_cast<ULONGLONG>(now.tv_sec) * 1000 + static_cast<ULONGLONG>(now.tv_nsec) / 1'000'000;
}
DWORD WINAPI GetTickCount() { return static_cast<DWORD>(GetTickCount64()); }

// Nanoseconds.
BOOL WINAPI QueryPerformanceCounter(LARGE_INTEGER* counter) {
  EnterCall();
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  counter->QuadPart = now.tv_sec * int64_t{1'000'000'000} + now.tv_nsec;
  return TRUE;
}
BOOL WINAPI QueryPerformanceFrequency(LARGE_INTEGER* frequency) {
  EnterCall();
  frequency->QuadPart = 1'000'000'000;
  return TRUE;
}
