// log_layout.h
//
// Where in the log file the next entry of a section goes.
#pragma once
#include <windows.h>

#include <cstdint>

#include "core/taken_times.h"

inline constexpr wchar_t kByteOrderMark = 0xfeff;

// All positions and sizes are in bytes.
struct LogLayout {
  int64_t size = 0;      // of the file
  int64_t insertAt = 0;  // behind the section's last entry; the file's end if there is no such section
  int64_t room = 0;      // of a line of blanks at `insertAt`, with its line end; 0 if there is none
  bool isUtf16 = false;  // the file begins with the mark of UTF-16 little endian
  bool hasSection = false;
  bool needsLineEnd = false;  // the line in front of `insertAt` has none
  TakenTimes times;           // of the section's entries

  int64_t Tail() const { return size - insertAt - room; }  // what stands behind
};

// Reads the whole file, in pieces, so that its size costs no memory. `section` is the text between the
// brackets, found without regard to case and to blanks at its ends; the first such section counts. False
// if the file can't be read. Nothing but `size` and `isUtf16` is filled for a file that isn't UTF-16.
bool ReadLogLayout(HANDLE file, const wchar_t* section, LogLayout& layout);
