// format_date_time.h
//
// The time stamp of the application log.
#pragma once
#include <windows.h>

#include "foundation/wstring.h"

// Replaces `text` by the time in the form YYYY/MM/DD HH:MM:SS:mmm, always of 23 units. A field that is
// too long keeps its last digits. The day of the week isn't looked at.
void FormatDateTime(const SYSTEMTIME& time, WString& text);
