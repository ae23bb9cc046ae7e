// The copy/move worker: one folder to another. It knows two paths and no accounts.
#include "core/app_object.h"
#include "operations/copy_move_selection.h"
#include "operations/copy_move_trees.h"
#include "operations/operation_context.h"
#include "operations/phase_runner.h"

int32_t AppObject::RunCopyMoveWorker(OperationContext& context) {
  if (!context.document) return 0;
  PhaseRunner runner(context);
  const CopyMoveSelection selection = ReadCopyMoveSelection(*context.document);
  context.copyOptions = selection.onlyMissing ? kCopyOnlyMissing : 0u;
  return runner.End(runner.RunTrees(ListCopyMoveTrees(selection), IsNamedCopyMoveFolder));
}
