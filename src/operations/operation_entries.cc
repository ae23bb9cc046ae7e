// The start routines of the workers.
#include "core/app_object.h"
#include "operations/operation_context.h"

namespace {

DWORD RunWorker(void* parameter, int32_t (AppObject::*worker)(OperationContext&)) {
  auto* context = static_cast<OperationContext*>(parameter);
  if (!context || !context->app) return 0;
  return static_cast<DWORD>((context->app->*worker)(*context));
}

}  // namespace

DWORD WINAPI BackupEntry(void* context) { return RunWorker(context, &AppObject::RunBackupWorker); }
DWORD WINAPI RestoreEntry(void* context) { return RunWorker(context, &AppObject::RunRestoreWorker); }
DWORD WINAPI CopyMoveEntry(void* context) { return RunWorker(context, &AppObject::RunCopyMoveWorker); }
