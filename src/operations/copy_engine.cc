#include "operations/copy_engine.h"

#include "foundation/file_queries.h"
#include "operations/copy_failure.h"
#include "operations/copy_walk.h"
#include "operations/count_items.h"
#include "operations/drive_presence.h"
#include "operations/fast_copy.h"
#include "operations/filtered_copy.h"
#include "operations/status_lines.h"
#include "operations/walk_path.h"

namespace {

void ResetCounters(OperationContext& context) {
  // The totals begin at 1, so that a share of them needs no test.
  context.itemsTotal = 1;
  context.bytesTotal = 1;
  context.itemsDone = 0;
  context.bytesDone = 0;
  context.progress = 0;
}

}  // namespace

bool IsPhaseSource(const wchar_t* source, DWORD& error) {
  const WalkPath path(source);
  const DWORD attributes = FileAttributesOf(path.CStr());
  error = attributes == INVALID_FILE_ATTRIBUTES ? GetLastError() : DWORD{NO_ERROR};
  if (IsMissingOnItsDrive(path.CStr(), error)) error = NO_ERROR;
  if (attributes == INVALID_FILE_ATTRIBUTES) return false;
  if (attributes & FILE_ATTRIBUTE_DIRECTORY) return true;
  error = ERROR_DIRECTORY;
  return false;
}

bool RunCopyPhase(const wchar_t* source, const wchar_t* target, OperationContext& context, bool fast) {
  WalkPath sourcePath(source);
  DWORD error = NO_ERROR;
  if (!IsPhaseSource(source, error)) {
    if (error != NO_ERROR) ReportFailure(context, kCannotReadDirectory, source, error);
    return false;
  }
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
