// googletest_wide.h
//
// Included before GoogleTest's own sources: it measures and compares wide texts, which have two bytes a
// unit here, by the C library, which takes four on some systems.
#pragma once
#include <cwchar>
#include <cwctype>
#include <string>

namespace two_byte {
inline size_t Length(const wchar_t* text) {
  size_t length = 0;
  while (text[length]) ++length;
  return length;
}
inline wchar_t LowerAscii(wchar_t unit) {
  return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit + 32) : unit;
}
inline int Compare(const wchar_t* a, const wchar_t* b) {
  while (*a && *a == *b) ++a, ++b;
  return *a - *b;
}
inline int CompareNoCase(const wchar_t* a, const wchar_t* b) {
  while (*a && LowerAscii(*a) == LowerAscii(*b)) ++a, ++b;
  return LowerAscii(*a) - LowerAscii(*b);
}
}  // namespace two_byte

#define wcslen two_byte::Length
#define wcscmp two_byte::Compare
#define wcscasecmp two_byte::CompareNoCase
#define _wcsicmp two_byte::CompareNoCase
