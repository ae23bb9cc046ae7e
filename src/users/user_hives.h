// user_hives.h
//
// The registry hives of accounts that aren't logged on. A hive is the file NTUSER.DAT of the profile,
// and stands under HKU\<SID> once it is loaded. What the system has loaded for a logged-on account and
// what this program has loaded look alike, so the program remembers its own: a hive that stays loaded
// spoils the account's next logon.
//
// All of it can be called from any thread.
#pragma once
#include <windows.h>

// True if HKU\<SID> is there after the call, also if it is there and refuses access. Loads the hive from
// the account's profile in ProfileList where it is missing.
bool EnsureUserHiveLoaded(const wchar_t* sid);

// Loads <profile>\NTUSER.DAT under HKU\<SID> and remembers it as this program's own. The one place that
// loads hives of accounts. Gives the system's result; ERROR_FILE_NOT_FOUND, and no new file, where there
// is none.
LSTATUS LoadUserHive(const wchar_t* sid, const wchar_t* profile);

// Unloads the hives that LoadUserHive has loaded. Call it when no key below them is open any more, as
// the last thing before the program ends. One that is still in use is kept in mind, so that a later
// call tries it again.
void UnloadOwnHives();
