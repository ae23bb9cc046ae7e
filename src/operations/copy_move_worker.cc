// The copy/move worker: one folder to another. It knows two paths and no accounts.
#include "core/app_object.h"
#include "operations/copy_failure.h"
#include "operations/copy_move_selection.h"
#include "operations/copy_move_trees.h"
#include "operations/operation_context.h"
#include "operations/path_queries.h"
#include "operations/phase_runner.h"
#include "operations/run_overlap.h"

int32_t AppObject::RunCopyMoveWorker(OperationContext& context) {
  if (!context.document) return 0;
  PhaseRunner runner(context);
  CopyMoveSelection selection = ReadCopyMoveSelection(*context.document);
  context.copyOptions = selection.onlyMissing ? kCopyOnlyMissing : 0u;
  WString source, target;
  // Whoever starts a run looks at this, too. A folder that is moved into itself would be gone.
  if (FindOverlap(ListCopyMoveTrees(selection), source, target)) {
    ReportFailure(context, kSourceIsTarget, source.CStr(), NO_ERROR);
    return runner.End(true);
  }
  if (IsFolderPath(selection.source.CStr()) && !runner.HoldRunTarget(selection.target)) {
    return runner.End(true);
  }
  return runner.End(runner.RunTrees(ListCopyMoveTrees(selection), IsNamedCopyMoveFolder));
}
