#include "operations/count_items.h"

#include "operations/copy_walk.h"
#include "operations/source_walk.h"

bool CountItems(const wchar_t* source, OperationContext& context) {
  SourceWalk walk(source);
  walk.Enter();
  while (walk.Depth() > 0 && !IsStopped(context)) {
    SourceWalk::Step step = walk.Next();
    if (step == SourceWalk::Step::kEnd || step == SourceWalk::Step::kBrokenOff) {
      walk.Leave();
      continue;
    }
    if (step == SourceWalk::Step::kLink) continue;
    context.itemsTotal.fetch_add(1, std::memory_order_relaxed);
    if (!walk.IsDirectory()) {
      context.bytesTotal.fetch_add(walk.Size(), std::memory_order_relaxed);
    } else if (step == SourceWalk::Step::kEntry) {
      walk.Enter();
    }
  }
  return !IsStopped(context);
}
