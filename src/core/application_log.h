// application_log.h
//
// The application log: a UTF-16 text in the shape of an INI file, one section for each screen, one line
// for each entry. docs/application-log.md describes the file, and how an entry gets into its middle
// without the whole file being written again.
#pragma once
#include <windows.h>

#include <atomic>
#include <cstdint>
#include <vector>

#include "core/log_layout.h"
#include "foundation/unique_handle.h"
#include "foundation/wstring.h"

inline constexpr wchar_t kNewLogText[] =
    L"\r\n[ Backup ]\r\n[ Restore ]\r\n[ Restore from ]\r\n[ Copy/Move user data ]\r\n[ Home ]\r\n";
inline constexpr wchar_t kResetLogText[] = L"\r\n[ Backup ]\r\n[ Restore ]\r\n[ Restore from ]\r\n";

// The writer. The file is open only while an entry is written, and other programs may write to it in
// between. What is kept from one entry to the next is where the next one goes; it is looked at again
// before it is believed.
class ApplicationLog {
 public:
  ApplicationLog();
  ApplicationLog(const ApplicationLog&) = delete;
  ApplicationLog& operator=(const ApplicationLog&) = delete;
  ~ApplicationLog();  // gives back room that is left in the file

  // Adds the line "<time>=<message>" at the end of `section` (the text between the brackets). Makes the
  // file with its five sections, or the section, where it is missing. Line ends in the message become
  // blanks, and a millisecond that is taken in the section gives way to the next free one.
  //
  // Callable from any thread. Waits a bounded time (about two seconds, then no more until an entry
  // succeeds again) for a program that holds the file. False if the entry isn't in the file; the reason
  // is in GetLastError().
  bool Write(const wchar_t* path, const wchar_t* section, const wchar_t* message, const SYSTEMTIME& time);

 private:
  bool Claim(uint64_t deadline);
  void SwitchTo(const wchar_t* path, const wchar_t* section, uint64_t deadline);
  bool WriteLocked(const wchar_t* message, const SYSTEMTIME& time, uint64_t deadline);
  bool FindPlace(UniqueFile& file, uint64_t deadline);
  bool Place(UniqueFile& file, const WString& text);
  bool PlaceInRoom(HANDLE file, const WString& text, int64_t bytes);
  bool PlaceBeforeTail(HANDLE file, const WString& text, int64_t bytes);
  bool PlaceByRewriting(UniqueFile& file, const WString& text);
  bool ReadWindow(HANDLE file, std::vector<uint8_t>& window) const;
  void GiveBackRoom(uint64_t deadline);

  std::atomic<bool> isBusy_;     // one thread at a time; waited for with a bound, so no mutex
  std::atomic<bool> isPatient_;  // false after a wait in vain
  bool hasRoom_;                 // a line of blanks was left in the file
  bool isKnown_;                 // `layout_` describes the file as it was left
  WString path_, section_;
  LogLayout layout_;
  std::vector<uint8_t> window_;  // what stood around `layout_.insertAt`
  int64_t bytesWritten_;         // of entries, in this section, by this object
};

// Makes the file anew with the text of a reset log, whatever it held.
bool ResetLog(const wchar_t* path);
