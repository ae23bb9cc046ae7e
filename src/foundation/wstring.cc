#include "foundation/wstring.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

wchar_t* CopyUnits(const wchar_t* text, int32_t count) {
  wchar_t* units = AllocateUnits(count);
  if (count > 0) memcpy(units, text, static_cast<size_t>(count) * sizeof(wchar_t));
  units[count] = 0;
  return units;
}

}  // namespace

void EndOutOfMemory() {
  fputs("Norvane: out of memory\n", stderr);
  abort();
}

wchar_t* AllocateUnits(int64_t count) {
  if (count < 0) count = 0;
  // In 64 bits: a size that 32 bits don't hold must fail, not come back small.
  const uint64_t bytes = (static_cast<uint64_t>(count) + 1) * sizeof(wchar_t);
  void* memory = bytes > 0xffffffffu ? nullptr : malloc(static_cast<size_t>(bytes));
  if (memory == nullptr) EndOutOfMemory();
  return static_cast<wchar_t*>(memory);
}

void FreeUnits(wchar_t* units) { free(units); }

int32_t UnitCount(const wchar_t* text) {
  if (text == nullptr) return 0;
  const wchar_t* end = text;
  while (*end != 0) ++end;
  return static_cast<int32_t>(end - text);
}

WString::WString() : buffer(nullptr), length(0), ok(true) {}

WString::WString(const wchar_t* text) : buffer(nullptr), length(0), ok(true) { Assign(text); }

WString::WString(const WString& other) : buffer(nullptr), length(0), ok(true) {
  const_cast<WString&>(other).CStr();
  length = const_cast<WString&>(other).Length();
  buffer = CopyUnits(other.buffer, length);
}

WString::WString(WString&& other) noexcept : buffer(other.buffer), length(other.length), ok(true) {
  other.buffer = nullptr;
  other.length = 0;
  other.ok = true;
}

WString& WString::operator=(const WString& other) {
  if (this == &other) return *this;
  const_cast<WString&>(other).CStr();
  const int32_t units = const_cast<WString&>(other).Length();
  wchar_t* old = buffer;
  buffer = CopyUnits(other.buffer, units);
  length = units;
  ok = true;
  FreeUnits(old);
  return *this;
}

WString& WString::operator=(WString&& other) noexcept {
  if (this == &other) return *this;
  FreeUnits(buffer);
  buffer = other.buffer;
  length = other.length;
  ok = true;
  other.buffer = nullptr;
  other.length = 0;
  other.ok = true;
  return *this;
}

WString& WString::operator=(const wchar_t* text) {
  Concat(text);  // unlike Assign, it may be given a part of this string
  return *this;
}

WString::~WString() { FreeUnits(buffer); }

void WString::Clear() {
  FreeUnits(buffer);
  buffer = nullptr;
  length = 0;
  ok = true;
}

void WString::Assign(const wchar_t* text) {
  FreeUnits(buffer);
  length = UnitCount(text);
  buffer = CopyUnits(text, length);
  ok = true;
}

void WString::Attach(wchar_t* text, bool copy) {
  if (copy || text == nullptr) {
    Assign(text);
    return;
  }
  if (text != buffer) FreeUnits(buffer);
  buffer = text;
  length = 0;
  ok = true;
}

void WString::AssignMid(const wchar_t* text, int32_t start, int32_t count) {
  if (text == nullptr || text[0] == 0) {
    if (buffer != nullptr) buffer[0] = 0;
    length = 0;
    ok = false;
    return;
  }
  for (int32_t position = 1; position < start && *text != 0; ++position) ++text;
  int32_t units = 0;
  while ((count < 1 || units < count) && text[units] != 0) ++units;
  wchar_t* old = buffer;
  buffer = CopyUnits(text, units);
  length = units;
  ok = true;
  FreeUnits(old);
}

wchar_t* WString::Reserve(int32_t capacity, const wchar_t* text, bool zeroFill) {
  if (capacity < 0) capacity = 0;
  wchar_t* old = buffer;
  buffer = AllocateUnits(capacity);
  if (zeroFill) memset(buffer, 0, (static_cast<size_t>(capacity) + 1) * sizeof(wchar_t));
  int32_t units = 0;
  while (text != nullptr && units < capacity && text[units] != 0) {
    buffer[units] = text[units];
    ++units;
  }
  buffer[units] = 0;
  buffer[capacity] = 0;  // a call that fills all the room still leaves a text
  length = 0;
  ok = true;
  FreeUnits(old);
  return buffer;
}

wchar_t* WString::CStr() {
  if (buffer == nullptr) {
    buffer = AllocateUnits(0);
    buffer[0] = 0;
    length = 0;
  }
  ok = true;
  return buffer;
}

const wchar_t* WString::CStr() const { return buffer != nullptr ? buffer : L""; }

int32_t WString::Length() {
  if (length == 0) length = UnitCount(buffer);
  return length;
}

int32_t WString::Length() const { return length != 0 ? length : UnitCount(buffer); }

void WString::Concat(const wchar_t* a, const wchar_t* b, const wchar_t* c, const wchar_t* d, const wchar_t* e,
                     const wchar_t* f, const wchar_t* g, const wchar_t* h, const wchar_t* i, const wchar_t* j,
                     const wchar_t* k) {
  const wchar_t* const texts[] = {a, b, c, d, e, f, g, h, i, j, k};
  int32_t lengths[11];
  int64_t total = 0;
  for (int index = 0; index < 11; ++index) {
    // The own text is met most often, and its length is known.
    lengths[index] = texts[index] != nullptr && texts[index] == buffer ? Length() : UnitCount(texts[index]);
    total += lengths[index];
  }
  wchar_t* joined = AllocateUnits(total);
  wchar_t* end = joined;
  for (int index = 0; index < 11; ++index) {
    if (lengths[index] == 0) continue;
    memcpy(end, texts[index], static_cast<size_t>(lengths[index]) * sizeof(wchar_t));
    end += lengths[index];
  }
  *end = 0;
  FreeUnits(buffer);
  buffer = joined;
  length = static_cast<int32_t>(total);
  ok = true;
}

void WString::Prepend(const wchar_t* a, const wchar_t* b) { Concat(a, b, buffer); }

WString& WString::Append(const wchar_t* text) {
  Concat(buffer, text);
  return *this;
}

void WString::RemoveLeft(int32_t count) {
  ok = true;
  const int32_t units = Length();
  if (units == 0) return;
  if (count < 0) count = 0;
  if (count > units) count = units;
  memmove(buffer, buffer + count, (static_cast<size_t>(units - count) + 1) * sizeof(wchar_t));
  length = units - count;
}

void WString::Truncate(int32_t count) {
  ok = count >= 0 && count <= Length();
  if (!ok) return;
  if (buffer != nullptr) buffer[count] = 0;
  length = count;
}

WString operator+(const WString& left, const wchar_t* right) {
  WString sum;
  sum.Concat(left.CStr(), right);
  return sum;
}

WString operator+(const WString& left, const WString& right) { return left + right.CStr(); }

WString operator+(const wchar_t* left, const WString& right) {
  WString sum;
  sum.Concat(left, right.CStr());
  return sum;
}
