#include "operations/fast_copy.h"

#include "foundation/file_queries.h"
#include "foundation/force_delete.h"
#include "operations/copy_failure.h"
#include "operations/copy_walk.h"
#include "operations/file_placement.h"
#include "operations/file_transfer.h"
#include "operations/name_clash.h"
#include "operations/temporary_file.h"

namespace {

// Store applications and installer caches, which are worthless elsewhere; and "Windows", of whose
// folders the worker copies those that matter by themselves.
bool IsLeftOut(const wchar_t* name, uint32_t depth) {
  if (depth > 1) return false;
  WString folder(name);
  if (depth == 1) return folder.EqualsNoCase(L"Windows");
  return folder.EqualsNoCase(L"Packages") || folder.EqualsNoCase(L"Package Cache") ||
         folder.EqualsNoCase(L"Comms");
}

// With the attributes of the source's directory, where the disk takes what comes with them.
bool MakeAlike(const wchar_t* source, const wchar_t* target) {
  if (CreateDirectoryExW(source, target, nullptr)) return true;
  const DWORD error = GetLastError();
  if (!IsUnsupported(error) && error != ERROR_EAS_NOT_SUPPORTED) return false;
  return CreateDirectoryW(target, nullptr) != 0;
}

// A file in the directory's place gives way. A link doesn't: the walk refuses it.
bool MakeDirectory(const wchar_t* source, const wchar_t* target, bool& isNew) {
  isNew = MakeAlike(source, target);
  if (isNew) return true;
  if (GetLastError() != ERROR_ALREADY_EXISTS) return false;
  DWORD attributes = FileAttributesOf(target);
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  if (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) return true;
  ForceDelete(target, kDeleteTakeOwnership);
  isNew = MakeAlike(source, target);
  return isNew;
}

// The system copies into a file of a temporary name, too: it removes a partial file when it fails, but
// not when this program is ended.
bool CopyToTemporary(FileInHand& file, OperationContext& context) {
  file.temporary.AssignFolder(file.target, file.targetFolderLength);
  TemporaryName name(file.temporary);
  if (!name.IsValid()) {
    SetLastError(ERROR_FILENAME_EXCED_RANGE);
    return false;
  }
  // The flag is a word that only ever turns from 0 to 1, as the call expects of it.
  auto* stop = reinterpret_cast<BOOL*>(&context.stop);
  constexpr DWORD kFlags = COPY_FILE_FAIL_IF_EXISTS | COPY_FILE_COPY_SYMLINK | COPY_FILE_NO_BUFFERING;
  do {
    if (CopyFileExW(file.source.CStr(), file.temporary.CStr(), nullptr, nullptr, stop, kFlags)) return true;
  } while (name.IsWorthRetry(GetLastError()));
  return false;
}

void TransferByCopy(FileInHand& file, OperationContext& context, Place place) {
  if (!CopyToTemporary(file, context)) {
    return ReportTargetFailure(context, kCannotCopy, file.source.CStr(), GetLastError());
  }
  DWORD error = ERROR_CANT_ACCESS_FILE;
  Placement placement = Placement::kRefused;
  if (file.IsTargetFolderIntact()) {
    placement = PutInPlace(file.temporary.CStr(), file.target.CStr(), place, context.patience, error);
  }
  if (!IsInPlace(placement)) {
    file.DropTemporary();
    if (placement == Placement::kOldAside) file.needsSweep = true;
    return ReportTargetFailure(context, kCannotCopy, file.source.CStr(), error);
  }
  CountBytesDone(context, file.size);
  CountFileCopied(context, file.size);
}

void TransferFile(FileInHand& file, OperationContext& context) {
  if (IsClash(file, context)) return ReportClash(file, context);
  const Place place = file.isFolderNew ? Place::kNotOurs : Place::kUnknown;
  if (context.moveFiles) {
    TransferByMove(file, context, place);
  } else {
    TransferByCopy(file, context, place);
  }
}

constexpr CopyMethod kFastMethod = {MakeDirectory, IsLeftOut, TransferFile};

}  // namespace

bool FastCopy(const wchar_t* source, const wchar_t* target, OperationContext& context, uint32_t depth) {
  return CopyTree(source, target, context, kFastMethod, depth);
}
