#include "machine/text_output.h"

#include <cstdio>

namespace machine {
namespace {

// How many bytes of a sound character begin here; 0 if none does.
size_t CharacterLength(std::string_view text) {
  const auto byte = [&](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
  const unsigned first = byte(0);
  if (first < 0x20 || first == 0x7F) return 0;
  if (first < 0x80) return 1;
  const size_t length = first >= 0xF0 && first < 0xF5 ? 4 : first >= 0xE0 ? 3 : first >= 0xC2 ? 2 : 0;
  if (first >= 0xF5 || length == 0) return 0;
  for (size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  // U+0080 to U+009F steer terminals, too; surrogates are no characters.
  if (first == 0xC2 && byte(1) < 0xA0) return 0;
  if (first == 0xED && byte(1) >= 0xA0) return 0;
  return length;
}

}  // namespace

std::string Escaped(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const size_t length = CharacterLength(text);
    if (length > 0) {
      result += text.substr(0, length);
    } else {
      char escape[8];
      snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(text[0]));
      result += escape;
    }
    text.remove_prefix(length > 0 ? length : 1);
  }
  return result;
}

std::string Grouped(uint64_t number) {
  std::string text = std::to_string(number);
  for (size_t at = text.size(); at > 3;) text.insert(at -= 3, 1, ',');
  return text;
}

std::string Amount(uint64_t bytes) {
  const char* const units[] = {"bytes", "KiB", "MiB", "GiB", "TiB"};
  size_t unit = 0;
  double amount = static_cast<double>(bytes);
  while (amount >= 1024 && unit + 1 < sizeof units / sizeof *units) {
    amount /= 1024;
    ++unit;
  }
  char text[32];
  snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", amount, units[unit]);
  return text;
}

}  // namespace machine
