#include "operations/plain_path.h"

namespace {

constexpr int32_t kLongestPath = 32000;
constexpr const wchar_t* kDevices[] = {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$", L"CLOCK$"};

bool IsPort(const WString& stem) {
  if (stem.Length() != 4 || stem.buffer[3] < L'0') return false;
  WString letters;
  letters.AssignMid(stem.CStr(), 1, 3);
  const wchar_t digit = stem.buffer[3];
  // The superscripts one to three count as digits of a port.
  const bool isDigit = digit <= L'9' || digit == 0xB9 || digit == 0xB2 || digit == 0xB3;
  return isDigit && (letters.EqualsNoCase(L"COM") || letters.EqualsNoCase(L"LPT"));
}

// The system finds a device by the name in front of the first dot, in any folder.
bool IsDeviceName(const WString& name) {
  WString stem(name);
  if (const int32_t dot = stem.Find(L".")) stem.Truncate(dot - 1);
  stem.Trim(kTrimTrailing);
  for (const wchar_t* device : kDevices) {
    if (stem.EqualsNoCase(device)) return true;
  }
  return IsPort(stem);
}

bool IsPlainComponent(const wchar_t* begin, int32_t length) {
  if (length == 0) return false;
  const wchar_t last = begin[length - 1];
  if (last == L'.' || last == L' ') return false;
  for (int32_t i = 0; i < length; i++) {
    const wchar_t unit = begin[i];
    if (unit < L' ' || unit == L'/' || unit == L':' || unit == L'*' || unit == L'?' || unit == L'"' ||
        unit == L'<' || unit == L'>' || unit == L'|') {
      return false;
    }
  }
  WString name;
  name.AssignMid(begin, 1, length);
  return !IsDeviceName(name);
}

bool ArePlainComponents(const wchar_t* text) {
  const wchar_t* begin = text;
  for (const wchar_t* at = text;; at++) {
    if (at - text > kLongestPath) return false;
    if (*at != L'\\' && *at != 0) continue;
    if (!IsPlainComponent(begin, static_cast<int32_t>(at - begin))) return false;
    if (*at == 0) return true;
    begin = at + 1;
  }
}

bool IsLetter(wchar_t unit) { return (unit >= L'a' && unit <= L'z') || (unit >= L'A' && unit <= L'Z'); }

}  // namespace

bool IsPlainRelativePath(const wchar_t* path) { return path && path[0] && ArePlainComponents(path); }

bool IsPlainFullPath(const wchar_t* path) {
  if (!path || !path[0] || !path[1]) return false;
  if (IsLetter(path[0]) && path[1] == L':' && path[2] == L'\\') {
    return path[3] == 0 || ArePlainComponents(path + 3);
  }
  return path[0] == L'\\' && path[1] == L'\\' && ArePlainComponents(path + 2);
}
