// listed_profiles.h
//
// What the system's list of profiles holds beside those that the accounts stand on: folders of people that
// a list of accounts says nothing of.
#pragma once
#include "users/user_table.h"

// The folder of a profile that the system couldn't load: it keeps its entry as <SID>.bak and has the account
// stand on another one, `profile`, at the next logon. False if there is none, if it isn't on the disk, or if
// the two are the same.
bool GetSetAsideProfile(const wchar_t* sid, const wchar_t* profile, WString& setAside);

// Whether the folder has the name of a temporary profile, which the system deletes when the account logs off.
bool IsTemporaryProfile(const WString& profile);

// Folders of listed profiles that are on the disk and belong to none of `accounts`: to accounts of a domain
// or the cloud, to deleted ones, or to local ones that can't be worked on. Those that GetSetAsideProfile
// gives for the accounts aren't among them.
void FindOtherProfiles(const UserTable& accounts, WStringArray& folders);
