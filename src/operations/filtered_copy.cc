#include "operations/filtered_copy.h"

#include "foundation/directory_enumerator.h"
#include "foundation/unique_handle.h"
#include "operations/copy_walk.h"
#include "operations/file_transfer.h"
#include "operations/name_clash.h"

namespace {

int64_t AsNumber(const FILETIME& time) {
  return static_cast<int64_t>(static_cast<uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
}

int64_t AsNumber(DWORD high, DWORD low) {
  return static_cast<int64_t>(static_cast<uint64_t>(high) << 32 | low);
}

// A reparse point at the target that isn't known to be a file there.
bool IsForeign(const wchar_t* target, DWORD attributes) {
  if (attributes & FILE_ATTRIBUTE_DIRECTORY) return true;
  if (!(attributes & FILE_ATTRIBUTE_REPARSE_POINT)) return false;
  WIN32_FIND_DATAW found;
  UniqueFind search(FindFirstFileW(target, &found));
  return !search || IsLink(found);
}

// The update test. A target that is newer and of the same size is current; one that can't be looked at
// isn't, nor is something else than a file.
bool IsCurrent(const FileInHand& file, const WIN32_FILE_ATTRIBUTE_DATA& target, OperationContext& context) {
  if (IsForeign(file.target.CStr(), target.dwFileAttributes)) return false;
  context.sourceTime = AsNumber(file.entry.ftLastWriteTime);
  context.targetValue = AsNumber(target.ftLastWriteTime);
  if (context.sourceTime > context.targetValue) return false;
  context.targetValue = AsNumber(target.nFileSizeHigh, target.nFileSizeLow);
  return context.targetValue == file.size;
}

bool MakeDirectory(const wchar_t*, const wchar_t* target, bool& isNew) {
  isNew = CreateDirectoryW(target, nullptr) != 0;
  return isNew || GetLastError() == ERROR_ALREADY_EXISTS;
}

bool GetTarget(const FileInHand& file, WIN32_FILE_ATTRIBUTE_DATA& target) {
  return GetFileAttributesExW(file.target.CStr(), GetFileExInfoStandard, &target) != 0;
}

// What the options leave to do about the file's place; false if the file is to stay where it is.
bool DecideOnPlace(const FileInHand& file, OperationContext& context, Place& place) {
  WIN32_FILE_ATTRIBUTE_DATA target;
  // A directory that has just been made needs no look. If a file should turn up there all the same, the
  // placing comes upon it.
  place = Place::kNotOurs;
  if (file.isFolderNew) return true;
  if (context.copyOptions & kCopyOnlyMissing) return !GetTarget(file, target);
  place = Place::kUnknown;
  if (!(context.copyOptions & kCopyOnlyNewer) || !GetTarget(file, target)) return true;
  place = Place::kTaken;
  if (!IsCurrent(file, target, context)) return true;
  CountBytesDone(context, file.size);
  return false;
}

// Decides about a file, and copies or moves it.
void TransferFile(FileInHand& file, OperationContext& context) {
  if (file.entry.dwFileAttributes & context.attributeMask) return;
  if (IsClash(file, context)) return ReportClash(file, context);
  Place place;
  if (!DecideOnPlace(file, context, place)) return;
  if (context.moveFiles) {
    TransferByMove(file, context, place);
  } else {
    TransferByBlocks(file, context, place);
  }
}

constexpr CopyMethod kFilteredMethod = {MakeDirectory, nullptr, TransferFile};

}  // namespace

bool FilteredCopy(const wchar_t* source, const wchar_t* target, OperationContext& context) {
  return CopyTree(source, target, context, kFilteredMethod);
}
