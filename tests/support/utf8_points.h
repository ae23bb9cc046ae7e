// utf8_points.h
//
// UTF-8 taken apart and put together by code of the tests' own, so that a fault in the program's conversion
// can't hide itself. A lone surrogate is three bytes, as it is on the disk.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

// The code point at `position`, which goes on behind it. A byte that begins nothing stands for itself.
inline uint32_t NextPoint(const std::string& text, size_t& position) {
  const auto byte = [&](size_t at) { return at < text.size() ? static_cast<uint8_t>(text[at]) : 0u; };
  const uint32_t first = byte(position);
  const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
  uint32_t point = more == 0 ? first : first & (0x3Fu >> more);
  for (int i = 1; i <= more; ++i) point = point << 6 | (byte(position + i) & 0x3F);
  position += more + 1;
  return point;
}

inline void AddPoint(std::string& text, uint32_t point) {
  if (point < 0x80) {
    text += static_cast<char>(point);
    return;
  }
  const int more = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
  constexpr uint8_t kFirst[] = {0, 0xC0, 0xE0, 0xF0};
  text += static_cast<char>(kFirst[more] | point >> (6 * more));
  for (int i = more - 1; i >= 0; --i) text += static_cast<char>(0x80 | (point >> (6 * i) & 0x3F));
}
