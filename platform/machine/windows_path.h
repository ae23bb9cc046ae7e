// windows_path.h
//
// A path as the calls of Windows read it: made whole, cleaned by the rules for paths without the long
// path prefix, and refused with the error that Windows gives.
#pragma once
#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace machine {

struct WindowsPath {
  std::u16string text;          // "C:\Users\Anna" or "C:\"; without prefix and trailing backslash
  std::u16string folded;        // the same, for comparing
  bool wantsDirectory = false;  // it was given with a backslash at its end
  std::vector<uint32_t> ends;   // where each component ends in `text`; the first one is the drive's

  bool IsRoot() const { return ends.size() == 1; }
  size_t Count() const { return ends.size() - 1; }  // components behind the drive
  std::u16string_view Component(size_t index) const;
  std::u16string_view Name() const { return Component(Count() - 1); }  // not of a root
  std::u16string_view Folded(size_t components) const;                 // "C:\USERS" for 1, "C:" for 0
  std::string Utf8() const;

  // A path from its clean text, such as after a link: no checks.
  static WindowsPath FromText(std::u16string text);
};

// What limit holds for a path without the prefix.
enum class PathUse { kFile, kNewDirectory, kPattern };

// False with the last error set: ERROR_PATH_NOT_FOUND for a null, empty or too long path,
// ERROR_INVALID_NAME for what can't be a name, ERROR_FILENAME_EXCED_RANGE for a directory without room
// for short names below it, ERROR_BAD_NETPATH for a server. With kPattern the last component may hold
// wildcards.
bool ParsePath(const wchar_t* path, WindowsPath& result, PathUse use = PathUse::kFile);

// The path made whole as GetFullPathNameW does it: slashes turned, "." and ".." taken out, dots and
// blanks at the end removed. Works on the text alone.
std::u16string FullPath(std::u16string_view path);

// What a path without a drive starts from: the folder of the program in the machine, until another one
// is set. Empty sets it back.
std::u16string CurrentFolder();
void SetCurrentFolder(std::u16string folder);

}  // namespace machine
