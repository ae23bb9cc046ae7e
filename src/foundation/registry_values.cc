// Reading text values.
#include "foundation/registry.h"

namespace {

bool IsTextType(DWORD type) { return type == REG_SZ || type == REG_EXPAND_SZ || type == REG_MULTI_SZ; }

}  // namespace

bool QueryStringValue(HKEY key, const wchar_t* name, WString& output) {
  output.Clear();
  DWORD type = 0;
  DWORD bytes = 0;
  if (RegQueryValueExW(key, name, nullptr, &type, nullptr, &bytes) != ERROR_SUCCESS) return false;
  // A size near the end of the address space can't be true.
  if (!IsTextType(type) || bytes > 0x7ffffff0) return false;

  // What is stored need not end with a zero, nor be a whole number of units.
  const int32_t units = static_cast<int32_t>((bytes + 4) / sizeof(wchar_t));
  wchar_t* const text = output.Reserve(units, nullptr, true);
  DWORD read = bytes;
  if (RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(text), &read) != ERROR_SUCCESS ||
      !IsTextType(type) || read > bytes) {
    output.Clear();
    return false;
  }
  text[read / sizeof(wchar_t)] = 0;
  text[units - 1] = 0;
  if (type == REG_MULTI_SZ && units > 3) {
    for (int32_t index = 0; index + 1 < units; ++index) {
      if (text[index] == 0 && text[index + 1] != 0) text[index] = L'\n';
    }
  }
  output.length = 0;
  return true;
}
