#include "foundation/split_list.h"

#include <cstdlib>

namespace {

bool IsInSet(wchar_t unit, const wchar_t* set) {
  for (; *set != 0; ++set) {
    if (unit == *set) return true;
  }
  return false;
}

// Whether `delimiter` stands at `text`; the text's terminator ends the comparison.
bool StandsAt(const wchar_t* text, const wchar_t* delimiter) {
  while (*delimiter != 0 && *text == *delimiter) {
    ++text;
    ++delimiter;
  }
  return *delimiter == 0;
}

}  // namespace

SplitList::SplitList() : count(0), capacity(0), pieces(nullptr) {
  Add(nullptr);  // makes room for the first ten
  count = 0;
}

SplitList::~SplitList() { free(pieces); }

void SplitList::Add(wchar_t* piece) {
  if (count == capacity) {
    const uint32_t room = capacity == 0 ? 10 : capacity * 2;
    const uint64_t bytes = static_cast<uint64_t>(room) * sizeof(wchar_t*);
    void* moved = bytes > SIZE_MAX / 2 ? nullptr : realloc(pieces, static_cast<size_t>(bytes));
    if (moved == nullptr) EndOutOfMemory();
    pieces = static_cast<wchar_t**>(moved);
    capacity = room;
  }
  pieces[count++] = piece;
}

void SplitList::Split(const wchar_t* source, const wchar_t* delimiter, bool delimiterIsWhole) {
  // Both may lie in the text that is about to go.
  const WString cut(delimiter);
  text.Concat(source);
  count = 0;
  wchar_t* piece = text.CStr();
  if (cut.IsEmpty() || *piece == 0) {
    Add(piece);
    return;
  }
  const int32_t width = delimiterIsWhole ? cut.Length() : 1;
  for (wchar_t* place = piece; *place != 0;) {
    if (delimiterIsWhole ? !StandsAt(place, cut.buffer) : !IsInSet(*place, cut.buffer)) {
      ++place;
      continue;
    }
    *place = 0;
    place += width;
    Add(piece);
    piece = place;
  }
  if (*piece != 0) Add(piece);
}
