#include "operations/path_queries.h"

namespace {

int32_t LengthWithoutBackslashes(const WString& path) {
  int32_t length = path.Length();
  while (length > 0 && path.buffer[length - 1] == L'\\') length--;
  return length;
}

}  // namespace

DWORD PathAttributes(const wchar_t* path) {
  WString name(path);
  // "\\?\D:" alone would be the volume, not its root folder.
  if (name.Length() == 2 && name.buffer[1] == L':') name.Append(L"\\");
  return GetFileAttributesW(name.AddLongPathPrefix().CStr());
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
