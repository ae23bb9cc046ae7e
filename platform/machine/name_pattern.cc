// name_pattern.cc
#include "machine/name_pattern.h"

#include <string>

#include "machine/names.h"

namespace machine {
namespace {

// The marks that FindFirstFileW makes of a pattern before the file system sees it.
constexpr char16_t kAnyUpToLastDot = u'<';  // "*" in front of a dot
constexpr char16_t kOneOrEnd = u'>';        // "?"
constexpr char16_t kDotOrEnd = u'"';        // "." in front of a wildcard

std::u16string Marked(std::u16string_view pattern) {
  std::u16string marked(pattern);
  for (size_t i = 0; i < marked.size(); ++i) {
    char16_t next = i + 1 < pattern.size() ? pattern[i + 1] : 0;
    if (pattern[i] == u'?') marked[i] = kOneOrEnd;
    if (pattern[i] == u'.' && (next == u'*' || next == u'?')) marked[i] = kDotOrEnd;
    if (pattern[i] == u'*' && next == u'.') marked[i] = kAnyUpToLastDot;
  }
  return marked;
}

bool Matches(std::u16string_view name, std::u16string_view pattern) {
  while (!pattern.empty()) {
    char16_t mark = pattern[0];
    if (mark == u'*' || mark == kAnyUpToLastDot) {
      std::u16string_view rest = pattern.substr(1);
      size_t last = mark == u'*' ? name.npos : name.rfind(u'.');
      if (last > name.size()) last = name.size();
      for (size_t taken = 0; taken <= last; ++taken) {
        if (Matches(name.substr(taken), rest)) return true;
      }
      return mark == kAnyUpToLastDot && Matches(name.substr(name.size()), rest);
    }
    if (mark == kOneOrEnd) {
      // At the end of the name or of the part in front of a dot it stands for nothing.
      if (!name.empty() && name[0] != u'.') name.remove_prefix(1);
    } else if (mark == kDotOrEnd) {
      if (!name.empty() && name[0] != u'.') return false;
      if (!name.empty()) name.remove_prefix(1);
    } else {
      if (name.empty() || FoldUnit(name[0]) != FoldUnit(mark)) return false;
      name.remove_prefix(1);
    }
    pattern.remove_prefix(1);
  }
  return name.empty();
}

}  // namespace

bool MatchesPattern(std::u16string_view name, std::u16string_view pattern) {
  return Matches(name, Marked(pattern));
}

}  // namespace machine
