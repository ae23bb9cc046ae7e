// console.cc
//
// The terminal of this process, where its standard streams are one.
#include <sys/ioctl.h>
#include <unistd.h>
#include <windows.h>

#include <cerrno>

#include "machine/call.h"
#include "machine/names.h"
#include "machine/stream.h"

using namespace machine;

namespace {

// A terminal shows as a console, and everything else that a stream may be doesn't.
std::shared_ptr<Stream> Terminal(HANDLE handle) {
  auto stream = HandleTo<Stream>(handle);
  if (stream && isatty(stream->descriptor)) return stream;
  SetLastError(ERROR_INVALID_HANDLE);
  return nullptr;
}

HANDLE StreamHandle(int descriptor) {
  static HANDLE handles[] = {AddHandle(std::make_shared<Stream>(0)), AddHandle(std::make_shared<Stream>(1)),
                             AddHandle(std::make_shared<Stream>(2))};
  return handles[descriptor];
}

}  // namespace

bool machine::WriteAll(const Stream& stream, const void* bytes, size_t count) {
  const char* at = static_cast<const char*>(bytes);
  while (count > 0) {
    ssize_t written = write(stream.descriptor, at, count);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return Fail(errno == EPIPE ? ERROR_NO_DATA : ErrorFromErrno(errno));
    at += written;
    count -= static_cast<size_t>(written);
  }
  return true;
}

HANDLE WINAPI GetStdHandle(DWORD which) {
  EnterCall();
  switch (which) {
    case STD_INPUT_HANDLE:
      return StreamHandle(0);
    case STD_OUTPUT_HANDLE:
      return StreamHandle(1);
    case STD_ERROR_HANDLE:
      return StreamHandle(2);
  }
  SetLastError(ERROR_INVALID_HANDLE);
  return INVALID_HANDLE_VALUE;
}

BOOL WINAPI GetConsoleMode(HANDLE handle, DWORD* mode) {
  EnterCall();
  auto terminal = Terminal(handle);
  if (!terminal) return FALSE;
  *mode = terminal->descriptor == 0 ? ENABLE_PROCESSED_INPUT | ENABLE_LINE_INPUT | ENABLE_ECHO_INPUT
                                    : ENABLE_PROCESSED_OUTPUT | ENABLE_WRAP_AT_EOL_OUTPUT;
  return TRUE;
}

BOOL WINAPI GetConsoleScreenBufferInfo(HANDLE handle, CONSOLE_SCREEN_BUFFER_INFO* info) {
  EnterCall();
  auto terminal = Terminal(handle);
  winsize size;
  if (!terminal) return FALSE;
  if (ioctl(terminal->descriptor, TIOCGWINSZ, &size) != 0) return Fail(ERROR_INVALID_HANDLE);
  *info = {};
  info->dwSize = {static_cast<SHORT>(size.ws_col), static_cast<SHORT>(size.ws_row)};
  info->dwMaximumWindowSize = info->dwSize;
  info->srWindow.Right = static_cast<SHORT>(size.ws_col - 1);
  info->srWindow.Bottom = static_cast<SHORT>(size.ws_row - 1);
  return TRUE;
}

BOOL WINAPI WriteConsoleW(HANDLE handle, const void* text, DWORD count, DWORD* written, void*) {
  EnterCall();
  auto terminal = Terminal(handle);
  if (!terminal) return FALSE;
  std::string bytes = ToUtf8(std::u16string_view(static_cast<const char16_t*>(text), count));
  if (!WriteAll(*terminal, bytes.data(), bytes.size())) return FALSE;
  if (written) *written = count;
  return TRUE;
}

// A terminal here takes UTF-8 and nothing else.
BOOL WINAPI SetConsoleOutputCP(UINT codePage) {
  EnterCall();
  return codePage == CP_UTF8 ? TRUE : Fail(ERROR_INVALID_PARAMETER);
}
UINT WINAPI GetConsoleOutputCP() {
  EnterCall();
  return CP_UTF8;
}
