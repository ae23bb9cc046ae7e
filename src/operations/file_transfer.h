// file_transfer.h
//
// How one file gets from the source to its place at the target.
#pragma once
#include "operations/copy_walk.h"
#include "operations/file_placement.h"

// Copies in blocks into a file of a temporary name, gives that the attributes and the three times of the
// source, and renames it over the target. Whenever the run ends, the target is the old file or the new
// one.
void TransferByBlocks(FileInHand& file, OperationContext& context, Place place);

// Moves the file on its drive.
void TransferByMove(FileInHand& file, OperationContext& context, Place place);
