#include "operations/path_queries.h"

#include "foundation/file_queries.h"

namespace {

int32_t LengthWithoutBackslashes(const WString& path) {
  int32_t length = path.Length();
  while (length > 0 && path.buffer[length - 1] == L'\\') length--;
  return length;
}

// The path made absolute by the system. The text itself where the system can't.
WString FullPath(const wchar_t* text) {
  DWORD room = GetFullPathNameW(text, 0, nullptr, nullptr);
  WString path;
  if (room == 0) return WString(text);
  wchar_t* buffer = path.Reserve(static_cast<int32_t>(room), nullptr, true);
  DWORD used = GetFullPathNameW(text, room, buffer, nullptr);
  return used == 0 || used >= room ? WString(text) : path;
}

int32_t ComponentLength(const wchar_t* text) {
  int32_t length = 0;
  while (text[length] != 0 && text[length] != L'\\') length++;
  return length;
}

int CompareNames(const wchar_t* a, int32_t aLength, const wchar_t* b, int32_t bLength) {
  if (aLength != 0 && bLength != 0) return CompareStringOrdinal(a, aLength, b, bLength, TRUE);
  if (aLength == bLength) return CSTR_EQUAL;
  return aLength == 0 ? CSTR_LESS_THAN : CSTR_GREATER_THAN;
}

}  // namespace

DWORD PathAttributes(const wchar_t* path) {
  WString name(path);
  // "\\?\D:" alone would be the volume, not its root folder.
  if (name.Length() == 2 && name.buffer[1] == L':') name.Append(L"\\");
  return FileAttributesOf(name.AddLongPathPrefix().CStr());
}

bool IsFilePath(const wchar_t* path) {
  DWORD attributes = PathAttributes(path);
  return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool IsFolderPath(const wchar_t* path) {
  DWORD attributes = PathAttributes(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool IsRealFolderPath(const wchar_t* path) {
  DWORD attributes = PathAttributes(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) &&
         !(attributes & FILE_ATTRIBUTE_REPARSE_POINT);
}

bool IsMissingPath(const wchar_t* path) {
  if (PathAttributes(path) != INVALID_FILE_ATTRIBUTES) return false;
  DWORD error = GetLastError();
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

WString CleanPath(const wchar_t* text) {
  if (UnitCount(text) == 0) return WString(L"");
  WString path(text);
  // Without its backslash, the system takes a drive for the current folder there.
  if (path.Length() == 2 && path.buffer[1] == L':') path.Append(L"\\");
  path = FullPath(path.CStr());
  constexpr int32_t kPrefixLength = 4;
  bool prefixed = path.Find(L"\\\\?\\", true, 1, 1, kPrefixLength) == 1;
  if (prefixed && path.Length() > kPrefixLength + 1 && path.buffer[kPrefixLength + 1] == L':') {
    path.RemoveLeft(kPrefixLength);
  }
  path.StripTrailingBackslashes();
  return path;
}

bool IsAbsolutePath(const WString& path) {
  if (path.Length() < 3) return false;
  bool fromDrive = path.buffer[1] == L':' && path.buffer[2] == L'\\';
  return fromDrive || (path.buffer[0] == L'\\' && path.buffer[1] == L'\\');
}

bool IsPlainName(const WString& name) {
  WString cleaned(name);
  if (cleaned.StripFileNameChars() != 0) return false;
  for (int32_t i = 0; i < cleaned.Length(); i++) {
    if (cleaned.buffer[i] != L'.' && cleaned.buffer[i] != L' ') return true;
  }
  return false;
}

bool IsSameOrInside(const WString& inner, const WString& outer) {
  int32_t length = LengthWithoutBackslashes(outer);
  if (length == 0 || LengthWithoutBackslashes(inner) < length) return false;
  // The next component must begin there: C:\Data doesn't hold C:\Database.
  if (inner.buffer[length] != 0 && inner.buffer[length] != L'\\') return false;
  // Names are compared as the file system does, beyond the letters A to Z.
  return CompareStringOrdinal(inner.buffer, length, outer.buffer, length, TRUE) == CSTR_EQUAL;
}

bool IsInOneOf(const WString& path, const WStringArray& folders) {
  for (uint32_t row = 0; row < folders.count; row++) {
    if (IsSameOrInside(path, folders[row])) return true;
  }
  return false;
}

bool IsPathBefore(const WString& a, const WString& b) {
  const wchar_t* left = a.CStr();
  const wchar_t* right = b.CStr();
  for (;;) {
    const int32_t leftLength = ComponentLength(left), rightLength = ComponentLength(right);
    const int order = CompareNames(left, leftLength, right, rightLength);
    if (order != CSTR_EQUAL) return order == CSTR_LESS_THAN;
    if (left[leftLength] == 0 || right[rightLength] == 0) return right[rightLength] != 0;
    left += leftLength + 1;
    right += rightLength + 1;
  }
}

WString PathBelow(const WString& folder, const wchar_t* relative) {
  WString path(folder);
  path.StripTrailingBackslashes();
  path.Append(L"\\").Append(relative);
  return path;
}

bool IsNameInBars(const WString& list, const wchar_t* name) {
  WString item;
  item.Concat(L"|", name, L"|");
  return list.Find(item.CStr(), false) != 0;
}
