// utf8_text.h
//
// Texts between the program (UTF-16) and the console (UTF-8). Names of files may hold lone surrogates,
// which UTF-8 has no form for; here they have the three bytes that they would have, and find their file
// again.
#pragma once
#include <string>
#include <string_view>

#include "foundation/wstring.h"

// Bytes that are no UTF-8 become U+FFFD, one each. A zero byte ends the text.
WString FromUtf8Text(std::string_view bytes);

std::string ToUtf8Text(const wchar_t* text);
inline std::string ToUtf8Text(const WString& text) { return ToUtf8Text(text.CStr()); }

// For the eyes of a person: what would act on a terminal or turn the reading direction stands as \x1b or
// \u202e, and a lone surrogate as \ud800. Line ends count among these.
std::string Escaped(const wchar_t* text);
inline std::string Escaped(const WString& text) { return Escaped(text.CStr()); }
std::string Escaped(std::string_view bytes);

// The same for a text of our own that holds names: its line ends stay.
std::string EscapedLines(const wchar_t* text);

// The same inside of JSON, where only the form \u202e is known.
std::string EscapedForJson(std::string_view bytes);
