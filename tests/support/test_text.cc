// Texts of tests, converted without the program's own code.
#include <ostream>

#include "support/test_place.h"
#include "support/utf8_points.h"

namespace {

bool IsHigh(wchar_t unit) { return (unit & 0xFC00) == 0xD800; }
bool IsLow(wchar_t unit) { return (unit & 0xFC00) == 0xDC00; }

}  // namespace

WString Wide(const std::string& utf8) {
  std::vector<wchar_t> units;
  for (size_t position = 0; position < utf8.size();) {
    const uint32_t point = NextPoint(utf8, position);
    if (point >= 0x10000) {
      units.push_back(static_cast<wchar_t>(0xD7C0 + (point >> 10)));
      units.push_back(static_cast<wchar_t>(0xDC00 | (point & 0x3FF)));
    } else {
      units.push_back(static_cast<wchar_t>(point));
    }
  }
  units.push_back(0);
  return WString(units.data());
}

std::string Utf8(const wchar_t* text) {
  std::string utf8;
  for (; text && *text; ++text) {
    uint32_t point = *text;
    if (IsHigh(text[0]) && IsLow(text[1])) {
      point = 0x10000 + ((text[0] & 0x3FFu) << 10) + (text[1] & 0x3FFu);
      ++text;
    }
    AddPoint(utf8, point);
  }
  return utf8;
}

void PrintTo(const WString& text, std::ostream* out) { *out << '"' << Utf8(text) << '"'; }
