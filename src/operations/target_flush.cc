#include "operations/target_flush.h"

#include "foundation/file_queries.h"
#include "foundation/unique_handle.h"
#include "operations/copy_failure.h"
#include "operations/walk_path.h"

namespace {

// Not every file system lets a directory be flushed, and each says it in its own words.
bool CannotBeFlushed(DWORD error) {
  return IsUnsupported(error) || error == ERROR_ACCESS_DENIED || error == ERROR_INVALID_HANDLE;
}

}  // namespace

void FlushTarget(const wchar_t* folder, OperationContext& context) {
  WalkPath path(folder);
  UniqueFile handle(CreateFileW(path.CStr(), GENERIC_WRITE,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  const OperationObserver* observer = context.observer;
  if (handle && observer && observer->flushBegins) observer->flushBegins(observer->owner);
  if (!handle || FlushFileBuffers(handle.Get())) return;
  DWORD error = GetLastError();
  if (CannotBeFlushed(error)) return;
  context.errors.fetch_add(1, std::memory_order_relaxed);
  ReportTargetFailure(context, kCannotWrite, folder, error);
}
