// system_text.h
//
// The system's own words for one of its error codes.
#pragma once
#include <windows.h>

#include "foundation/wstring.h"

// "Access is denied." and the like, in the system's language and on one line; "error 5" where it has no
// words.
WString SystemText(DWORD error);
