#include "operations/file_placement.h"

#include "foundation/force_delete.h"
#include "foundation/unique_handle.h"
#include "operations/temporary_file.h"

namespace {

// Scanners and indexers like to look at a file that has just been written, and keep it from being
// renamed for that moment. Waiting that helps costs no patience: it is the price of a file.
bool Rename(const wchar_t* from, const wchar_t* to, DWORD flags, uint32_t& patience) {
  constexpr DWORD kPauses[] = {5, 20, 75};  // milliseconds
  constexpr DWORD kAllPauses = 100;
  if (MoveFileExW(from, to, flags)) return true;
  if (GetLastError() != ERROR_SHARING_VIOLATION || patience < kAllPauses) return false;
  for (DWORD pause : kPauses) {
    Sleep(pause);
    if (MoveFileExW(from, to, flags)) return true;
    if (GetLastError() != ERROR_SHARING_VIOLATION) break;
  }
  patience -= kAllPauses;
  return false;
}

bool Replace(const wchar_t* temporary, const wchar_t* target, uint32_t& patience) {
  return Rename(temporary, target, MOVEFILE_REPLACE_EXISTING, patience);
}

// Whether it is the file in the place that said no. After any other error, such as a full disk, the old
// file is the last good copy and must not be touched.
bool IsRefusal(DWORD error) {
  return error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION ||
         error == ERROR_USER_MAPPED_FILE;
}

// Whether somebody keeps the file itself from being renamed.
bool IsHeld(const wchar_t* path) {
  UniqueFile file(CreateFileW(path, DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  return !file && GetLastError() == ERROR_SHARING_VIOLATION;
}

// The file keeps standing until the new one takes its place, so the attribute goes first, and comes back
// if that doesn't help.
bool ReplaceReadOnly(const wchar_t* temporary, const wchar_t* target, DWORD attributes, uint32_t& patience) {
  if (!(attributes & FILE_ATTRIBUTE_READONLY)) return false;
  DWORD writable = attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY);
  if (!SetFileAttributesW(target, writable ? writable : FILE_ATTRIBUTE_NORMAL)) return false;
  if (Replace(temporary, target, patience)) return true;
  SetFileAttributesW(target, attributes);
  return false;
}

// Renames the old file to a temporary name of its folder, which goes to `aside`. A file that others hold
// and let be deleted can be renamed, although it can't be replaced.
bool StepAside(const wchar_t* temporary, const wchar_t* target, uint32_t& patience, WString& aside) {
  DWORD error = ERROR_FILE_EXISTS;
  for (int index = 0; NameOtherTemporary(temporary, index, aside); index++) {
    if (Rename(target, aside.CStr(), 0, patience)) return true;
    error = GetLastError();
    // The others may be another run's, or wait for somebody to close them.
    if (!SaysThatPlaceIsTaken(error) && error != ERROR_ACCESS_DENIED) break;
  }
  SetLastError(error);
  return false;
}

// To delete the old file first would leave neither of the two if the new one then can't be renamed: it
// may be held, or the old one's name stay taken until the last who has it open closes it.
Placement ReplaceByForce(const wchar_t* temporary, const wchar_t* target, uint32_t& patience, DWORD& error) {
  WString aside;
  bool isAside = StepAside(temporary, target, patience, aside);
  error = isAside ? NO_ERROR : GetLastError();
  if (error == ERROR_ACCESS_DENIED && TakeOverFile(target)) {
    if (Replace(temporary, target, patience)) return Placement::kReplaced;
    isAside = StepAside(temporary, target, patience, aside);
    error = GetLastError();
  }
  if (!isAside) return Placement::kRefused;
  if (!Rename(temporary, target, 0, patience)) {
    error = GetLastError();
    Rename(aside.CStr(), target, 0, patience);
    return Placement::kFailed;
  }
  ForceDelete(aside.CStr(), kDeleteTakeOwnership);
  return Placement::kReplaced;
}

}  // namespace

bool SaysThatPlaceIsTaken(DWORD error) { return error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS; }

Placement PutInPlace(const wchar_t* temporary, const wchar_t* target, Place place, uint32_t& patience,
                     DWORD& error) {
  if (place != Place::kTaken && Rename(temporary, target, 0, patience)) return Placement::kPlaced;
  if (place == Place::kNotOurs) {
    error = GetLastError();
    return SaysThatPlaceIsTaken(error) ? Placement::kLeft : Placement::kFailed;
  }
  if (Replace(temporary, target, patience)) return Placement::kReplaced;
  error = GetLastError();
  DWORD attributes = GetFileAttributesW(target);
  if (attributes == INVALID_FILE_ATTRIBUTES) return Placement::kFailed;
  if (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) return Placement::kRefused;
  if (!IsRefusal(error)) return Placement::kFailed;
  if (error == ERROR_SHARING_VIOLATION && IsHeld(temporary)) return Placement::kFailed;
  if (ReplaceReadOnly(temporary, target, attributes, patience)) return Placement::kReplaced;
  return ReplaceByForce(temporary, target, patience, error);
}
