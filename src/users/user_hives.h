// user_hives.h
//
// The registry hives of accounts that aren't logged on. A hive is the file NTUSER.DAT of the profile,
// and stands under HKU\<SID> once it is loaded. What the system has loaded for a logged-on account and
// what this program has loaded look alike, so the program remembers its own: a hive that stays loaded
// spoils the account's next logon. A hive of an account that isn't logged on, left behind by a run that was
// killed, becomes this program's own when it is come upon.
//
// All of it can be called from any thread.
#pragma once
#include <windows.h>

#include <vector>

#include "foundation/wstring.h"

// True if HKU\<SID> is there after the call, also if it is there and refuses access. Loads the hive where it
// is missing, from `profile`, or, where that is null, from the account's profile in ProfileList.
bool EnsureUserHiveLoaded(const wchar_t* sid, const wchar_t* profile = nullptr);

// Loads <profile>\NTUSER.DAT under HKU\<SID> and remembers it as this program's own. The one place that
// loads hives of accounts. Gives the system's result; where there is no file, none is made.
LSTATUS LoadUserHive(const wchar_t* sid, const wchar_t* profile);

// Why an account's hive isn't in the registry.
struct HiveProblem {
  WString file;    // the hive's path
  LSTATUS status;  // of its load
};

// False if HKU\<SID> is there. Tries once more to load the hive from `profile`, and tells what came of it.
bool FindHiveProblem(const wchar_t* sid, const wchar_t* profile, HiveProblem& problem);

// A hive of this program's own.
struct UserHive {
  WString sid;
  WString profile;
  bool wasThere;  // before this run
};

// Unloads this program's own hives. Call it when no key below them is open any more, as the last thing
// before the program ends. Gives those that stayed, after less than a second of waiting for other programs
// to let go of them; they are kept in mind, so that a later call tries them again.
std::vector<UserHive> UnloadOwnHives();
