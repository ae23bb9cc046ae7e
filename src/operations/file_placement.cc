#include "operations/file_placement.h"

#include "foundation/force_delete.h"

namespace {

// Scanners and indexers like to look at a file that has just been written, and keep it from being
// renamed for that moment.
bool Rename(const wchar_t* temporary, const wchar_t* target, DWORD flags) {
  constexpr DWORD kPauses[] = {5, 20, 75};  // milliseconds
  for (DWORD pause : kPauses) {
    if (MoveFileExW(temporary, target, flags)) return true;
    if (GetLastError() != ERROR_SHARING_VIOLATION) return false;
    Sleep(pause);
  }
  return MoveFileExW(temporary, target, flags) != 0;
}

bool Replace(const wchar_t* temporary, const wchar_t* target) {
  return Rename(temporary, target, MOVEFILE_REPLACE_EXISTING);
}

// Whether it is the file in the place that said no. After any other error, such as a full disk, the old
// file is the last good copy and must not be touched.
bool IsRefusal(DWORD error) {
  return error == ERROR_ACCESS_DENIED || error == ERROR_LOCK_VIOLATION || error == ERROR_USER_MAPPED_FILE;
}

// The file keeps standing until the new one takes its place, so the attribute goes first, and comes back
// if that doesn't help.
bool ReplaceReadOnly(const wchar_t* temporary, const wchar_t* target, DWORD attributes) {
  if (!(attributes & FILE_ATTRIBUTE_READONLY)) return false;
  DWORD writable = attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY);
  if (!SetFileAttributesW(target, writable ? writable : FILE_ATTRIBUTE_NORMAL)) return false;
  if (Replace(temporary, target)) return true;
  SetFileAttributesW(target, attributes);
  return false;
}

}  // namespace

Placement PutInPlace(const wchar_t* temporary, const wchar_t* target, bool targetExists, DWORD& error) {
  if (!targetExists && Rename(temporary, target, 0)) return Placement::kPlaced;
  if (Replace(temporary, target)) return Placement::kReplaced;
  error = GetLastError();
  DWORD attributes = GetFileAttributesW(target);
  if (attributes == INVALID_FILE_ATTRIBUTES) return Placement::kFailed;
  if (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) return Placement::kRefused;
  // One of the two files is in use, which no force helps against.
  if (error == ERROR_SHARING_VIOLATION) return Placement::kRefused;
  if (!IsRefusal(error)) return Placement::kFailed;
  if (ReplaceReadOnly(temporary, target, attributes)) return Placement::kReplaced;
  if (ForceDelete(target, kDeleteTakeOwnership) != kDeleted) return Placement::kRefused;
  if (Replace(temporary, target)) return Placement::kReplaced;
  error = GetLastError();
  return Placement::kFailed;
}
