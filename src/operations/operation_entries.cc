// The start routines of the workers.
#include "core/app_object.h"
#include "operations/operation_context.h"

DWORD WINAPI BackupEntry(void* parameter) {
  auto* context = static_cast<OperationContext*>(parameter);
  if (!context || !context->app) return 0;
  return static_cast<DWORD>(context->app->RunBackupWorker(*context));
}
