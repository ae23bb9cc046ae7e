// name_pattern.h
//
// The wildcards of searches, with the rules that Windows has for "?" at the end of a name and for ".".
#pragma once
#include <string_view>

namespace machine {

// Without regard to case. "*.*" takes names without a dot, too; "?" at the end takes nothing as well.
bool MatchesPattern(std::u16string_view name, std::u16string_view pattern);

}  // namespace machine
