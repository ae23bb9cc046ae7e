// option_pair.h
//
// The value of an option that has two sides, such as --map Anna=Bob.
#pragma once
#include <string>

#include "foundation/wstring.h"

struct OptionPair {
  WString from, to;
  bool hasTo = false;  // whether there was a "="
};

// Split at the first "=": neither an account's name nor a folder of a backup holds one, while the place
// that a folder goes to may.
OptionPair SplitPair(const std::string& text);
