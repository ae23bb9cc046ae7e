// count_items.h
//
// The pass over a tree that comes before its copy, so that progress can be told.
#pragma once
#include "operations/operation_context.h"

// Adds the entries of the tree to `context.itemsTotal` and the bytes of its files to
// `context.bytesTotal`. Links are left out, as the copy leaves them out; what else the copy skips is
// counted all the same. `source` has the long path prefix. True unless `context.stop` was set. A folder
// that can't be read counts as empty: the copy tells of it.
bool CountItems(const wchar_t* source, OperationContext& context);
