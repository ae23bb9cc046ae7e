#include "operations/copy_engine.h"

#include "operations/copy_failure.h"
#include "operations/copy_walk.h"
#include "operations/count_items.h"
#include "operations/fast_copy.h"
#include "operations/filtered_copy.h"
#include "operations/status_lines.h"
#include "operations/walk_path.h"

namespace {

bool IsMissing(DWORD error) { return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND; }

// A folder that an account doesn't have passes by without a word; one that is there and can't be looked
// at, or is a file, doesn't.
bool IsSourceDirectory(const wchar_t* path, OperationContext& context) {
  DWORD attributes = GetFileAttributesW(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    DWORD error = GetLastError();
    if (!IsMissing(error)) ReportFailure(context, kCannotReadDirectory, path, error);
    return false;
  }
  if (attributes & FILE_ATTRIBUTE_DIRECTORY) return true;
  ReportFailure(context, kCannotReadDirectory, path, ERROR_DIRECTORY);
  return false;
}

void ResetCounters(OperationContext& context) {
  // The totals begin at 1, so that a share of them needs no test.
  context.itemsTotal = 1;
  context.bytesTotal = 1;
  context.itemsDone = 0;
  context.bytesDone = 0;
  context.progress = 0;
}

}  // namespace

bool RunCopyPhase(const wchar_t* source, const wchar_t* target, OperationContext& context, bool fast) {
  WalkPath sourcePath(source);
  if (!IsSourceDirectory(sourcePath.CStr(), context)) return false;
  if (!MakeDirectoryPath(target)) {
    ReportTargetFailure(context, kCannotMakeDirectory, target, GetLastError());
    return false;
  }
  const OperationObserver* observer = context.observer;
  if (observer && observer->phaseBegins) observer->phaseBegins(observer->owner, source, target);
  ShowCounting(context, source, target);
  ResetCounters(context);
  if (!CountItems(sourcePath.CStr(), context)) return false;
  if (observer && observer->copyingBegins) {
    observer->copyingBegins(observer->owner, context.itemsTotal - 1, context.bytesTotal - 1);
  }
  ShowCopying(context);
  return fast ? FastCopy(source, target, context, 0) : FilteredCopy(source, target, context);
}
