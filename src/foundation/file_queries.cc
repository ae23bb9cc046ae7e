#include "foundation/file_queries.h"

#include "foundation/directory_enumerator.h"
#include "foundation/file_object.h"
#include "foundation/unique_handle.h"

DWORD FileAttributesOf(const wchar_t* path) {
  const DWORD attributes = GetFileAttributesW(path);
  if (attributes != INVALID_FILE_ATTRIBUTES) return attributes;
  // That call uses no privilege, and knows nothing of what the system keeps to itself. The folder's listing
  // is opened for backup.
  const DWORD error = GetLastError();
  if (error != ERROR_ACCESS_DENIED && error != ERROR_SHARING_VIOLATION) return attributes;
  WString entryPath(path);
  entryPath.StripTrailingBackslashes();
  const int32_t units = entryPath.Length();
  // The root of a drive is no entry of a folder.
  if (units == 0 || entryPath.buffer[units - 1] == L':') {
    SetLastError(error);
    return attributes;
  }
  WIN32_FIND_DATAW entry;
  const UniqueFind search(FindFirstFileW(entryPath.CStr(), &entry));
  return search ? entry.dwFileAttributes : INVALID_FILE_ATTRIBUTES;
}

bool GetAttributesAndTag(HANDLE handle, FILE_ATTRIBUTE_TAG_INFO& info) {
  if (GetFileInformationByHandleEx(handle, FileAttributeTagInfo, &info, sizeof(info))) return true;
  // FAT, CDs and some file servers don't know this class. They have hardly any reparse points either.
  BY_HANDLE_FILE_INFORMATION plain;
  if (!IsUnsupported(GetLastError()) || !GetFileInformationByHandle(handle, &plain)) return false;
  info.FileAttributes = plain.dwFileAttributes;
  info.ReparseTag = 0;
  return true;
}

bool IsUnsupported(DWORD error) {
  return error == ERROR_INVALID_PARAMETER || error == ERROR_INVALID_FUNCTION || error == ERROR_NOT_SUPPORTED;
}

uint64_t GetFileSize64(const wchar_t* path) {
  const WString fitting = PathForCalls(path);
  const UniqueFile file(CreateFileW(fitting.CStr(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, 0, nullptr));
  LARGE_INTEGER size;
  if (file && GetFileSizeEx(file.Get(), &size)) return static_cast<uint64_t>(size.QuadPart);
  WIN32_FIND_DATAW entry;
  const UniqueFind search(FindFirstFileW(fitting.CStr(), &entry));
  if (!search) return 0;
  return static_cast<uint64_t>(entry.nFileSizeHigh) << 32 | entry.nFileSizeLow;
}

bool ResolveFoundName(wchar_t* buffer) {
  DirectoryEnumerator search;
  if (!search.First(buffer, kSkipReparsePoints)) return false;
  WString found(buffer);
  found.ParentPath(true);
  found.Append(search.data.cFileName);
  const int32_t units = found.Length();
  if (units >= kFoundNameCapacity) return false;
  CopyMemory(buffer, found.CStr(), (static_cast<size_t>(units) + 1) * sizeof(wchar_t));
  return true;
}
