// hive_check.h
//
// Whether a hive is whole. libhivex reads a damaged one with errors, but ends the program when it changes
// one in which two keys share a cell or a place leads nowhere, so a hive is looked through before its
// first change.
#pragma once
#include <string_view>

namespace machine {

// `file` is the whole file, its base block checked. True if each bin and cell is in order, and each key,
// list, value and datum that the root leads to is a cell of its own kind that nothing else uses.
bool IsHiveSound(std::string_view file);

}  // namespace machine
