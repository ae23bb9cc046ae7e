// text_comparison.cc
#include <windows.h>

#include <string_view>

#include "machine/call.h"
#include "machine/names.h"

using namespace machine;

int WINAPI CompareStringOrdinal(const wchar_t* first, int firstLength, const wchar_t* second,
                                int secondLength, BOOL ignoreCase) {
  EnterCall();
  if (!first || !second) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
  }
  auto unitsOf = [](const wchar_t* text, int length) {
    auto* units = reinterpret_cast<const char16_t*>(text);
    return length < 0 ? std::u16string_view(units) : std::u16string_view(units, static_cast<size_t>(length));
  };
  std::u16string_view a = unitsOf(first, firstLength);
  std::u16string_view b = unitsOf(second, secondLength);
  for (size_t i = 0; i < a.size() && i < b.size(); ++i) {
    char16_t x = ignoreCase ? FoldUnit(a[i]) : a[i];
    char16_t y = ignoreCase ? FoldUnit(b[i]) : b[i];
    if (x != y) return x < y ? CSTR_LESS_THAN : CSTR_GREATER_THAN;
  }
  if (a.size() == b.size()) return CSTR_EQUAL;
  return a.size() < b.size() ? CSTR_LESS_THAN : CSTR_GREATER_THAN;
}
