// fast_copy.h
//
// The copy path of application data: by the system's own file copy, which keeps streams and leaves the
// options aside. Some folders that only their own machine can use stay out.
#pragma once
#include "operations/operation_context.h"

// Both paths may have the long path prefix; `depth` is that of the source in its tree. False if the
// target directory or one below it couldn't be made.
bool FastCopy(const wchar_t* source, const wchar_t* target, OperationContext& context, uint32_t depth);
