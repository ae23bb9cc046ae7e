#include "operations/file_placement.h"

#include <algorithm>

#include "foundation/file_queries.h"
#include "foundation/force_delete.h"
#include "foundation/unique_handle.h"
#include "operations/temporary_file.h"

namespace {

constexpr uint32_t kWaitForOld = 100;  // milliseconds, for one file
constexpr uint32_t kWaitForNew = 1000;

// Scanners and indexers like to look at a file that has just been written, and keep it from being
// renamed for that moment. Waiting that helps costs no patience: it is the price of a file.
bool Rename(const wchar_t* from, const wchar_t* to, DWORD flags, uint32_t wait, uint32_t& patience) {
  if (MoveFileExW(from, to, flags)) return true;
  const bool mayWait = patience >= wait;
  uint32_t waited = 0;
  for (uint32_t pause = 5; mayWait && waited < wait && GetLastError() == ERROR_SHARING_VIOLATION;
       pause *= 4) {
    pause = std::min(pause, wait - waited);
    Sleep(pause);
    waited += pause;
    if (MoveFileExW(from, to, flags)) return true;
  }
  patience -= waited;
  return false;
}

bool RenameNew(const wchar_t* temporary, const wchar_t* target, DWORD flags, Patience& patience) {
  return Rename(temporary, target, flags, kWaitForNew, patience.forNew);
}

bool Replace(const wchar_t* temporary, const wchar_t* target, Patience& patience) {
  return Rename(temporary, target, MOVEFILE_REPLACE_EXISTING, kWaitForOld, patience.forOld);
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
bool ReplaceReadOnly(const wchar_t* temporary, const wchar_t* target, DWORD attributes, Patience& patience) {
  if (!(attributes & FILE_ATTRIBUTE_READONLY)) return false;
  DWORD writable = attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY);
  if (!SetFileAttributesW(target, writable ? writable : FILE_ATTRIBUTE_NORMAL)) return false;
  if (Replace(temporary, target, patience)) return true;
  SetFileAttributesW(target, attributes);
  return false;
}

// A file that others hold and let be deleted can be renamed, although it can't be replaced.
bool StepAside(const wchar_t* target, Patience& patience, WString& aside) {
  if (!NameAside(target, aside)) {
    SetLastError(ERROR_FILENAME_EXCED_RANGE);
    return false;
  }
  if (Rename(target, aside.CStr(), 0, kWaitForOld, patience.forOld)) return true;
  // A run that was ended has left one there; what stands in the place came after it.
  if (!SaysThatPlaceIsTaken(GetLastError())) return false;
  ForceDelete(aside.CStr(), 0);
  return Rename(target, aside.CStr(), 0, kWaitForOld, patience.forOld);
}

// To delete the old file first would leave neither of the two if the new one then can't be renamed: it
// may be held, or the old one's name stay taken until the last who has it open closes it.
Placement ReplaceByForce(const wchar_t* temporary, const wchar_t* target, Patience& patience, DWORD& error) {
  WString aside;
  bool isAside = StepAside(target, patience, aside);
  error = isAside ? NO_ERROR : GetLastError();
  if (error == ERROR_ACCESS_DENIED && TakeOverFile(target)) {
    if (Replace(temporary, target, patience)) return Placement::kReplaced;
    isAside = StepAside(target, patience, aside);
    error = GetLastError();
  }
  if (!isAside) return Placement::kRefused;
  if (!RenameNew(temporary, target, 0, patience)) {
    error = GetLastError();
    return RenameNew(aside.CStr(), target, 0, patience) ? Placement::kFailed : Placement::kOldAside;
  }
  ForceDelete(aside.CStr(), kDeleteTakeOwnership);
  return Placement::kReplaced;
}

}  // namespace

bool SaysThatPlaceIsTaken(DWORD error) { return error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS; }

Placement PutInPlace(const wchar_t* temporary, const wchar_t* target, Place place, Patience& patience,
                     DWORD& error) {
  if (place != Place::kTaken && RenameNew(temporary, target, 0, patience)) return Placement::kPlaced;
  if (place == Place::kNotOurs) {
    error = GetLastError();
    return SaysThatPlaceIsTaken(error) ? Placement::kLeft : Placement::kFailed;
  }
  if (Replace(temporary, target, patience)) return Placement::kReplaced;
  error = GetLastError();
  DWORD attributes = FileAttributesOf(target);
  if (attributes == INVALID_FILE_ATTRIBUTES) return Placement::kFailed;
  if (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) return Placement::kRefused;
  if (!IsRefusal(error)) return Placement::kFailed;
  if (error == ERROR_SHARING_VIOLATION && IsHeld(temporary)) {
    if (RenameNew(temporary, target, MOVEFILE_REPLACE_EXISTING, patience)) return Placement::kReplaced;
    error = GetLastError();
    if (IsHeld(temporary)) return Placement::kFailed;
  }
  if (ReplaceReadOnly(temporary, target, attributes, patience)) return Placement::kReplaced;
  return ReplaceByForce(temporary, target, patience, error);
}
