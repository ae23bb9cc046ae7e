#include "foundation/file_object.h"

#include <cstdlib>
#include <cstring>

namespace {

constexpr uint32_t kTextFlags = kFileUtf16LE | kFileUtf16BE | kFileUtf8Mark | kFileUtf8;
constexpr uint32_t kWriteFlags = kFileKeepContent | kFileCreateAlways;

// What one text can hold with its terminator, and one 32-bit count of bytes with room to spare.
constexpr int64_t kMostTextBytes = 0x7ffffff0;

struct TextMark {
  uint32_t flag;
  uint8_t bytes[3];
  uint32_t size;
};
constexpr TextMark kMarks[] = {
    {kFileUtf16LE, {0xff, 0xfe, 0}, 2},
    {kFileUtf16BE, {0xfe, 0xff, 0}, 2},
    {kFileUtf8Mark, {0xef, 0xbb, 0xbf}, 3},
};

bool WriteAll(HANDLE file, const void* bytes, uint32_t size) {
  DWORD written = 0;
  if (!WriteFile(file, bytes, size, &written, nullptr)) return false;
  if (written != size) SetLastError(ERROR_DISK_FULL);
  return written == size;
}

bool WriteMark(HANDLE file, uint32_t flags) {
  for (const TextMark& mark : kMarks) {
    if ((flags & mark.flag) != 0) return WriteAll(file, mark.bytes, mark.size);
  }
  return true;
}

// The mark at the file's start, or null.
const TextMark* ReadMark(HANDLE file) {
  uint8_t bytes[3] = {};
  DWORD read = 0;
  if (!ReadFile(file, bytes, sizeof(bytes), &read, nullptr)) return nullptr;
  for (const TextMark& mark : kMarks) {
    if (read >= mark.size && memcmp(bytes, mark.bytes, mark.size) == 0) return &mark;
  }
  return nullptr;
}

// Fills `bytes` from the current position up to `size` or the file's end; gives the number read, -1
// for a read error.
int64_t ReadToEnd(HANDLE file, uint8_t* bytes, uint32_t size) {
  uint32_t total = 0;
  while (total < size) {
    DWORD read = 0;
    if (!ReadFile(file, bytes + total, size - total, &read, nullptr)) return -1;
    if (read == 0) break;
    total += read;
  }
  return total;
}

bool WriteInCodePage(HANDLE file, UINT codePage, const wchar_t* text, int32_t units) {
  const int size = WideCharToMultiByte(codePage, 0, text, units, nullptr, 0, nullptr, nullptr);
  if (size <= 0) return false;
  char* bytes = static_cast<char*>(malloc(static_cast<size_t>(size)));
  if (bytes == nullptr) EndOutOfMemory();
  WideCharToMultiByte(codePage, 0, text, units, bytes, size, nullptr, nullptr);
  const bool written = WriteAll(file, bytes, static_cast<uint32_t>(size));
  free(bytes);
  return written;
}

}  // namespace

FileObject::FileObject() : handle(INVALID_HANDLE_VALUE), flags(0) {}

FileObject::FileObject(const wchar_t* path, uint32_t openFlags) : FileObject() { Open(path, openFlags); }

FileObject::~FileObject() { Close(); }

void FileObject::Close() {
  if (!IsOpen()) return;
  // The reason of a failure before this is what the caller wants to hear.
  const DWORD error = GetLastError();
  CloseHandle(handle);
  SetLastError(error);
  handle = INVALID_HANDLE_VALUE;
}

HANDLE FileObject::Open(const wchar_t* path, uint32_t openFlags, uint32_t attributes) {
  Close();
  flags = openFlags;
  if ((flags & kFileMakeFolders) != 0 && !MakeFolderOfFile(path)) return nullptr;

  const bool writes = (flags & kWriteFlags) != 0;
  DWORD disposition = OPEN_EXISTING;
  if (writes) disposition = (flags & kFileCreateAlways) != 0 ? CREATE_ALWAYS : OPEN_ALWAYS;
  handle = CreateFileW(PathForCalls(path).CStr(), writes ? GENERIC_READ | GENERIC_WRITE : GENERIC_READ,
                       (flags & kFileExclusive) != 0 ? 0 : FILE_SHARE_READ, nullptr, disposition, attributes,
                       nullptr);
  if (handle == nullptr) handle = INVALID_HANDLE_VALUE;
  if (!IsOpen()) return nullptr;

  LARGE_INTEGER size;
  if (!GetFileSizeEx(handle, &size)) size.QuadPart = 0;
  if ((flags & kFileRaw) != 0) {
    if ((flags & kFileKeepContent) != 0) Seek(0, FILE_END);
    return handle;
  }
  if (size.QuadPart == 0) {
    if (writes && !WriteMark(handle, flags)) {
      Close();
      flags = 0;
      return nullptr;
    }
    return handle;
  }
  if ((flags & kFileCreateAlways) != 0) return handle;
  const TextMark* mark = ReadMark(handle);
  if (mark != nullptr) flags = (flags & ~kTextFlags) | mark->flag;
  if ((flags & kFileKeepContent) != 0) {
    Seek(0, FILE_END);
  } else {
    Seek(mark != nullptr ? mark->size : 0, FILE_BEGIN);
  }
  return handle;
}

int32_t FileObject::ReadAllText(WString& output) {
  output.Clear();
  if (!IsOpen()) return 0;
  LARGE_INTEGER size;
  if (!GetFileSizeEx(handle, &size)) return 0;
  if (size.QuadPart == 0) {
    SetLastError(NO_ERROR);
    return 0;
  }
  if (size.QuadPart > kMostTextBytes) {
    SetLastError(ERROR_FILE_TOO_LARGE);
    return 0;
  }
  // Three zero bytes end the text also where half a unit stands at the end.
  uint8_t* bytes = static_cast<uint8_t*>(malloc(static_cast<size_t>(size.QuadPart) + 4));
  if (bytes == nullptr) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return 0;
  }
  const int64_t read = ReadToEnd(handle, bytes, static_cast<uint32_t>(size.QuadPart));
  if (read < 0) {
    free(bytes);
    return 0;
  }
  SetLastError(NO_ERROR);
  memset(bytes + read, 0, 3);
  if ((flags & kFileUtf16LE) != 0) {
    output.Attach(reinterpret_cast<wchar_t*>(bytes), false);
    return output.Length();
  }
  if ((flags & kFileUtf16BE) != 0) {
    output.FromUtf16BE(reinterpret_cast<wchar_t*>(bytes), 0);
  } else if ((flags & (kFileUtf8Mark | kFileUtf8)) != 0) {
    output.FromUtf8(reinterpret_cast<char*>(bytes));
  } else {
    output.FromAnsi(reinterpret_cast<char*>(bytes));
  }
  free(bytes);
  return output.Length();
}

bool FileObject::WriteText(const wchar_t* text) {
  const int32_t units = UnitCount(text);
  if (!IsOpen() || units == 0) return false;
  if ((flags & kFileUtf16LE) != 0) {
    return WriteAll(handle, text, static_cast<uint32_t>(units) * sizeof(wchar_t));
  }
  if ((flags & kFileUtf16BE) != 0) {
    WString swapped;
    swapped.FromUtf16BE(text, units);
    return WriteAll(handle, swapped.CStr(), static_cast<uint32_t>(units) * sizeof(wchar_t));
  }
  const bool isUtf8 = (flags & (kFileUtf8Mark | kFileUtf8)) != 0;
  return WriteInCodePage(handle, isUtf8 ? CP_UTF8 : CP_ACP, text, units);
}

bool FileObject::Seek(int64_t distance, uint32_t origin) {
  LARGE_INTEGER move;
  move.QuadPart = distance;
  return SetFilePointerEx(handle, move, nullptr, origin) != 0;
}
