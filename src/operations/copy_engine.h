// copy_engine.h
//
// The only way in which data moves. A phase copies one folder tree: it counts it, then copies it by one
// of two paths. Application data goes by the fast copy (count_items.h, fast_copy.h), everything else by
// the filtered copy (filtered_copy.h), which honours the options and the attributes to skip.
//
// A walk never leaves its tree: links below the root of a phase are neither followed in the source nor
// written through at the target. The roots themselves may be links, since people move folders that way.
#pragma once
#include "operations/operation_context.h"

// Whether `source` is a folder that a phase can copy. Otherwise `error` tells why not: NO_ERROR where nothing
// is there, since a folder that an account doesn't have is no failure.
bool IsPhaseSource(const wchar_t* source, DWORD& error);

// Copies what `source` holds into `target`, which is made with its parents. Runs on the worker's thread.
// False if the source is no directory, the target can't be made, the run was stopped while counting, or
// a directory of the target couldn't be made. Each failed item is logged, counted in
// `context.failures` and told to the observer; a source that doesn't exist is no failure.
bool RunCopyPhase(const wchar_t* source, const wchar_t* target, OperationContext& context, bool fast);
