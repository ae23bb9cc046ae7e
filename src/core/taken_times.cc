#include "core/taken_times.h"

#include <algorithm>

namespace {

constexpr uint64_t kTicksInMillisecond = 10000;

// False for what is no point in time, such as the 30th of February.
bool ToMilliseconds(const SYSTEMTIME& time, uint64_t& milliseconds) {
  FILETIME ticks;
  if (!SystemTimeToFileTime(&time, &ticks)) return false;
  milliseconds =
      (static_cast<uint64_t>(ticks.dwHighDateTime) << 32 | ticks.dwLowDateTime) / kTicksInMillisecond;
  return true;
}

SYSTEMTIME ToSystemTime(uint64_t milliseconds) {
  uint64_t number = milliseconds * kTicksInMillisecond;
  FILETIME ticks = {static_cast<DWORD>(number), static_cast<DWORD>(number >> 32)};
  SYSTEMTIME time = {};
  FileTimeToSystemTime(&ticks, &time);
  return time;
}

// Reads a stamp by its form: digits in the places of "d", the others as they stand.
bool ParseStamp(const wchar_t* stamp, SYSTEMTIME& time) {
  constexpr wchar_t kForm[] = L"dddd/dd/dd dd:dd:dd:ddd";
  WORD fields[7] = {};
  int field = 0;
  for (int i = 0; kForm[i] != 0; i++) {
    if (kForm[i] != L'd') {
      if (stamp[i] != kForm[i]) return false;
      field++;
    } else {
      if (stamp[i] < L'0' || stamp[i] > L'9') return false;
      fields[field] = static_cast<WORD>(fields[field] * 10 + (stamp[i] - L'0'));
    }
  }
  time = {fields[0], fields[1], 0, fields[2], fields[3], fields[4], fields[5], fields[6]};
  return true;
}

}  // namespace

void TakenTimes::AddStamp(const wchar_t* stamp) {
  SYSTEMTIME time;
  if (ParseStamp(stamp, time)) Add(time);
}

void TakenTimes::Add(const SYSTEMTIME& time) {
  uint64_t taken;
  if (!ToMilliseconds(time, taken)) return;
  if (milliseconds_.empty() || milliseconds_.back() < taken) {
    milliseconds_.push_back(taken);
    return;
  }
  auto place = std::lower_bound(milliseconds_.begin(), milliseconds_.end(), taken);
  if (*place != taken) milliseconds_.insert(place, taken);
}

SYSTEMTIME TakenTimes::NextFree(const SYSTEMTIME& time) const {
  uint64_t wanted;
  if (!ToMilliseconds(time, wanted)) return time;
  auto first = std::lower_bound(milliseconds_.begin(), milliseconds_.end(), wanted);
  // In a run of taken milliseconds each stands as far behind `first` as it is later than `wanted`; the
  // end of that run is found by halving, since 20,000 failures may well make one run.
  size_t low = 0;
  size_t high = static_cast<size_t>(milliseconds_.end() - first);
  while (low < high) {
    size_t middle = low + (high - low) / 2;
    if (first[static_cast<ptrdiff_t>(middle)] == wanted + middle) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low == 0 ? time : ToSystemTime(wanted + low);
}
