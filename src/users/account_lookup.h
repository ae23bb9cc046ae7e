// account_lookup.h
//
// From the name of an account to its SID and its profile folder.
#pragma once
#include "foundation/wstring.h"

// The system's list of profiles: a key for each account that has one, named by its SID.
inline constexpr wchar_t kProfileListKey[] =
    L"HKLM64\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList";

// The SID's text form, and the profile folder where one is asked for: the account database's own path
// if it exists on disk, then ProfileList's (which isn't tested), then <profiles folder>\<name> if that
// exists. True if all that was asked for was found. Without a SID `profile` stays as it was; without a
// folder it is empty. No hive is loaded.
bool GetAccountSidAndProfile(const wchar_t* name, WString& sid, WString* profile = nullptr);

// Whether the system knows a profile of the account: by the database, if the folder is there, or by
// ProfileList. A mere folder of the account's name isn't one, since the system makes another at the first
// logon; it counts only where the list can't be read.
bool HasKnownProfile(const wchar_t* name);

// ProfileImagePath of the account's ProfileList key, with variables expanded, from the 64-bit view.
// False if it can't be read, or without an output.
bool GetProfilePathFromSid(const wchar_t* sid, WString* profile);

// Whether the system's list of profiles is there and can be read; nearly all profile folders are known from
// it alone. GetLastError() tells why not.
bool CanReadProfileList();

// Replaces an account's name by its SID's text form. The machine's own account comes before one of the same
// name elsewhere, such as in its domain. False if no account of a person has the name, which stays then; the
// names of groups don't count.
bool AccountNameToSid(WString& name);

// Whether a group has the name, so that no account of this machine can.
bool IsGroupName(const wchar_t* name);
