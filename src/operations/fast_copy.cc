#include "operations/fast_copy.h"

#include "foundation/force_delete.h"
#include "operations/copy_failure.h"
#include "operations/copy_walk.h"
#include "operations/file_placement.h"
#include "operations/file_transfer.h"
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

// A file in the directory's place gives way. A link doesn't: the walk refuses it.
bool MakeDirectory(const wchar_t* source, const wchar_t* target, bool& isNew) {
  isNew = CreateDirectoryExW(source, target, nullptr) != 0;
  if (isNew) return true;
  if (GetLastError() != ERROR_ALREADY_EXISTS) return false;
  DWORD attributes = GetFileAttributesW(target);
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  if (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) return true;
  ForceDelete(target, kDeleteTakeOwnership);
  isNew = CreateDirectoryExW(source, target, nullptr) != 0;
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

void TransferByCopy(FileInHand& file, OperationContext& context) {
  if (!CopyToTemporary(file, context)) {
    return ReportTargetFailure(context, kCannotCopy, file.source.CStr(), GetLastError());
  }
  DWORD error = ERROR_CANT_ACCESS_FILE;
  Placement placement = Placement::kRefused;
  if (file.IsTargetFolderIntact()) {
    placement =
        PutInPlace(file.temporary.CStr(), file.target.CStr(), Place::kUnknown, context.patience, error);
  }
  if (placement == Placement::kRefused || placement == Placement::kFailed) {
    RemoveTemporary(file.temporary.CStr());
    return ReportTargetFailure(context, kCannotCopy, file.source.CStr(), error);
  }
  CountBytesDone(context, file.size);
  CountFileCopied(context, file.size);
}

void TransferFile(FileInHand& file, OperationContext& context) {
  if (context.moveFiles) {
    TransferByMove(file, context, Place::kUnknown);
  } else {
    TransferByCopy(file, context);
  }
}

constexpr CopyMethod kFastMethod = {MakeDirectory, IsLeftOut, TransferFile};

}  // namespace

bool FastCopy(const wchar_t* source, const wchar_t* target, OperationContext& context, uint32_t depth) {
  return CopyTree(source, target, context, kFastMethod, depth);
}
