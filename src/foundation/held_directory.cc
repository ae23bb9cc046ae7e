#include "foundation/held_directory.h"

#include "foundation/directory_enumerator.h"
#include "foundation/file_queries.h"
#include "foundation/wstring.h"

HoldResult HeldDirectory::Open(const wchar_t* path, bool followLink) {
  // A drive's name without a backslash is its volume, and not its root.
  WString directoryPath(path);
  const int32_t units = directoryPath.Length();
  if (units > 0 && directoryPath.buffer[units - 1] == L':') directoryPath.Append(L"\\");
  // The right to list is what makes the missing share mode count against a rename or a delete.
  const DWORD openFlags = FILE_FLAG_BACKUP_SEMANTICS | (followLink ? 0 : FILE_FLAG_OPEN_REPARSE_POINT);
  UniqueFile directory(CreateFileW(directoryPath.CStr(), FILE_LIST_DIRECTORY,
                                   FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, openFlags,
                                   nullptr));
  handle_.Reset();
  if (!directory) return HoldResult::kFailed;
  FILE_ATTRIBUTE_TAG_INFO info;
  if (!GetAttributesAndTag(directory.Get(), info)) {
    const DWORD error = GetLastError();
    directory.Reset();
    SetLastError(error);
    return HoldResult::kFailed;
  }
  if (!followLink && IsLink(info.FileAttributes, info.ReparseTag)) return HoldResult::kLink;
  if ((info.FileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
    directory.Reset();
    SetLastError(ERROR_DIRECTORY);
    return HoldResult::kFailed;
  }
  handle_ = std::move(directory);
  return HoldResult::kHeld;
}
