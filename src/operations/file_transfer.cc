#include "operations/file_transfer.h"

#include "foundation/directory_enumerator.h"
#include "foundation/file_queries.h"
#include "foundation/unique_handle.h"
#include "operations/copy_failure.h"
#include "operations/name_clash.h"
#include "operations/temporary_file.h"

namespace {

enum class Blocks { kAll, kReadFailed, kWriteFailed, kStopped };

// What SetFileAttributesW takes; the other bits tell how a file is stored.
constexpr DWORD kSettableAttributes =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE |
    FILE_ATTRIBUTE_TEMPORARY | FILE_ATTRIBUTE_OFFLINE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

HANDLE OpenForReading(const wchar_t* path, DWORD flags) {
  return CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                     FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr);
}

bool IsLinkBehind(HANDLE handle) {
  FILE_ATTRIBUTE_TAG_INFO info;
  return GetAttributesAndTag(handle, info) && IsLink(info.FileAttributes, info.ReparseTag);
}

// Whether a file's bytes may lie elsewhere: deduplicated, in a cloud, on a tape. Some systems hide the
// reparse point of such a file from programs that they take for old, but not the other attributes.
bool MayNeedFilter(DWORD attributes) {
  constexpr DWORD kRecallOnOpen = 0x40000;         // not every SDK
  constexpr DWORD kRecallOnDataAccess = 0x400000;  // names these
  return (attributes & (FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_OFFLINE | FILE_ATTRIBUTE_SPARSE_FILE |
                        kRecallOnOpen | kRecallOnDataAccess)) != 0;
}

// Opens what the entry says that it is. A plain file is opened as itself, so that a link which has taken
// its place since shows an empty file and leads nowhere. A file whose bytes only a filter of the system
// can give has to be opened as others do; it is held first, and looked at, so that it is no link.
bool OpenSource(const FileInHand& file, FileObject& source) {
  const wchar_t* path = file.source.CStr();
  UniqueFile itself(OpenForReading(path, FILE_FLAG_OPEN_REPARSE_POINT));
  if (!itself) return false;
  source.flags = kFileRaw;
  if (!MayNeedFilter(file.entry.dwFileAttributes)) {
    source.handle = itself.Release();
    return true;
  }
  if (IsLinkBehind(itself.Get())) {
    SetLastError(ERROR_CANT_ACCESS_FILE);
    return false;
  }
  source.handle = OpenForReading(path, 0);
  return source.IsOpen();
}

// The file in the making. `file.temporary` is its path afterwards.
bool CreateTarget(FileInHand& file, FileObject& target) {
  file.temporary.AssignFolder(file.target, file.targetFolderLength);
  TemporaryName name(file.temporary);
  if (!name.IsValid()) {
    SetLastError(ERROR_FILENAME_EXCED_RANGE);
    return false;
  }
  do {
    target.handle = CreateFileW(file.temporary.CStr(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                FILE_ATTRIBUTE_NORMAL | FILE_FLAG_WRITE_THROUGH | FILE_FLAG_BACKUP_SEMANTICS |
                                    FILE_FLAG_OPEN_REPARSE_POINT,
                                nullptr);
  } while (!target.IsOpen() && name.IsWorthRetry(GetLastError()));
  target.flags = kFileRaw;
  return target.IsOpen();
}

// `copied` is the number of bytes that got into the target.
Blocks CopyBlocks(const FileInHand& file, OperationContext& context, int64_t& copied, DWORD& error) {
  while (!IsStopped(context)) {
    DWORD read = 0;
    DWORD written = 0;
    if (!ReadFile(context.sourceFile.handle, context.copyBuffer, context.copyBufferSize, &read, nullptr)) {
      error = GetLastError();
      return Blocks::kReadFailed;
    }
    if (read == 0) return Blocks::kAll;
    bool isWritten = WriteFile(context.targetFile.handle, context.copyBuffer, read, &written, nullptr) != 0;
    if (!isWritten || written != read) {
      error = isWritten ? ERROR_DISK_FULL : GetLastError();
      return Blocks::kWriteFailed;
    }
    copied += read;
    CountBytesDone(context, read);
    // A short block that ends where the listing said is the last one, without another look.
    if (read < context.copyBufferSize && copied == file.size) return Blocks::kAll;
  }
  return Blocks::kStopped;
}

LARGE_INTEGER AsLarge(const FILETIME& time) {
  LARGE_INTEGER large;
  large.HighPart = static_cast<LONG>(time.dwHighDateTime);
  large.LowPart = time.dwLowDateTime;
  return large;
}

// The reason of a call that has just failed; never NO_ERROR.
DWORD FailureReason() {
  DWORD error = GetLastError();
  return error != NO_ERROR ? error : ERROR_GEN_FAILURE;
}

DWORD SetBasicInfo(HANDLE handle, FILE_BASIC_INFO info) {
  return SetFileInformationByHandle(handle, FileBasicInfo, &info, sizeof(info)) ? NO_ERROR : FailureReason();
}

constexpr LARGE_INTEGER FILE_BASIC_INFO::*kTimes[] = {
    &FILE_BASIC_INFO::CreationTime, &FILE_BASIC_INFO::LastAccessTime, &FILE_BASIC_INFO::LastWriteTime};

DWORD SetAttributesAndTimes(HANDLE handle, const WIN32_FIND_DATAW& entry) {
  FILE_BASIC_INFO info = {};
  info.CreationTime = AsLarge(entry.ftCreationTime);
  info.LastAccessTime = AsLarge(entry.ftLastAccessTime);
  info.LastWriteTime = AsLarge(entry.ftLastWriteTime);
  info.FileAttributes = entry.dwFileAttributes & kSettableAttributes;
  if (info.FileAttributes == 0) info.FileAttributes = FILE_ATTRIBUTE_NORMAL;  // 0 would change nothing
  const DWORD error = SetBasicInfo(handle, info);
  if (error != ERROR_INVALID_PARAMETER) return error;
  // FAT has no times before 1980, and refuses all for the sake of one. What it can hold, it shall.
  for (LARGE_INTEGER FILE_BASIC_INFO::*time : kTimes) {
    FILE_BASIC_INFO one = {};
    one.*time = info.*time;
    SetBasicInfo(handle, one);
  }
  FILE_BASIC_INFO attributes = {};
  attributes.FileAttributes = info.FileAttributes;
  SetBasicInfo(handle, attributes);
  return error;
}

// NTFS remembers for some seconds when a name that has gone was created, and gives the next file of that
// name the same time.
DWORD RestoreCreationTime(const wchar_t* path, const FILETIME& time) {
  UniqueFile handle(CreateFileW(path, FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                                nullptr));
  return handle && SetFileTime(handle.Get(), &time, nullptr, nullptr) ? NO_ERROR : FailureReason();
}

void FailWriting(const FileInHand& file, OperationContext& context, DWORD error) {
  context.errors.fetch_add(1, std::memory_order_relaxed);
  ReportTargetFailure(context, kCannotWrite, file.target.CStr(), error);
}

void PlaceFile(FileInHand& file, OperationContext& context, Place place, int64_t copied,
               DWORD attributesError) {
  DWORD error = ERROR_CANT_ACCESS_FILE;
  Placement placement = Placement::kRefused;
  if (file.IsTargetFolderIntact()) {
    placement = PutInPlace(file.temporary.CStr(), file.target.CStr(), place, context.patience, error);
  }
  if (!IsInPlace(placement)) {
    file.DropTemporary();
    if (placement == Placement::kOldAside) file.needsSweep = true;
    if (placement == Placement::kRefused) {
      ReportTargetFailure(context, kCannotOpenTarget, file.target.CStr(), error);
    } else if (placement != Placement::kLeft) {
      FailWriting(file, context, error);
    } else if (file.isFolderNew) {
      ReportClash(file, context);
    }
    return;
  }
  CountFileCopied(context, copied);
  if (placement == Placement::kReplaced && attributesError == NO_ERROR) {
    attributesError = RestoreCreationTime(file.target.CStr(), file.entry.ftCreationTime);
  }
  if (attributesError != NO_ERROR) {
    ReportTargetFailure(context, kCannotSetAttributes, file.target.CStr(), attributesError);
  }
}

// Closes the target, so that what the system has held back so far is written or said to have failed.
bool CloseTarget(FileObject& target) {
  bool isClosed = CloseHandle(target.handle) != 0;
  target.handle = INVALID_HANDLE_VALUE;
  return isClosed;
}

}  // namespace

void TransferByBlocks(FileInHand& file, OperationContext& context, Place place) {
  if (!OpenSource(file, context.sourceFile)) {
    return ReportFailure(context, kCannotOpenSource, file.source.CStr(), GetLastError());
  }
  if (!CreateTarget(file, context.targetFile)) {
    DWORD error = GetLastError();
    context.sourceFile.Close();
    return ReportTargetFailure(context, kCannotOpenTarget, file.target.CStr(), error);
  }
  int64_t copied = 0;
  DWORD error = NO_ERROR;
  Blocks blocks = CopyBlocks(file, context, copied, error);
  bool isLink =
      blocks == Blocks::kAll && copied == 0 && file.size != 0 && IsLinkBehind(context.sourceFile.handle);
  context.sourceFile.Close();
  DWORD attributesError = NO_ERROR;
  if (blocks == Blocks::kAll) attributesError = SetAttributesAndTimes(context.targetFile.handle, file.entry);
  if (!CloseTarget(context.targetFile) && blocks == Blocks::kAll) {
    error = GetLastError();
    blocks = Blocks::kWriteFailed;
  }
  if (blocks == Blocks::kAll && !isLink) return PlaceFile(file, context, place, copied, attributesError);

  file.DropTemporary();
  if (isLink) {
    context.linksSkipped.fetch_add(1, std::memory_order_relaxed);
  } else if (blocks == Blocks::kReadFailed) {
    context.errors.fetch_add(1, std::memory_order_relaxed);
    ReportFailure(context, kCannotRead, file.source.CStr(), error);
  } else if (blocks == Blocks::kWriteFailed) {
    FailWriting(file, context, error);
  }
}

void TransferByMove(FileInHand& file, OperationContext& context, Place place) {
  if (!file.IsTargetFolderIntact()) {
    return ReportTargetFailure(context, kCannotMove, file.source.CStr(), ERROR_CANT_ACCESS_FILE);
  }
  DWORD flags = place == Place::kNotOurs ? 0 : MOVEFILE_REPLACE_EXISTING;
  if (!MoveFileExW(file.source.CStr(), file.target.CStr(), flags)) {
    DWORD error = GetLastError();
    const bool isTaken = place == Place::kNotOurs && SaysThatPlaceIsTaken(error);
    if (isTaken && !file.isFolderNew) return;
    return ReportTargetFailure(context, kCannotMove, file.source.CStr(), error);
  }
  CountBytesDone(context, file.size);
  CountFileCopied(context, file.size);
}
