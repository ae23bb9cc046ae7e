// Search, replacement and comparison.
#include <cstring>

#include "foundation/wstring.h"

namespace {

// Whether `needle` of `count` units, above 0, stands at `text`, which has that many units left.
bool Matches(const wchar_t* text, const wchar_t* needle, int32_t count, bool caseSensitive) {
  if (caseSensitive) {
    return *text == *needle && memcmp(text, needle, static_cast<size_t>(count) * sizeof(wchar_t)) == 0;
  }
  for (int32_t index = 0; index < count; ++index) {
    if (text[index] != needle[index] && LowerUnit(text[index]) != LowerUnit(needle[index])) return false;
  }
  return true;
}

// The place of the next match in [place, last], or null.
const wchar_t* NextMatch(const wchar_t* place, const wchar_t* last, const wchar_t* needle, int32_t count,
                         bool caseSensitive) {
  for (; place <= last; ++place) {
    if (Matches(place, needle, count, caseSensitive)) return place;
  }
  return nullptr;
}

bool SameUnits(const wchar_t* a, const wchar_t* b, bool caseSensitive) {
  for (;; ++a, ++b) {
    if (*a != *b && (caseSensitive || LowerUnit(*a) != LowerUnit(*b))) return false;
    if (*a == 0) return true;
  }
}

wchar_t* PutUnits(wchar_t* place, const wchar_t* units, int64_t count) {
  if (count > 0) memmove(place, units, static_cast<size_t>(count) * sizeof(wchar_t));
  return place + count;
}

}  // namespace

int32_t WString::Find(const wchar_t* needle, bool caseSensitive, int32_t occurrence, int32_t start,
                      int32_t span) const {
  if (buffer == nullptr || needle == nullptr || needle[0] == 0) return 0;
  if (start < 1) start = 1;
  if (occurrence == 0) occurrence = 1;
  const int32_t units = Length();
  const int32_t count = UnitCount(needle);
  if (count > units || start > units - count + 1) return 0;
  const int32_t rest = units - start + 1;
  if (span < 1 || span > rest) span = rest;
  if (span < count) return 0;

  const wchar_t* const first = buffer + start - 1;
  const wchar_t* const last = first + span - count;
  if (occurrence > 0) {
    for (const wchar_t* place = first;; ++place) {
      place = NextMatch(place, last, needle, count, caseSensitive);
      if (place == nullptr) return 0;
      if (--occurrence == 0) return static_cast<int32_t>(place - buffer) + 1;
    }
  }
  for (const wchar_t* place = last + 1; place-- != first;) {
    if (Matches(place, needle, count, caseSensitive) && ++occurrence == 0) {
      return static_cast<int32_t>(place - buffer) + 1;
    }
  }
  return 0;
}

WString& WString::Replace(const wchar_t* needle, const wchar_t* replacement, int32_t occurrence,
                          bool caseSensitive) {
  const int32_t units = Length();
  ok = units > 0;
  if (!ok || needle == nullptr || needle[0] == 0) return *this;

  // Both may point into this text. As ends of it they are used up before the work in place gets to them.
  const int32_t cut = UnitCount(needle);
  const int32_t put = UnitCount(replacement);
  if (cut > units) return *this;
  const wchar_t* const last = buffer + units - cut;
  int64_t matches = 0;
  const wchar_t* match = nullptr;
  if (occurrence != 0) {
    const int32_t position = Find(needle, caseSensitive, occurrence, 1, 0);
    if (position == 0) return *this;
    match = buffer + position - 1;
    matches = 1;
  } else {
    match = NextMatch(buffer, last, needle, cut, caseSensitive);
    if (match == nullptr) return *this;
    for (const wchar_t* place = match; place != nullptr;) {
      ++matches;
      place = NextMatch(place + cut, last, needle, cut, caseSensitive);
    }
  }

  const int64_t total = units + matches * (static_cast<int64_t>(put) - cut);
  wchar_t* const output = total > units ? AllocateUnits(total) : buffer;
  const wchar_t* from = buffer;
  wchar_t* end = output;
  while (matches-- > 0) {
    end = PutUnits(end, from, match - from);
    // Looked for before the replacement is written, which never reaches beyond the match itself.
    from = match + cut;
    match = matches > 0 ? NextMatch(from, last, needle, cut, caseSensitive) : nullptr;
    end = PutUnits(end, replacement, put);
  }
  end = PutUnits(end, from, buffer + units - from);
  *end = 0;
  if (output != buffer) {
    FreeUnits(buffer);
    buffer = output;
  }
  length = static_cast<int32_t>(total);
  ok = true;
  return *this;
}

bool WString::EqualsNoCase(const WString& other) const {
  if (buffer == other.buffer) return true;
  if (buffer == nullptr) {
    const_cast<WString&>(other).CStr();
    return false;
  }
  return SameUnits(buffer, const_cast<WString&>(other).CStr(), false);
}

bool WString::EqualsNoCase(const wchar_t* other) const {
  if (buffer == other) return true;
  if (buffer == nullptr) return false;
  return SameUnits(buffer, other != nullptr ? other : L"", false);
}

bool WString::operator==(const WString& other) const { return SameUnits(CStr(), other.CStr(), true); }

bool WString::operator==(const wchar_t* other) const {
  return SameUnits(CStr(), other != nullptr ? other : L"", true);
}
