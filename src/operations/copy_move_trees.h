// copy_move_trees.h
//
// The trees of a copy or a move between two folders. Below two profiles the standard names are taken,
// whatever a hive says.
#pragma once
#include <vector>

#include "operations/copy_move_selection.h"
#include "operations/run_tree.h"

std::vector<RunTree> ListCopyMoveTrees(const CopyMoveSelection& selection);

// Whether the folder `name` of a profile belongs to one of the named folders, and so not to "All other
// folders".
bool IsNamedCopyMoveFolder(const wchar_t* name);
