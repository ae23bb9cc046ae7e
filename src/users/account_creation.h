// account_creation.h
//
// A new local account with a profile on the disk, so that files can be restored into it before anyone
// has ever logged on.
#pragma once
#include <cstdint>

#include "foundation/wstring.h"

// Makes the account and its profile. `fullName` and `password` may be null or empty; `type` is an
// AccountType. True if the account was added and a profile was made. An existing account isn't changed
// in any way. An account whose profile failed stays. One that is made without a password has none in the
// end; where the system refuses to take back the password of the program's own logon, the result is
// false. GetLastError() tells why the account couldn't be added. Runs on the calling thread.
bool CreateUserAccount(const wchar_t* name, const wchar_t* fullName, uint32_t type, const wchar_t* password);

// Goes on with an account that exists and has no profile: nobody has logged on to it yet, or its making was
// cut short. The latter shows by its lack of a group; only then it gets full name and group, as above, and
// otherwise isn't changed itself. The profile is made in the system's own way only, since the other one
// would need the account's password. False also if it has a profile already.
bool CompleteUserAccount(const wchar_t* name, const wchar_t* fullName, uint32_t type);
