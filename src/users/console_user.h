// console_user.h
//
// Who sits at the console. The token of this process doesn't tell: it can be another administrator's.
#pragma once
#include <windows.h>

#include "foundation/wstring.h"

// The name, profile folder and SID of the console session's user, and a token of that user, which the
// caller closes; it has the right to be queried. Null if nobody sits there, or no process of that user
// can be looked at; `name` may be filled then all the same.
HANDLE GetConsoleUser(WString& name, WString* profile = nullptr, WString* sid = nullptr);

// The SID of the account that this process runs as. Empty if it can't be told.
WString ProcessUserSid();
