#include "console_output.h"

#include <algorithm>

#include "utf8_text.h"

namespace {

constexpr size_t kMostAtOnce = 8192;  // a console takes no more in one call on older systems

size_t Columns(std::string_view utf8) {
  return static_cast<size_t>(
      std::count_if(utf8.begin(), utf8.end(), [](char byte) { return (byte & 0xc0) != 0x80; }));
}

}  // namespace

ConsoleOutput::ConsoleOutput()
    : results_(OpenStream(STD_OUTPUT_HANDLE)), errors_(OpenStream(STD_ERROR_HANDLE)) {}

ConsoleOutput::ConsoleOutput(std::string* results, std::string* errors) {
  results_.text = results;
  errors_.text = errors;
}

ConsoleOutput::Stream ConsoleOutput::OpenStream(DWORD which) {
  Stream stream;
  stream.handle = GetStdHandle(which);
  if (stream.handle == INVALID_HANDLE_VALUE) stream.handle = nullptr;
  DWORD mode = 0;
  stream.isTerminal = stream.handle != nullptr && GetConsoleMode(stream.handle, &mode);
  return stream;
}

// A reader that has gone away is no reason to break a run off, so the result of a write isn't looked at.
void ConsoleOutput::Write(const Stream& stream, std::string_view bytes) {
  if (stream.text != nullptr) {
    stream.text->append(bytes);
    return;
  }
  if (stream.handle == nullptr) return;
  if (!stream.isTerminal) {
    DWORD written = 0;
    WriteFile(stream.handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    return;
  }
  // A terminal takes UTF-16, whatever code page its user has chosen.
  const WString text = FromUtf8Text(bytes);
  const auto length = static_cast<size_t>(text.Length());
  for (size_t start = 0; start < length; start += kMostAtOnce) {
    DWORD written = 0;
    WriteConsoleW(stream.handle, text.CStr() + start,
                  static_cast<DWORD>(std::min(kMostAtOnce, length - start)), &written, nullptr);
  }
}

void ConsoleOutput::EraseTransient() {
  if (transientWidth_ == 0) return;
  // Blanks instead of an escape sequence, which older consoles would show.
  Write(errors_, "\r" + std::string(transientWidth_, ' ') + "\r");
  transientWidth_ = 0;
}

void ConsoleOutput::Result(std::string_view line) {
  const std::lock_guard<std::mutex> lock(mutex_);
  if (results_.isTerminal) EraseTransient();
  Write(results_, std::string(line) + "\n");
}

void ConsoleOutput::Error(std::string_view line) {
  const std::lock_guard<std::mutex> lock(mutex_);
  EraseTransient();
  Write(errors_, std::string(line) + "\n");
}

void ConsoleOutput::Transient(std::string_view line) {
  if (!errors_.isTerminal) return;
  const std::lock_guard<std::mutex> lock(mutex_);
  if (line.empty()) {
    EraseTransient();
    return;
  }
  const size_t width = Columns(line);
  std::string drawn = "\r" + std::string(line);
  if (width < transientWidth_) drawn += std::string(transientWidth_ - width, ' ');
  Write(errors_, drawn);
  transientWidth_ = width;
}

int ConsoleOutput::TerminalColumns() const {
  CONSOLE_SCREEN_BUFFER_INFO info;
  if (errors_.handle == nullptr || !GetConsoleScreenBufferInfo(errors_.handle, &info)) return 80;
  const int columns = info.srWindow.Right - info.srWindow.Left + 1;
  return columns > 0 ? columns : 80;
}
