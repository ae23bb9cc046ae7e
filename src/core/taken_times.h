// taken_times.h
//
// The milliseconds that the entries of a log section have taken. An entry's time is its key, so no two
// entries of a section may have the same.
#pragma once
#include <windows.h>

#include <cstdint>
#include <vector>

class TakenTimes {
 public:
  // Takes note of a time stamp as it stands in the file, 23 units. What is no time is passed over.
  void AddStamp(const wchar_t* stamp);
  void Add(const SYSTEMTIME& time);

  // `time`, or the next millisecond behind it that is free.
  SYSTEMTIME NextFree(const SYSTEMTIME& time) const;

  void Clear() { milliseconds_.clear(); }

 private:
  // Sorted, each once. The entries of a long run come in order, so that adding is cheap.
  std::vector<uint64_t> milliseconds_;
};
