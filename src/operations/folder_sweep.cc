#include "operations/folder_sweep.h"

#include "foundation/directory_enumerator.h"
#include "foundation/force_delete.h"
#include "operations/copy_failure.h"
#include "operations/file_placement.h"
#include "operations/temporary_file.h"

namespace {

void RemoveInTheMaking(const wchar_t* path, OperationContext& context, bool isOwn) {
  const bool isGone = ForceDelete(path, 0) == kDeleted;
  if (!isGone && isOwn) ReportTargetFailure(context, kCannotWrite, path, GetLastError());
}

// `place` is the path of the name that the file had.
void BringBack(const wchar_t* aside, const wchar_t* place, OperationContext& context, bool isOwn) {
  if (MoveFileExW(aside, place, 0)) return;
  const DWORD error = GetLastError();
  if (isOwn) {
    ReportTargetFailure(context, kCannotMove, aside, error);
  } else if (SaysThatPlaceIsTaken(error)) {
    ForceDelete(aside, kDeleteTakeOwnership);
  }
}

}  // namespace

void SweepFolder(WalkPath& folder, OperationContext& context, bool isOwn) {
  const int32_t length = folder.Length();
  if (!folder.Push(LeftoverPattern())) return;
  DirectoryEnumerator found;
  for (bool has = found.First(folder.CStr(), kSkipDirectories | kSkipReparsePoints); has;
       has = found.Next()) {
    const wchar_t* name = found.data.cFileName;
    const wchar_t* original = NameOfAside(name);
    folder.Cut(length);
    if (!folder.Push(name)) continue;
    if (IsTemporaryName(name)) {
      RemoveInTheMaking(folder.CStr(), context, isOwn);
    } else if (original && *original) {
      const WString aside(folder.CStr());
      folder.Cut(length);
      if (folder.Push(original)) BringBack(aside.CStr(), folder.CStr(), context, isOwn);
    }
  }
}
