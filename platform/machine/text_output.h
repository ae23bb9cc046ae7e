// text_output.h
//
// Text of a machine on the terminal of norvane-machine.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>

namespace machine {

// Control characters and what is no UTF-8 as \xNN, so that a name can't steer the terminal.
std::string Escaped(std::string_view text);

// "12,345".
std::string Grouped(uint64_t number);

// Bytes in the largest unit that leaves a number above 1, such as "1.4 GiB".
std::string Amount(uint64_t bytes);

}  // namespace machine
