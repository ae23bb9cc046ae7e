// walk_path.h
//
// The path of a walk in hand: names go on at its end and come off again, in one buffer that has room for
// the longest path that the system takes, so that nothing is allocated for an entry.
#pragma once
#include <windows.h>

#include <cstdint>

#include "foundation/wstring.h"

class WalkPath {
 public:
  static constexpr int32_t kMostUnits = 32767;  // of the system's calls, with the terminator

  // `root` gets the long path prefix. One that is too long leaves an empty path.
  explicit WalkPath(const wchar_t* root);
  WalkPath(const WalkPath&) = delete;
  WalkPath& operator=(const WalkPath&) = delete;
  ~WalkPath();

  // Adds a backslash, unless there is one, and `name`. False if there is no room; the path stays.
  bool Push(const wchar_t* name);

  // Back to an earlier length.
  void Cut(int32_t length);

  // The first `length` units of another path.
  void AssignFolder(const WalkPath& other, int32_t length);

  int32_t Length() const { return length_; }
  const wchar_t* CStr() const { return units_; }

 private:
  wchar_t* units_;
  int32_t length_;
};

// A path without its long path prefix, as the log and people see it.
WString PathForPeople(const wchar_t* path);
