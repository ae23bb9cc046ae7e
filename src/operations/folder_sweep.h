// folder_sweep.h
//
// What files on the way to their places have left behind in a folder of the target.
#pragma once
#include "operations/operation_context.h"
#include "operations/walk_path.h"

// Removes files in the making of runs that were cut off. An old file that has stepped aside goes back to
// its place if that is empty, and is removed if a new one stands there. The path is changed.
//
// `isOwn`: this walk knows that it has left something here. What resists is told then, and no old file is
// removed, since nobody knows who has made the one in its place. Without it a name that resists may be in
// use by another run, which tells of its own.
void SweepFolder(WalkPath& folder, OperationContext& context, bool isOwn);
