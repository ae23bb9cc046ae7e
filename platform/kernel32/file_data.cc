// file_data.cc
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "machine/call.h"
#include "machine/faults.h"
#include "machine/open_files.h"
#include "machine/path_resolution.h"
#include "machine/stream.h"

using namespace machine;

namespace {

uint64_t OffsetOf(const OVERLAPPED& overlapped) {
  return uint64_t{overlapped.OffsetHigh} << 32 | overlapped.Offset;
}

// The file, if it may be written to or, with `reads`, read from.
std::shared_ptr<File> DataFile(HANDLE handle, bool reads) {
  std::shared_ptr<File> file = FileOf(handle);
  if (!file) return nullptr;
  uint32_t right = reads ? FILE_READ_DATA : FILE_WRITE_DATA | FILE_APPEND_DATA;
  bool isAllowed = file->access & right;
  if (isAllowed && file->facts.IsPlain()) return file;
  SetLastError(isAllowed ? ERROR_INVALID_FUNCTION : ERROR_ACCESS_DENIED);
  return nullptr;
}

// How much of a write the disk takes under a plan of faults: bytes that are overwritten need no space.
uint64_t RoomFor(File& file, LPOVERLAPPED overlapped, DWORD count) {
  struct stat status;
  if (DiskSpaceLeft() == UINT64_MAX || fstat(file.Get(), &status) != 0) return count;
  uint64_t position =
      overlapped ? OffsetOf(*overlapped) : static_cast<uint64_t>(lseek(file.Get(), 0, SEEK_CUR));
  auto size = static_cast<uint64_t>(status.st_size);
  uint64_t inside = position < size ? std::min<uint64_t>(count, size - position) : 0;
  return inside + TakeDiskSpace(count - inside);
}

// Blocks of the kernel are below 2 GiB.
constexpr size_t kLongest = 0x7FFFF000;

}  // namespace

BOOL WINAPI ReadFile(HANDLE handle, LPVOID buffer, DWORD count, LPDWORD done, LPOVERLAPPED overlapped) {
  EnterCall();
  if (done) *done = 0;
  int descriptor = -1;
  std::shared_ptr<Object> object = FindHandle(handle);
  std::shared_ptr<File> file;
  if (auto stream = std::dynamic_pointer_cast<Stream>(object)) {
    descriptor = stream->descriptor;
  } else {
    file = DataFile(handle, true);
    if (!file || (FaultsAreSet() && HasFault("ReadFile", Effect::kReads, file->Path()))) return FALSE;
    descriptor = file->Get();
  }
  size_t wanted = count < kLongest ? count : kLongest;
  ssize_t size;
  do {
    size = overlapped && file ? pread(descriptor, buffer, wanted, static_cast<off_t>(OffsetOf(*overlapped)))
                              : read(descriptor, buffer, wanted);
  } while (size < 0 && errno == EINTR);
  if (size < 0) return Fail(ErrorFromErrno(errno));
  if (done) *done = static_cast<DWORD>(size);
  return TRUE;
}

BOOL WINAPI WriteFile(HANDLE handle, LPCVOID buffer, DWORD count, LPDWORD done, LPOVERLAPPED overlapped) {
  EnterCall();
  if (done) *done = 0;
  if (auto stream = std::dynamic_pointer_cast<Stream>(FindHandle(handle))) {
    if (!WriteAll(*stream, buffer, count)) return FALSE;
    if (done) *done = count;
    return TRUE;
  }
  std::shared_ptr<File> file = DataFile(handle, false);
  if (!file || (FaultsAreSet() && HasFault("WriteFile", Effect::kChanges, file->Path()))) return FALSE;
  uint64_t room = RoomFor(*file, overlapped, count);
  auto* bytes = static_cast<const char*>(buffer);
  size_t written = 0;
  int error = 0;
  while (written < room) {
    ssize_t size = overlapped ? pwrite(file->Get(), bytes + written, room - written,
                                       static_cast<off_t>(OffsetOf(*overlapped) + written))
                              : write(file->Get(), bytes + written, room - written);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) {
      error = errno;
      break;
    }
    written += static_cast<size_t>(size);
  }
  if (done) *done = static_cast<DWORD>(written);
  if (error != 0) return Fail(ErrorFromErrno(error));
  return written == count || Fail(ERROR_DISK_FULL);
}

BOOL WINAPI SetFilePointerEx(HANDLE handle, LARGE_INTEGER distance, PLARGE_INTEGER position, DWORD method) {
  EnterCall();
  std::shared_ptr<File> file = FileOf(handle);
  if (!file) return FALSE;
  if (method > FILE_END) return Fail(ERROR_INVALID_PARAMETER);
  int origin = method == FILE_BEGIN ? SEEK_SET : method == FILE_CURRENT ? SEEK_CUR : SEEK_END;
  off_t result = lseek(file->Get(), distance.QuadPart, origin);
  if (result < 0) return Fail(errno == EINVAL ? ERROR_NEGATIVE_SEEK : ErrorFromErrno(errno));
  if (position) position->QuadPart = result;
  return TRUE;
}

BOOL WINAPI SetEndOfFile(HANDLE handle) {
  EnterCall();
  std::shared_ptr<File> file = DataFile(handle, false);
  if (!file || (FaultsAreSet() && HasFault("SetEndOfFile", Effect::kChanges, file->Path()))) return FALSE;
  off_t position = lseek(file->Get(), 0, SEEK_CUR);
  return (position >= 0 && ftruncate(file->Get(), position) == 0) || Fail(ErrorFromErrno(errno));
}

// A file goes to the disk alone. A directory stands for its whole disk: that is how a run has everything
// written that it made, instead of each file.
BOOL WINAPI FlushFileBuffers(HANDLE handle) {
  EnterCall();
  if (std::dynamic_pointer_cast<Stream>(FindHandle(handle))) return TRUE;
  std::shared_ptr<File> file = FileOf(handle);
  if (!file) return FALSE;
  if (FaultsAreSet() && HasFault("FlushFileBuffers", Effect::kReads, file->Path())) return FALSE;
  if (!(file->access & (FILE_WRITE_DATA | FILE_APPEND_DATA))) return Fail(ERROR_ACCESS_DENIED);
  int result = file->IsDirectory() ? syncfs(file->Get()) : fsync(file->Get());
  return result == 0 || Fail(ErrorFromErrno(errno));
}
