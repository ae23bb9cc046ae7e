// code_page.h
//
// The ANSI code page of the machine, 1252.
#pragma once
#include <cstdint>

namespace machine {

char16_t FromCodePage1252(uint8_t byte);

// -1 if the code page doesn't have the unit. With `bestFit` the byte that Windows takes for one that
// looks alike, such as A for U+0100.
int ToCodePage1252(char16_t unit, bool bestFit);

}  // namespace machine
