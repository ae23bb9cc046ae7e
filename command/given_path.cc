#include "given_path.h"

#include "operations/path_queries.h"
#include "utf8_text.h"

WString GivenPath(const WString& text) {
  WString path = CleanPath(text.CStr());
  if (path.Length() >= 2 && path.buffer[1] == L':' && path.buffer[0] >= L'a' && path.buffer[0] <= L'z') {
    path.buffer[0] = static_cast<wchar_t>(path.buffer[0] - L'a' + L'A');
  }
  return path;
}

WString GivenPath(const std::string& utf8) { return GivenPath(FromUtf8Text(utf8)); }
