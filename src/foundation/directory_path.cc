// Paths of directories: making a whole one, and names that are too long for the calls.
#include <shlwapi.h>

#include "foundation/file_object.h"
#include "foundation/file_queries.h"
#include "foundation/split_list.h"

namespace {

constexpr int32_t kPrefixLength = 4;  // of "\\?\"

bool HasLongPathPrefix(const WString& path) { return path.Find(L"\\\\?\\", true, 1, 1, kPrefixLength) == 1; }

bool IsThere(const wchar_t* path) { return FileAttributesOf(path) != INVALID_FILE_ATTRIBUTES; }

bool IsDirectory(const wchar_t* path) {
  const DWORD attributes = FileAttributesOf(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// True for a directory that is there afterwards, whoever made it.
bool MakeOneDirectory(const wchar_t* path) {
  if (CreateDirectoryW(path, nullptr)) return true;
  const DWORD error = GetLastError();
  if (error == ERROR_ALREADY_EXISTS && IsDirectory(path)) return true;
  SetLastError(error);
  return false;
}

// From the top down, for a path of which more than the last component is missing.
bool MakeFromTop(WString& path, bool hasPrefix) {
  const wchar_t* const prefix = hasPrefix ? L"\\\\?\\" : L"\\\\";
  path.RemoveLeft(UnitCount(prefix));
  SplitList components;
  components.Split(path.CStr(), L"\\", true);
  if (components.count < 2) {
    SetLastError(ERROR_PATH_NOT_FOUND);
    return false;
  }
  WString made;
  made.Concat(prefix, components.pieces[0]);
  for (uint32_t row = 1; row < components.count; ++row) {
    if (components.pieces[row][0] == 0) continue;
    made.Concat(made.CStr(), L"\\", components.pieces[row]);
    if (!IsThere(made.CStr()) && !MakeOneDirectory(made.CStr())) return false;
  }
  // A file may stand where the last component should be.
  if (IsDirectory(made.CStr())) return true;
  SetLastError(ERROR_DIRECTORY);
  return false;
}

}  // namespace

bool MakeDirectoryPath(const wchar_t* path) {
  WString target(path);
  target.AddLongPathPrefix();
  target.StripTrailingBackslashes();
  const bool hasPrefix = HasLongPathPrefix(target);
  if (target.Length() < 3 || (hasPrefix && target.Length() < kPrefixLength + 2)) {
    SetLastError(ERROR_INVALID_NAME);
    return false;
  }
  if (hasPrefix && target.Length() == kPrefixLength + 2) {
    // Older systems' PathIsRootW knows no prefix.
    target.Append(L"\\");
    if (PathIsRootW(target.CStr() + kPrefixLength)) return true;
    SetLastError(ERROR_INVALID_NAME);
    return false;
  }
  if (IsDirectory(target.CStr())) return true;
  if (MakeOneDirectory(target.CStr())) return true;
  return MakeFromTop(target, hasPrefix);
}

bool MakeFolderOfFile(const wchar_t* path) {
  WString folder(path);
  if (folder.LastBackslash() < 3) return true;  // a bare name, or a file in the root of a drive
  folder.ParentPath();
  return folder.Length() <= 2 || MakeDirectoryPath(folder.CStr());
}

WString PathForCalls(const wchar_t* path) {
  WString fitting(path);
  // Behind the prefix the system takes a path as it stands, so one with slashes stays as it is.
  if (fitting.Length() < MAX_PATH || fitting.Find(L"/") != 0) return fitting;
  if (fitting.Find(L"\\\\", true, 1, 1, 2) == 0) {
    fitting.AddLongPathPrefix();
  } else if (fitting.buffer[2] != L'?' && fitting.buffer[2] != L'.') {
    fitting.RemoveLeft(2);
    fitting.Prepend(L"\\\\?\\UNC\\");
  }
  return fitting;
}
