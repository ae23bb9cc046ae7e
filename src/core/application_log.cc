#include "core/application_log.h"

#include <algorithm>

#include "core/format_date_time.h"
#include "core/log_file.h"

namespace {

constexpr uint64_t kPatience = 2000;  // milliseconds
constexpr int64_t kUnit = sizeof(wchar_t);

// What stands behind the place of an entry is written again with it as long as it is no more than this:
// one call, of one page or two, is as whole as an append.
constexpr int64_t kSmallTail = 4096;  // bytes

constexpr int64_t kWindow = 128;  // bytes looked at on either side of the place

int64_t ByteCount(const WString& text) { return int64_t{text.Length()} * kUnit; }

bool SeekTo(HANDLE file, int64_t position) {
  LARGE_INTEGER distance;
  distance.QuadPart = position;
  return SetFilePointerEx(file, distance, nullptr, FILE_BEGIN) != 0;
}

bool WriteAt(HANDLE file, int64_t position, const void* bytes, int64_t count) {
  DWORD written = 0;
  if (!SeekTo(file, position)) return false;
  if (!WriteFile(file, bytes, static_cast<DWORD>(count), &written, nullptr)) return false;
  if (written != count) SetLastError(ERROR_DISK_FULL);
  return written == count;
}

bool ReadAt(HANDLE file, int64_t position, void* bytes, int64_t count) {
  DWORD read = 0;
  return SeekTo(file, position) && ReadFile(file, bytes, static_cast<DWORD>(count), &read, nullptr) &&
         read == count;
}

// An entry is one line.
WString OneLine(const wchar_t* message) {
  WString line(message);
  line.Replace(L"\r\n", L" ");
  line.Replace(L"\r", L" ");
  line.Replace(L"\n", L" ");
  return line;
}

bool IsWaiting(DWORD error) {
  return error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED || error == ERROR_BUSY;
}

}  // namespace

ApplicationLog::ApplicationLog()
    : isBusy_(false), isPatient_(true), hasRoom_(false), isKnown_(false), bytesWritten_(0) {}

ApplicationLog::~ApplicationLog() { GiveBackRoom(GetTickCount64() + (isPatient_ ? kPatience : 0)); }

// Not a mutex: the thread that is inside may have been suspended by the one that wants to write.
bool ApplicationLog::Claim(uint64_t deadline) {
  while (isBusy_.exchange(true, std::memory_order_acquire)) {
    if (GetTickCount64() >= deadline) return false;
    Sleep(1);
  }
  return true;
}

bool ApplicationLog::Write(const wchar_t* path, const wchar_t* section, const wchar_t* message,
                           const SYSTEMTIME& time) {
  uint64_t deadline = GetTickCount64() + (isPatient_ ? kPatience : 0);
  if (!Claim(deadline)) {
    isPatient_ = false;
    SetLastError(ERROR_BUSY);
    return false;
  }
  SwitchTo(path, section, deadline);
  bool isWritten = WriteLocked(message, time, deadline);
  DWORD error = GetLastError();
  isPatient_ = isWritten || !IsWaiting(error);
  if (!isWritten) isKnown_ = false;
  isBusy_.store(false, std::memory_order_release);
  SetLastError(error);
  return isWritten;
}

void ApplicationLog::SwitchTo(const wchar_t* path, const wchar_t* section, uint64_t deadline) {
  if (path_ == path && section_ == section) return;
  GiveBackRoom(deadline);
  path_ = path;
  section_ = section;
  isKnown_ = false;
  bytesWritten_ = 0;
}

bool ApplicationLog::WriteLocked(const wchar_t* message, const SYSTEMTIME& time, uint64_t deadline) {
  UniqueFile lock = LockLog(path_.CStr(), deadline);
  if (!lock) return false;
  UniqueFile file;
  if (!FindPlace(file, deadline)) return false;

  SYSTEMTIME free = layout_.times.NextFree(time);
  WString stamp, text;
  FormatDateTime(free, stamp);
  if (layout_.needsLineEnd) text.Append(L"\r\n");
  if (!layout_.hasSection) text.Concat(text.CStr(), L"[", section_.CStr(), L"]\r\n");
  text.Concat(text.CStr(), stamp.CStr(), L"=", OneLine(message).CStr(), L"\r\n");
  if (!Place(file, text)) return false;
  layout_.times.Add(free);
  layout_.needsLineEnd = false;
  layout_.hasSection = true;
  bytesWritten_ += ByteCount(text);
  return true;
}

// Opens the log, makes it where it is missing, and fills `layout_`, which is believed from the last entry
// if the file still looks the same around the place.
bool ApplicationLog::FindPlace(UniqueFile& file, uint64_t deadline) {
  file = OpenLog(path_.CStr(), deadline);
  if (!file && GetLastError() == ERROR_FILE_NOT_FOUND) {
    if (!WriteWholeLog(path_.CStr(), kNewLogText)) return false;
    file = OpenLog(path_.CStr(), deadline);
  }
  if (!file) return false;
  std::vector<uint8_t> window;
  if (isKnown_ && ReadWindow(file.Get(), window) && window == window_) return true;
  if (!ReadLogLayout(file.Get(), section_.CStr(), layout_)) return false;
  if (layout_.isUtf16) return true;
  if (!ConvertLog(path_.CStr(), file)) return false;
  file = OpenLog(path_.CStr(), deadline);
  return file && ReadLogLayout(file.Get(), section_.CStr(), layout_) && layout_.isUtf16;
}

// The bytes around the place. False if the file has another size by now.
bool ApplicationLog::ReadWindow(HANDLE file, std::vector<uint8_t>& window) const {
  LARGE_INTEGER size;
  if (!GetFileSizeEx(file, &size) || size.QuadPart != layout_.size) return false;
  int64_t from = std::max<int64_t>(0, layout_.insertAt - kWindow);
  int64_t to = std::min(layout_.size, layout_.insertAt + kWindow);
  window.resize(static_cast<size_t>(to - from));
  return ReadAt(file, from, window.data(), to - from);
}

bool ApplicationLog::Place(UniqueFile& file, const WString& text) {
  int64_t bytes = ByteCount(text);
  int64_t left = layout_.room - bytes;
  // What is left must be a line of at least one blank, or nothing.
  bool fitsRoom = left == 0 || left > 2 * kUnit;
  if (layout_.room > 0 && fitsRoom) return PlaceInRoom(file.Get(), text, bytes);
  if (layout_.room == 0 && layout_.Tail() <= kSmallTail) return PlaceBeforeTail(file.Get(), text, bytes);
  return PlaceByRewriting(file, text);
}

bool ApplicationLog::PlaceInRoom(HANDLE file, const WString& text, int64_t bytes) {
  if (!WriteAt(file, layout_.insertAt, text.CStr(), bytes)) return false;
  layout_.insertAt += bytes;
  layout_.room -= bytes;
  hasRoom_ = layout_.room > 0;
  isKnown_ = ReadWindow(file, window_);
  return true;
}

bool ApplicationLog::PlaceBeforeTail(HANDLE file, const WString& text, int64_t bytes) {
  int64_t tail = layout_.Tail();
  std::vector<uint8_t> block(static_cast<size_t>(bytes + tail));
  const auto* start = reinterpret_cast<const uint8_t*>(text.CStr());
  std::copy(start, start + bytes, block.begin());
  if (tail > 0 && !ReadAt(file, layout_.insertAt, block.data() + bytes, tail)) return false;
  if (!WriteAt(file, layout_.insertAt, block.data(), bytes + tail)) {
    // A full disk takes the part of the block that lies inside the file.
    DWORD error = GetLastError();
    WriteAt(file, layout_.insertAt, block.data() + bytes, tail);
    if (SeekTo(file, layout_.size)) SetEndOfFile(file);
    SetLastError(error);
    return false;
  }
  layout_.insertAt += bytes;
  layout_.size += bytes;
  hasRoom_ = false;
  isKnown_ = ReadWindow(file, window_);
  return true;
}

// A long run gets room for as much as it has written already, so that the file is written again at its
// 1st, 2nd, 4th, 8th … entry only; a short one leaves no trace.
bool ApplicationLog::PlaceByRewriting(UniqueFile& file, const WString& text) {
  int64_t room = layout_.Tail() > 0 ? bytesWritten_ : 0;
  isKnown_ = false;
  if (!RewriteLog(path_.CStr(), file, layout_, text, room)) return false;
  hasRoom_ = room > 0;
  return true;
}

void ApplicationLog::GiveBackRoom(uint64_t deadline) {
  if (!hasRoom_) return;
  hasRoom_ = false;
  UniqueFile lock = LockLog(path_.CStr(), deadline);
  if (!lock) return;
  UniqueFile file = OpenLog(path_.CStr(), deadline);
  LogLayout layout;
  if (!file || !ReadLogLayout(file.Get(), section_.CStr(), layout) || layout.room == 0) return;
  RewriteLog(path_.CStr(), file, layout, L"", 0);
}

bool ResetLog(const wchar_t* path) {
  UniqueFile lock = LockLog(path, GetTickCount64() + kPatience);
  return lock && WriteWholeLog(path, kResetLogText);
}
