// given_path.h
//
// A path as a person gave it on the command line.
#pragma once
#include <string>

#include "foundation/wstring.h"

// Absolute, with backslashes, without one at its end, and with a capital drive letter: the letters are
// told apart by their case where it is asked whether two drives are one.
WString GivenPath(const WString& text);
WString GivenPath(const std::string& utf8);
