// target_flush.h
//
// Before a run says that it is done.
#pragma once
#include "operations/operation_context.h"

// Has the system write what it still holds back of the target `folder`. Files are written through one by
// one where the system does that; where it doesn't, this is the moment at which a failing disk shows,
// and that counts as a failure of the run.
void FlushTarget(const wchar_t* folder, OperationContext& context);
