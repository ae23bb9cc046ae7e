// status_lines.h
//
// The lines and the bar of the progress window, which the engine writes by handle from the worker's
// thread. Without a window (null handles) all of these return at once: some of the calls behind them
// would take the whole desktop for a null handle.
#pragma once
#include "operations/operation_context.h"

// The two paths, the text of the counting pass, and the bar in its marquee state.
void ShowCounting(const OperationContext& context, const wchar_t* source, const wchar_t* target);

// The accounts that the data comes from and goes to, while the latter is being made.
void ShowAccountCreation(const OperationContext& context, const wchar_t* original, const wchar_t* target);

// The text of the copy, and the bar at 0.
void ShowCopying(const OperationContext& context);
