// filtered_copy.h
//
// The copy path of user folders and extra folders: it leaves out files by their attributes, looks at
// what is at the target already, and copies or moves what remains.
#pragma once
#include "operations/operation_context.h"

// Both paths may have the long path prefix. False if the target directory or one below it couldn't be
// made.
bool FilteredCopy(const wchar_t* source, const wchar_t* target, OperationContext& context);
