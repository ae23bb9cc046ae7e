#include "utf8_text.h"

#include <cstdio>

namespace {

constexpr uint32_t kReplacement = 0xfffd;

bool IsHighSurrogate(uint32_t unit) { return unit >= 0xd800 && unit < 0xdc00; }
bool IsLowSurrogate(uint32_t unit) { return unit >= 0xdc00 && unit < 0xe000; }
bool IsSurrogate(uint32_t unit) { return unit >= 0xd800 && unit < 0xe000; }

// Takes one character from the front of `bytes`; surrogates are let through.
uint32_t TakeCharacter(std::string_view& bytes) {
  const auto first = static_cast<uint8_t>(bytes[0]);
  bytes.remove_prefix(1);
  if (first < 0x80) return first;
  const int following = first >= 0xf0 ? 3 : first >= 0xe0 ? 2 : 1;
  if (first < 0xc2 || first > 0xf4 || bytes.size() < static_cast<size_t>(following)) return kReplacement;
  uint32_t character = first & (0x3fu >> following);
  for (int index = 0; index < following; ++index) {
    const auto byte = static_cast<uint8_t>(bytes[static_cast<size_t>(index)]);
    if ((byte & 0xc0) != 0x80) return kReplacement;
    character = character << 6 | (byte & 0x3f);
  }
  constexpr uint32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  if (character < kSmallest[following] || character > 0x10ffff) return kReplacement;
  bytes.remove_prefix(static_cast<size_t>(following));
  return character;
}

// Takes one character, or a lone surrogate, from the front of `text`, which isn't at its end.
uint32_t TakeCharacter(const wchar_t*& text) {
  const uint32_t unit = static_cast<uint16_t>(*text++);
  if (!IsHighSurrogate(unit) || !IsLowSurrogate(static_cast<uint16_t>(*text))) return unit;
  const uint32_t low = static_cast<uint16_t>(*text++);
  return 0x10000 + ((unit - 0xd800) << 10) + (low - 0xdc00);
}

void PutUtf8(std::string& output, uint32_t character) {
  if (character < 0x80) {
    output += static_cast<char>(character);
    return;
  }
  if (character < 0x800) {
    output += static_cast<char>(0xc0 | character >> 6);
  } else {
    if (character < 0x10000) {
      output += static_cast<char>(0xe0 | character >> 12);
    } else {
      output += static_cast<char>(0xf0 | character >> 18);
      output += static_cast<char>(0x80 | (character >> 12 & 0x3f));
    }
    output += static_cast<char>(0x80 | (character >> 6 & 0x3f));
  }
  output += static_cast<char>(0x80 | (character & 0x3f));
}

// Whether a character acts instead of showing: control characters, separators of lines, and marks that
// turn the reading direction.
bool IsControlCharacter(uint32_t character) {
  if (character < 0x20 || (character >= 0x7f && character < 0xa0)) return true;
  if (character == 0x2028 || character == 0x2029) return true;  // line and paragraph separator
  return character == 0x200e || character == 0x200f || character == 0x061c ||
         (character >= 0x202a && character <= 0x202e) || (character >= 0x2066 && character <= 0x2069);
}

enum class EscapeForm { kShort, kJson };

void PutEscaped(std::string& output, uint32_t character, EscapeForm form = EscapeForm::kShort) {
  if (!IsControlCharacter(character) && !IsSurrogate(character)) {
    PutUtf8(output, character);
    return;
  }
  const bool isShort = form == EscapeForm::kShort && character < 0x100;
  char escape[16];
  snprintf(escape, sizeof(escape), isShort ? "\\x%02x" : "\\u%04x", static_cast<unsigned>(character));
  output += escape;
}

}  // namespace

WString FromUtf8Text(std::string_view bytes) {
  WString text;
  wchar_t* units = AllocateUnits(static_cast<int64_t>(bytes.size()));  // never more units than bytes
  wchar_t* end = units;
  while (!bytes.empty()) {
    const uint32_t character = TakeCharacter(bytes);
    if (character == 0) break;
    if (character >= 0x10000) {
      *end++ = static_cast<wchar_t>(0xd7c0 + (character >> 10));
      *end++ = static_cast<wchar_t>(0xdc00 | (character & 0x3ff));
    } else {
      *end++ = static_cast<wchar_t>(character);
    }
  }
  *end = 0;
  text.Attach(units, false);
  return text;
}

std::string ToUtf8Text(const wchar_t* text) {
  std::string output;
  while (text != nullptr && *text != 0) PutUtf8(output, TakeCharacter(text));
  return output;
}

std::string Escaped(const wchar_t* text) {
  std::string output;
  while (text != nullptr && *text != 0) PutEscaped(output, TakeCharacter(text));
  return output;
}

std::string Escaped(std::string_view bytes) {
  std::string output;
  while (!bytes.empty()) PutEscaped(output, TakeCharacter(bytes));
  return output;
}

std::string EscapedLines(const wchar_t* text) {
  std::string output;
  while (text != nullptr && *text != 0) {
    if (text[0] == L'\r' && text[1] == L'\n') ++text;
    if (*text == L'\n') {
      output += '\n';
      ++text;
      continue;
    }
    PutEscaped(output, TakeCharacter(text));
  }
  return output;
}

std::string EscapedForJson(std::string_view bytes) {
  std::string output;
  while (!bytes.empty()) PutEscaped(output, TakeCharacter(bytes), EscapeForm::kJson);
  return output;
}
