// json_line.h
//
// One event of `--json`: an object on a line of its own, its members in the order in which they are
// added. What acts on a terminal is escaped, and a lone surrogate shows as U+FFFD.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "foundation/wstring.h"

class JsonLine {
 public:
  explicit JsonLine(const char* event);  // the value of the member "event"
  ~JsonLine();

  JsonLine& Text(const char* name, const wchar_t* value);
  JsonLine& Text(const char* name, const WString& value) { return Text(name, value.CStr()); }
  JsonLine& Utf8(const char* name, const std::string& value);
  JsonLine& Number(const char* name, int64_t value);
  JsonLine& Flag(const char* name, bool value);
  JsonLine& List(const char* name, const std::vector<std::string>& values);

  std::string Build() const;

 private:
  struct Members;
  std::unique_ptr<Members> members_;
};
