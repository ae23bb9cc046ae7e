#include "tree_count.h"

#include "foundation/wstring.h"
#include "interrupt.h"
#include "operations/count_items.h"
#include "operations/operation_context.h"

bool CountTree(const wchar_t* folder, TreeCount& count) {
  OperationContext context;
  InterruptGuard::Bind(&context.stop);
  WString root(folder);
  const bool isWhole = CountItems(root.AddLongPathPrefix().CStr(), context);
  InterruptGuard::Bind(nullptr);
  count.entries += context.itemsTotal;
  count.bytes += context.bytesTotal;
  return isWhole;
}
