// The attributes of a file on the terminal.
#include <windows.h>

#include "machine/complaint.h"
#include "machine/names.h"
#include "machine/show_machine.h"
#include "machine/text_output.h"

namespace machine {
namespace {

struct Letter {
  char letter;
  DWORD attribute;
  bool isSettable;
};
constexpr Letter kLetters[] = {
    {'A', FILE_ATTRIBUTE_ARCHIVE, true},    {'S', FILE_ATTRIBUTE_SYSTEM, true},
    {'H', FILE_ATTRIBUTE_HIDDEN, true},     {'R', FILE_ATTRIBUTE_READONLY, true},
    {'D', FILE_ATTRIBUTE_DIRECTORY, false}, {'L', FILE_ATTRIBUTE_REPARSE_POINT, false},
};

// "+R", also with several letters: "+RH".
bool Apply(const std::string& change, DWORD& attributes) {
  if (change.size() < 2 || (change[0] != '+' && change[0] != '-')) return false;
  for (size_t i = 1; i < change.size(); ++i) {
    const Letter* found = nullptr;
    for (const Letter& known : kLetters) {
      if (known.isSettable && (known.letter == change[i] || (known.letter | 0x20) == change[i]))
        found = &known;
    }
    if (!found) return false;
    attributes = change[0] == '+' ? attributes | found->attribute : attributes & ~found->attribute;
  }
  return true;
}

}  // namespace

bool ShowAttributes(const std::string& path, const std::vector<std::string>& changes, FILE* output,
                    std::string* error) {
  // With the prefix, so that a path of any length can be named.
  const std::u16string wide = ToUtf16(path.starts_with("\\\\") ? path : "\\\\?\\" + path);
  DWORD attributes = GetFileAttributesW(AsWide(wide));
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    return Complain(error, "\"" + path + "\" can't be found: " + ErrorReason(GetLastError()) + ".");
  }
  for (const std::string& change : changes) {
    if (!Apply(change, attributes)) {
      return Complain(error, "\"" + change +
                                 "\" is no change of attributes. Changes are +R, -R, +H, -H, +S, -S, "
                                 "+A and -A.");
    }
  }
  if (!changes.empty()) {
    if (!SetFileAttributesW(AsWide(wide), attributes)) {
      return Complain(
          error, "The attributes of \"" + path + "\" can't be set: " + ErrorReason(GetLastError()) + ".");
    }
    attributes = GetFileAttributesW(AsWide(wide));
  }
  std::string text;
  for (const Letter& known : kLetters) text += (attributes & known.attribute) ? known.letter : '-';
  fprintf(output, "%s  %s\n", text.c_str(), Escaped(path).c_str());
  return true;
}

}  // namespace machine
