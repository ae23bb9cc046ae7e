// log_text.h
//
// An application log in a place of its own, with all entries written at noon of one day.
#pragma once
#include <memory>
#include <string>

#include "core/application_log.h"
#include "support/test_place.h"

class LogPlace {
 public:
  TestPlace place;
  WString path;
  std::unique_ptr<ApplicationLog> writer;

  LogPlace();

  bool Write(const wchar_t* section, const std::string& message);
  void Close() { writer.reset(); }

  void Fill(const std::string& text);  // with its mark
  std::string Text() const;            // without the mark
  // Without lines of blanks, which stand for room while a writer is at work.
  std::string TextWithoutBlankLines() const;

  static std::string Utf16(const std::string& text);  // with its mark
  static std::string Lines(size_t count, const std::string& text);
  static std::string Stamp(int milliseconds);  // after noon
  static size_t Count(const std::string& text, const std::string& part);
};
