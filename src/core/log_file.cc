#include "core/log_file.h"

#include <algorithm>
#include <vector>

#include "foundation/file_object.h"

namespace {

constexpr DWORD kRetryPause = 5;  // milliseconds
constexpr uint64_t kDeniedPatience = 200;
constexpr int64_t kPiece = 65536;  // bytes

WString SidePath(const wchar_t* path, const wchar_t* ending) {
  WString side;
  side.Concat(path, ending);
  return PathForCalls(side.CStr());
}

// Does once more what another program keeps from being done for a moment: it has the file open, or the
// file is about to go, which refuses access, too. Mostly, though, a refusal means that it will be for ever,
// so that is waited for less.
template <typename Try>
bool TryPatiently(uint64_t deadline, Try tryOnce) {
  uint64_t deniedSince = 0;
  for (;;) {
    if (tryOnce()) return true;
    DWORD error = GetLastError();
    uint64_t now = GetTickCount64();
    bool isDenied = error == ERROR_ACCESS_DENIED;
    if (!isDenied) deniedSince = 0;
    if (isDenied && deniedSince == 0) deniedSince = now;
    bool mayPass = isDenied ? now < deniedSince + kDeniedPatience : error == ERROR_SHARING_VIOLATION;
    if (!mayPass || now >= deadline) {
      SetLastError(error);
      return false;
    }
    Sleep(kRetryPause);
  }
}

template <typename OpenOnce>
UniqueFile OpenPatiently(uint64_t deadline, OpenOnce openOnce) {
  UniqueFile file;
  TryPatiently(deadline, [&] {
    file.Reset(openOnce());
    return static_cast<bool>(file);
  });
  return file;
}

// The new log in the making, beside the old one.
class NewLog {
 public:
  explicit NewLog(const wchar_t* path) : path_(PathForCalls(path)), newPath_(SidePath(path, L".new")) {
    DeleteFileW(newPath_.CStr());
    DWORD attributes = GetFileAttributesW(path_.CStr());
    if (attributes == INVALID_FILE_ATTRIBUTES) attributes = 0;
    attributes &= FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;
    file_.Reset(CreateFileW(newPath_.CStr(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                            attributes | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    isGood_ = static_cast<bool>(file_);
    if (!isGood_) error_ = GetLastError();
  }
  ~NewLog() {
    if (!file_) return;
    file_.Reset();
    DeleteFileW(newPath_.CStr());
  }

  void Write(const void* bytes, int64_t count) {
    DWORD written = 0;
    if (!isGood_ || count == 0) return;
    isGood_ = WriteFile(file_.Get(), bytes, static_cast<DWORD>(count), &written, nullptr) && written == count;
    if (!isGood_) error_ = written < count ? ERROR_DISK_FULL : GetLastError();
  }

  void WriteText(const WString& text) { Write(text.CStr(), int64_t{text.Length()} * sizeof(wchar_t)); }

  // A line of blanks of so many bytes, with its line end.
  void WriteRoom(int64_t bytes) {
    if (bytes == 0) return;
    std::vector<wchar_t> blanks(kPiece / sizeof(wchar_t), L' ');
    int64_t left = bytes - 2 * static_cast<int64_t>(sizeof(wchar_t));
    for (; left > 0; left -= std::min(left, kPiece)) Write(blanks.data(), std::min(left, kPiece));
    Write(L"\r\n", 2 * sizeof(wchar_t));
  }

  void CopyRange(HANDLE source, int64_t from, int64_t to) {
    std::vector<uint8_t> piece(kPiece);
    LARGE_INTEGER start;
    start.QuadPart = from;
    if (!SetFilePointerEx(source, start, nullptr, FILE_BEGIN)) return Fail(GetLastError());
    while (isGood_ && from < to) {
      DWORD read = 0;
      DWORD wanted = static_cast<DWORD>(std::min(to - from, kPiece));
      if (!ReadFile(source, piece.data(), wanted, &read, nullptr)) return Fail(GetLastError());
      if (read == 0) return Fail(ERROR_HANDLE_EOF);
      Write(piece.data(), read);
      from += read;
    }
  }

  // Takes the old log's place.
  bool Finish() {
    if (!isGood_) {
      SetLastError(error_);
      return false;
    }
    // Also the last word on whether all was written.
    bool isWritten = CloseHandle(file_.Release()) != 0;
    if (!isWritten || !TryPatiently(GetTickCount64() + kDeniedPatience, [this] {
          return MoveFileExW(newPath_.CStr(), path_.CStr(), MOVEFILE_REPLACE_EXISTING) != 0;
        })) {
      DWORD error = GetLastError();
      DeleteFileW(newPath_.CStr());
      SetLastError(error);
      return false;
    }
    return true;
  }

 private:
  void Fail(DWORD error) {
    isGood_ = false;
    error_ = error;
  }

  WString path_, newPath_;
  UniqueFile file_;
  bool isGood_;
  DWORD error_ = NO_ERROR;
};

// Whether a file without a mark is UTF-16 all the same: texts in other encodings hold no zero bytes.
bool HoldsZeroBytes(HANDLE file) {
  uint8_t bytes[512];
  DWORD read = 0;
  LARGE_INTEGER start = {};
  if (!SetFilePointerEx(file, start, nullptr, FILE_BEGIN)) return false;
  if (!ReadFile(file, bytes, sizeof(bytes), &read, nullptr)) return false;
  return std::find(bytes, bytes + read, 0) != bytes + read && bytes[0] != 0xfe;
}

// The bytes as a text of whatever encoding, as far as section lines go, which are of ASCII: without zeros,
// so that UTF-16 will do, and without blanks, which people write in them as they like.
WString BareText(const uint8_t* bytes, size_t count) {
  WString text;
  wchar_t* units = text.Reserve(static_cast<int32_t>(count));
  size_t length = 0;
  for (size_t i = 0; i < count; i++) {
    if (bytes[i] != 0 && bytes[i] != ' ') units[length++] = bytes[i];
  }
  units[length] = 0;
  text.length = 0;
  return text;
}

}  // namespace

bool IsOtherThanLog(const wchar_t* path) {
  UniqueFile file(CreateFileW(PathForCalls(path).CStr(), GENERIC_READ,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                              0, nullptr));
  if (!file) return false;  // none, or one that no entry gets into
  std::vector<uint8_t> bytes(kPiece);
  DWORD read = 0;
  if (!ReadFile(file.Get(), bytes.data(), static_cast<DWORD>(kPiece), &read, nullptr)) return false;
  constexpr DWORD kLongestMark = 3;
  if (read <= kLongestMark) return false;
  WString text = BareText(bytes.data(), read);
  for (const wchar_t* section :
       {L"[Backup]", L"[Restore]", L"[Restorefrom]", L"[Copy/Moveuserdata]", L"[Home]"}) {
    if (text.Find(section, false) > 0) return false;
  }
  return true;
}

UniqueFile LockLog(const wchar_t* path, uint64_t deadline) {
  WString lockPath = SidePath(path, L".lock");
  auto open = [&] {
    return CreateFileW(lockPath.CStr(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                       FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT,
                       nullptr);
  };
  UniqueFile lock = OpenPatiently(deadline, open);
  if (lock || GetLastError() != ERROR_PATH_NOT_FOUND || !MakeFolderOfFile(path)) return lock;
  return OpenPatiently(deadline, open);
}

UniqueFile OpenLog(const wchar_t* path, uint64_t deadline) {
  WString logPath = PathForCalls(path);
  return OpenPatiently(deadline, [&] {
    return CreateFileW(logPath.CStr(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                       0, nullptr);
  });
}

bool WriteWholeLog(const wchar_t* path, const wchar_t* text) {
  NewLog made(path);
  made.Write(&kByteOrderMark, sizeof(kByteOrderMark));
  made.WriteText(text);
  return made.Finish();
}

bool RewriteLog(const wchar_t* path, UniqueFile& log, const LogLayout& layout, const WString& text,
                int64_t room) {
  NewLog made(path);
  made.CopyRange(log.Get(), 0, layout.insertAt);
  made.WriteText(text);
  made.WriteRoom(room);
  made.CopyRange(log.Get(), layout.insertAt + layout.room, layout.size);
  log.Reset();
  return made.Finish();
}

bool ConvertLog(const wchar_t* path, UniqueFile& log) {
  LARGE_INTEGER size;
  if (!GetFileSizeEx(log.Get(), &size)) return false;
  if (HoldsZeroBytes(log.Get())) {
    NewLog made(path);
    made.Write(&kByteOrderMark, sizeof(kByteOrderMark));
    made.CopyRange(log.Get(), 0, size.QuadPart);
    log.Reset();
    return made.Finish();
  }
  log.Reset();
  FileObject file;
  WString text;
  if (!file.Open(path, 0)) return false;
  if (file.ReadAllText(text) == 0 && size.QuadPart > 3) return false;  // not just a mark, and unreadable
  file.Close();
  return WriteWholeLog(path, text.CStr());
}
