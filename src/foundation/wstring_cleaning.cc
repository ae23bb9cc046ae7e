// Removal of white space, of characters that file names can't have, and of pattern matches.
#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

#include <memory>

#include "foundation/wstring.h"

namespace {

bool IsWhite(wchar_t unit) { return unit == L' ' || unit == L'\t' || unit == L'\r' || unit == L'\n'; }

struct FreePattern {
  void operator()(pcre2_code* pattern) const { pcre2_code_free(pattern); }
};
struct FreeMatchData {
  void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
};

}  // namespace

void WString::Trim(uint32_t flags) {
  const int32_t units = Length();
  ok = units > 0;
  if (!ok) return;
  const wchar_t* from = buffer;
  const wchar_t* end = buffer + units;
  if ((flags & kTrimAll) == 0) {
    if ((flags & kTrimLeading) != 0) {
      while (from < end && IsWhite(*from)) ++from;
    }
    if ((flags & kTrimTrailing) != 0) {
      while (end > from && IsWhite(end[-1])) --end;
    }
  }
  wchar_t* to = buffer;
  for (; from < end; ++from) {
    if (IsWhite(*from)) {
      if ((flags & kTrimAll) != 0) continue;
      if ((flags & kTrimRuns) != 0 && from + 1 < end && IsWhite(from[1])) continue;
    }
    *to++ = *from;
  }
  *to = 0;
  length = static_cast<int32_t>(to - buffer);
}

uint32_t WString::StripFileNameChars() {
  if (IsEmpty()) return 0;
  static constexpr wchar_t kPattern[] = LR"(\\|/|:|\*|\?|"|<|>|\|)";
  int error = 0;
  PCRE2_SIZE offset = 0;
  std::unique_ptr<pcre2_code, FreePattern> pattern(pcre2_compile(
      reinterpret_cast<PCRE2_SPTR>(kPattern), PCRE2_ZERO_TERMINATED, 0, &error, &offset, nullptr));
  return RemoveMatches(pattern.get());
}

uint32_t WString::RemoveMatches(const pcre2_real_code_16* pattern) {
  if (IsEmpty() || pattern == nullptr) return 0;
  std::unique_ptr<pcre2_match_data, FreeMatchData> data(
      pcre2_match_data_create_from_pattern(pattern, nullptr));
  if (data == nullptr) return 0;
  // A removal never needs more room than the text has, but a pattern may ask for it with \K.
  for (int64_t factor = 2;; factor *= 2) {
    WString output;
    const int64_t room = factor * Length() + 2;
    output.Attach(AllocateUnits(room), false);
    PCRE2_SIZE units = static_cast<PCRE2_SIZE>(room);
    const int result =
        pcre2_substitute(pattern, reinterpret_cast<PCRE2_SPTR>(buffer), PCRE2_ZERO_TERMINATED, 0,
                         PCRE2_SUBSTITUTE_GLOBAL, data.get(), nullptr, reinterpret_cast<PCRE2_SPTR>(L""), 0,
                         reinterpret_cast<PCRE2_UCHAR*>(output.buffer), &units);
    if (result == PCRE2_ERROR_NOMEMORY) continue;
    if (result > 0) *this = std::move(output);
    ok = result >= 0;
    return result > 0 ? static_cast<uint32_t>(result) : 0;
  }
}
