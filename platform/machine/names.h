// names.h
//
// Names between Windows and Linux: UTF-16 there, UTF-8 here. A lone surrogate survives as its three
// bytes, and a byte that Windows can't have in a name shows as U+F000 plus the byte and finds its
// file again.
#pragma once
#include <windows.h>

#include <string>
#include <string_view>

namespace machine {

std::string ToUtf8(std::u16string_view text);
std::string ToUtf8(const wchar_t* text);  // null gives an empty text
std::u16string ToUtf16(std::string_view text);
inline const wchar_t* AsWide(const std::u16string& text) {
  return reinterpret_cast<const wchar_t*>(text.c_str());
}

// One component of a path: from Windows to the name on the disk and back. Any bytes are a name on the
// disk; those that are no UTF-8 show as U+F000 + byte, as do the characters that Windows refuses.
std::string DiskName(std::u16string_view windowsName);
std::u16string WindowsName(std::string_view diskName);

char16_t FoldBeyondAscii(char16_t unit);
// Upper case as the system's table has it. Here, since paths are folded unit by unit, again and again.
inline char16_t FoldUnit(char16_t unit) {
  if (unit >= 0x80) return FoldBeyondAscii(unit);
  return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 0x20) : unit;
}
std::u16string Fold(std::u16string_view text);
std::string FoldUtf8(std::string_view text);
// Without regard to case.
bool SameName(std::u16string_view a, std::u16string_view b);
bool SameText(std::string_view a, std::string_view b);

}  // namespace machine
