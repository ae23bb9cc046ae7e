// split_list.h
//
// The pieces of a text cut at delimiters. The pieces lie in the list's own copy of the text.
#pragma once
#include "foundation/wstring.h"

class SplitList {
 public:
  uint32_t count;
  uint32_t capacity;
  wchar_t** pieces;  // each points into `text`; valid until the next Split
  WString text;      // delimiters are overwritten with zero units

  SplitList();
  SplitList(const SplitList&) = delete;
  SplitList& operator=(const SplitList&) = delete;
  ~SplitList();

  // `delimiter` is one string when `delimiterIsWhole`, otherwise a set of single units. Empty pieces
  // between delimiters stay; nothing behind a last delimiter is no piece.
  void Split(const wchar_t* source, const wchar_t* delimiter, bool delimiterIsWhole);

 private:
  void Add(wchar_t* piece);
};
