// console_output.h
//
// Where norvanectl writes: results to standard output, all else to standard error. Callable from any
// thread; a line is never torn by another one.
#pragma once
#include <windows.h>

#include <mutex>
#include <string>
#include <string_view>

class ConsoleOutput {
 public:
  // The streams of the process.
  ConsoleOutput();

  // For tests: everything goes to two texts, neither of which counts as a terminal.
  ConsoleOutput(std::string* results, std::string* errors);

  ConsoleOutput(const ConsoleOutput&) = delete;
  ConsoleOutput& operator=(const ConsoleOutput&) = delete;

  // Each writes whole lines: UTF-8, without the last line end.
  void Result(std::string_view line);
  void Error(std::string_view line);

  // The one line at the bottom that is drawn over by the next one, and that goes before any other line
  // is written. Drawn on a terminal only. An empty text takes it away.
  void Transient(std::string_view line);
  bool HasTerminal() const { return errors_.isTerminal; }
  int TerminalColumns() const;  // 80 where it can't be told

 private:
  struct Stream {
    HANDLE handle = nullptr;
    std::string* text = nullptr;  // in place of the handle
    bool isTerminal = false;
  };

  static Stream OpenStream(DWORD which);
  static void Write(const Stream& stream, std::string_view bytes);
  void EraseTransient();

  std::mutex mutex_;
  Stream results_, errors_;
  size_t transientWidth_ = 0;  // columns, at most
};
