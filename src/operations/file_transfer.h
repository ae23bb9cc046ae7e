// file_transfer.h
//
// How one file gets from the source to its place at the target.
#pragma once
#include "operations/copy_walk.h"

// Copies in blocks into a file of a temporary name, gives that the attributes and the three times of the
// source, and renames it over the target. Whenever the run ends, the target is the old file or the new
// one. `targetExists` is what is known of the target; false may also mean that nobody has looked.
void TransferByBlocks(FileInHand& file, OperationContext& context, bool targetExists);

// Moves the file on its drive, over what stands at the target.
void TransferByMove(FileInHand& file, OperationContext& context);
