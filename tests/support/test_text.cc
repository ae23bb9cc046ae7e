// Texts of tests, converted by code of their own, so that a fault in the program's conversion can't hide
// itself. A lone surrogate is three bytes, as it is on the disk.
#include <ostream>

#include "support/test_place.h"

namespace {

// The code point at `position`, which goes on behind it. A byte that begins nothing stands for itself.
uint32_t NextPoint(const std::string& text, size_t& position) {
  const auto byte = [&](size_t at) { return at < text.size() ? static_cast<uint8_t>(text[at]) : 0u; };
  const uint32_t first = byte(position);
  const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
  uint32_t point = more == 0 ? first : first & (0x3Fu >> more);
  for (int i = 1; i <= more; ++i) point = point << 6 | (byte(position + i) & 0x3F);
  position += more + 1;
  return point;
}

void AddPoint(std::string& text, uint32_t point) {
  if (point < 0x80) {
    text += static_cast<char>(point);
    return;
  }
  const int more = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
  constexpr uint8_t kFirst[] = {0, 0xC0, 0xE0, 0xF0};
  text += static_cast<char>(kFirst[more] | point >> (6 * more));
  for (int i = more - 1; i >= 0; --i) text += static_cast<char>(0x80 | (point >> (6 * i) & 0x3F));
}

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
