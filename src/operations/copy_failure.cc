#include "operations/copy_failure.h"

#include "core/app_object.h"
#include "operations/walk_path.h"

namespace {

constexpr DWORD kDiskQuotaExceeded = 1295;  // not every SDK names it

bool IsDiskFull(DWORD error) {
  return error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL || error == kDiskQuotaExceeded;
}

}  // namespace

void ReportFailure(OperationContext& context, const wchar_t* text, const wchar_t* path, DWORD error) {
  WString line;
  line.Concat(text, PathForPeople(path).CStr());
  context.failures.fetch_add(1, std::memory_order_relaxed);
  if (!context.app->WriteLog(line.CStr())) context.logFailed = true;
  const OperationObserver* observer = context.observer;
  if (observer && observer->itemFailed) observer->itemFailed(observer->owner, line.CStr(), error);
}

void ReportLongPath(OperationContext& context, const wchar_t* text, const wchar_t* folder,
                    const wchar_t* name) {
  WString path;
  path.Concat(folder, L"\\", name);
  ReportFailure(context, text, path.CStr(), ERROR_FILENAME_EXCED_RANGE);
}

void ReportTargetFailure(OperationContext& context, const wchar_t* text, const wchar_t* path, DWORD error) {
  if (IsDiskFull(error)) context.targetFull = true;
  ReportFailure(context, text, path, error);
}
