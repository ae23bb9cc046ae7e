// wstring.h
//
// The text type of the whole program: 16-bit code units with a terminating zero, a cached length and
// the outcome of the last operation. Positions count from 1; a position of 0 means "not found".
#pragma once
#include <windows.h>

#include <cstdint>

struct pcre2_real_code_16;  // PCRE2's compiled pattern, so that this header needs none of PCRE2's

enum : uint32_t {
  kTrimLeading = 1,
  kTrimTrailing = 2,
  kTrimRuns = 4,  // of every run of white space only its last unit stays
  kTrimAll = 8,   // all white space goes, whatever the other flags say
};

class WString {
 public:
  wchar_t* buffer;  // zero terminated, owned, or null for a string that never held a text
  int32_t length;   // code units; 0 means "not counted yet". Code that writes into `buffer` sets 0.
  bool ok;          // whether the last operation did what it was asked

  WString();
  WString(const wchar_t* text);   // NOLINT: texts turn into strings everywhere
  WString(const WString& other);  // gives a null source an empty buffer, too
  WString(WString&& other) noexcept;
  WString& operator=(const WString& other);
  WString& operator=(WString&& other) noexcept;
  WString& operator=(const wchar_t* text);
  ~WString();

  void Clear();

  // Copies `text`, which must not point into this string; null gives an empty text.
  void Assign(const wchar_t* text);

  // Takes over `text`, made by WString's own allocation (AllocateUnits), unless `copy` is set.
  void Attach(wchar_t* text, bool copy);

  // Up to `count` units of `text` from position `start` on; `count` below 1 means up to its end.
  // `text` may point into this string.
  void AssignMid(const wchar_t* text, int32_t start, int32_t count);

  // A new buffer with room for `capacity` units and the terminator, which begins with at most
  // `capacity` units of `text`. Gives the buffer, for a system call to fill.
  wchar_t* Reserve(int32_t capacity, const wchar_t* text = nullptr, bool zeroFill = false);

  wchar_t* CStr();              // never null
  const wchar_t* CStr() const;  // never null, changes nothing
  int32_t Length();
  int32_t Length() const;
  bool IsEmpty() const { return buffer == nullptr || buffer[0] == 0; }

  // The texts joined; null ones are passed over. They may point into this string.
  void Concat(const wchar_t* a, const wchar_t* b = nullptr, const wchar_t* c = nullptr,
              const wchar_t* d = nullptr, const wchar_t* e = nullptr, const wchar_t* f = nullptr,
              const wchar_t* g = nullptr, const wchar_t* h = nullptr, const wchar_t* i = nullptr,
              const wchar_t* j = nullptr, const wchar_t* k = nullptr);
  void Prepend(const wchar_t* a, const wchar_t* b = nullptr);
  WString& Append(const wchar_t* text);
  WString& operator+=(const wchar_t* text) { return Append(text); }
  WString& operator+=(const WString& text) { return Append(text.CStr()); }
  void RemoveLeft(int32_t count);
  void Truncate(int32_t count);

  // The position of a match or 0. A negative `occurrence` counts from the end; matches may overlap.
  // `span` is the number of units to look at from `start` on, 0 for all. Without `caseSensitive`
  // only A to Z are folded.
  int32_t Find(const wchar_t* needle, bool caseSensitive = true, int32_t occurrence = 1, int32_t start = 1,
               int32_t span = 0) const;
  int32_t LastBackslash() const { return Find(L"\\", true, -1, 1, 0); }

  // `occurrence` 0 replaces all matches, otherwise the one that Find gives for that number.
  WString& Replace(const wchar_t* needle, const wchar_t* replacement, int32_t occurrence = 0,
                   bool caseSensitive = true);

  bool EqualsNoCase(const WString& other) const;
  bool EqualsNoCase(const wchar_t* other) const;
  bool operator==(const WString& other) const;  // unit by unit
  bool operator==(const wchar_t* other) const;

  void Trim(uint32_t flags);
  uint32_t StripFileNameChars();                              // gives the number of units removed
  uint32_t RemoveMatches(const pcre2_real_code_16* pattern);  // gives the number of matches removed

  WString& StripTrailingBackslashes();
  WString& LastComponent();
  WString& ParentPath(bool keepBackslash = false);
  WString& AddLongPathPrefix();

  void FromUInt32(uint32_t value);
  void FromInt32(int32_t value);
  void FromUInt64(uint64_t value);
  uint32_t ToUInt32();
  uint64_t ToUInt64();
  void FromAnsi(const char* bytes);
  void FromUtf8(const char* bytes);
  void FromUtf16BE(const wchar_t* units, int32_t count);
  void NewGuid();
};

WString operator+(const WString& left, const wchar_t* right);
WString operator+(const WString& left, const WString& right);
WString operator+(const wchar_t* left, const WString& right);

// Ends the program, which has no road back from here: nothing in it reports this failure.
[[noreturn]] void EndOutOfMemory();

// Room for `count` units and a terminator from the heap that WString frees; ends the program when
// memory runs out.
wchar_t* AllocateUnits(int64_t count);
void FreeUnits(wchar_t* units);

// As towlower in the "C" locale: only A to Z are folded.
constexpr wchar_t LowerUnit(wchar_t unit) {
  return unit >= L'A' && unit <= L'Z' ? static_cast<wchar_t>(unit + 32) : unit;
}

// The standard library's wide functions count 4 bytes a unit on some systems; these count 2.
int32_t UnitCount(const wchar_t* text);  // 0 for null
