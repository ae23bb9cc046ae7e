// text_conversion.cc
//
// Texts between UTF-16 and the two encodings that the program uses: UTF-8, and the ANSI code page.
#include <windows.h>

#include <climits>
#include <cstring>

#include "kernel32/code_page.h"
#include "machine/call.h"

using namespace machine;

namespace {

// Where converted units go: counted only, while there is no room.
template <typename Unit>
struct Output {
  Unit* start;
  int room;  // 0: only the count is asked for
  int count = 0;
  bool isFull = false;

  void Put(Unit unit) {
    if (room != 0) {
      if (count >= room) {
        isFull = true;
        return;
      }
      start[count] = unit;
    }
    ++count;
  }
  // What the calls give for all that was put.
  int Result() const {
    if (!isFull) return count;
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return 0;
  }
};

int FailWith(DWORD error) {
  SetLastError(error);
  return 0;
}

constexpr char32_t kReplacement = 0xfffd;

// Takes one character off the front of a UTF-8 text that isn't empty. What is none counts as one wrong
// character as far as its bytes follow each other, and then the result is false.
bool TakeUtf8(const uint8_t*& text, const uint8_t* end, char32_t& character) {
  uint8_t first = *text++;
  character = first;
  if (first < 0x80) return true;
  int following = first < 0xe0 ? 1 : first < 0xf0 ? 2 : 3;
  if (first < 0xc2 || first > 0xf4) return false;
  // Only the second byte is narrower for some: no long forms, no surrogates, nothing above U+10FFFF.
  // Windows counts a second byte that isn't with the first one.
  uint8_t low = first == 0xe0 ? 0xa0 : first == 0xf0 ? 0x90 : 0x80;
  uint8_t high = first == 0xed ? 0x9f : first == 0xf4 ? 0x8f : 0xbf;
  character = first & (0x3f >> following);
  for (; following > 0; --following) {
    if (text == end || (*text & 0xc0) != 0x80) return false;
    uint8_t byte = *text++;
    if (byte < low || byte > high) return false;
    character = character << 6 | (byte & 0x3f);
    low = 0x80;
    high = 0xbf;
  }
  return true;
}

void PutUtf16(Output<wchar_t>& output, char32_t character) {
  if (character >= 0x10000) {
    output.Put(static_cast<wchar_t>(0xd7c0 + (character >> 10)));
    character = 0xdc00 + (character & 0x3ff);
  }
  output.Put(static_cast<wchar_t>(character));
}

bool IsHighSurrogate(char32_t unit) { return unit >= 0xd800 && unit < 0xdc00; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xdc00 && unit < 0xe000; }

// As TakeUtf8, for UTF-16, where what is wrong is a surrogate alone.
bool TakeUtf16(const wchar_t*& text, const wchar_t* end, char32_t& character) {
  character = *text++;
  if (IsHighSurrogate(character) && text != end && IsLowSurrogate(*text)) {
    character = 0x10000 + ((character - 0xd800) << 10) + (*text++ - 0xdc00);
    return true;
  }
  return !IsHighSurrogate(character) && !IsLowSurrogate(character);
}

void PutUtf8(Output<char>& output, char32_t character) {
  if (character < 0x80) return output.Put(static_cast<char>(character));
  int following = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
  output.Put(static_cast<char>((0xff00 >> (following + 1)) | character >> (6 * following)));
  while (following-- > 0) output.Put(static_cast<char>(0x80 | (character >> (6 * following) & 0x3f)));
}

bool IsAnsi(UINT codePage) { return codePage == CP_ACP || codePage == 1252; }

int WideToUtf8(const wchar_t* text, const wchar_t* end, Output<char> output, DWORD flags) {
  while (text != end && !output.isFull) {
    char32_t character;
    if (!TakeUtf16(text, end, character)) {
      if (flags & WC_ERR_INVALID_CHARS) return FailWith(ERROR_NO_UNICODE_TRANSLATION);
      character = kReplacement;
    }
    PutUtf8(output, character);
  }
  return output.Result();
}

int WideToAnsi(const wchar_t* text, const wchar_t* end, Output<char> output, DWORD flags,
               const char* defaultCharacter, BOOL* usedDefault) {
  if (usedDefault) *usedDefault = FALSE;
  for (; text != end && !output.isFull; ++text) {
    int byte = ToCodePage1252(static_cast<char16_t>(*text), !(flags & WC_NO_BEST_FIT_CHARS));
    if (byte < 0 && usedDefault) *usedDefault = TRUE;
    output.Put(byte < 0 ? (defaultCharacter ? *defaultCharacter : '?') : static_cast<char>(byte));
  }
  return output.Result();
}

}  // namespace

int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int length, wchar_t* output,
                               int room) {
  EnterCall();
  if (!text || length == 0 || room < 0 || (room != 0 && !output)) return FailWith(ERROR_INVALID_PARAMETER);
  if (!IsAnsi(codePage) && codePage != CP_UTF8) Unsupported("MultiByteToWideChar", "this code page");
  if (flags & ~(MB_ERR_INVALID_CHARS | (IsAnsi(codePage) ? MB_PRECOMPOSED : 0))) {
    return FailWith(ERROR_INVALID_FLAGS);
  }
  const auto* at = reinterpret_cast<const uint8_t*>(text);
  const uint8_t* end = at + (length < 0 ? std::strlen(text) + 1 : static_cast<size_t>(length));
  Output<wchar_t> wide{output, room};
  while (at != end && !wide.isFull) {
    if (IsAnsi(codePage)) {
      wide.Put(static_cast<wchar_t>(FromCodePage1252(*at++)));
      continue;
    }
    char32_t character;
    if (!TakeUtf8(at, end, character)) {
      if (flags & MB_ERR_INVALID_CHARS) return FailWith(ERROR_NO_UNICODE_TRANSLATION);
      character = kReplacement;
    }
    PutUtf16(wide, character);
  }
  return wide.Result();
}

int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, const wchar_t* text, int length, char* output,
                               int room, const char* defaultCharacter, BOOL* usedDefault) {
  EnterCall();
  if (!text || length == 0 || room < 0 || (room != 0 && !output)) return FailWith(ERROR_INVALID_PARAMETER);
  if (!IsAnsi(codePage) && codePage != CP_UTF8) Unsupported("WideCharToMultiByte", "this code page");
  if (codePage == CP_UTF8 && (defaultCharacter || usedDefault)) return FailWith(ERROR_INVALID_PARAMETER);
  if (flags & ~(codePage == CP_UTF8 ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS)) {
    return FailWith(ERROR_INVALID_FLAGS);
  }
  const wchar_t* end = text;
  if (length < 0) {
    while (*end != 0) ++end;
    ++end;
  } else {
    end += length;
  }
  Output<char> bytes{output, room};
  return codePage == CP_UTF8 ? WideToUtf8(text, end, bytes, flags)
                             : WideToAnsi(text, end, bytes, flags, defaultCharacter, usedDefault);
}
