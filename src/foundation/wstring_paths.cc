// Paths. All of it is text: nothing here asks the system.
#include "foundation/wstring.h"

WString& WString::StripTrailingBackslashes() {
  const int32_t units = Length();
  ok = units > 0;
  int32_t rest = units;
  while (rest > 0 && buffer[rest - 1] == L'\\') --rest;
  if (rest < units) {
    buffer[rest] = 0;
    length = rest;
  }
  return *this;
}

WString& WString::LastComponent() {
  ok = false;
  const int32_t position = LastBackslash();
  if (position > 0) {
    RemoveLeft(position);
    return *this;
  }
  const int32_t units = Length();
  if (units >= 2 && buffer[units - 1] == L':') Clear();
  return *this;
}

WString& WString::ParentPath(bool keepBackslash) {
  StripTrailingBackslashes();
  const int32_t position = LastBackslash();
  if (position < 3) {
    if (keepBackslash) Append(L"\\");
    return *this;
  }
  Truncate(keepBackslash ? position : position - 1);
  return *this;
}

WString& WString::AddLongPathPrefix() {
  ok = true;
  if (Length() < 2 || buffer[1] != L':') return *this;
  Prepend(L"\\\\?\\");
  return *this;
}
