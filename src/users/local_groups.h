// local_groups.h
//
// The three local groups that make an account's type. Their names differ by the system's language, so
// they are looked up by their well-known SIDs and never written literally.
#pragma once
#include <cstdint>

#include "foundation/wstring.h"

enum AccountType : uint32_t { kGuestAccount = 0, kStandardAccount = 1, kAdministratorAccount = 2 };

struct LocalGroupNames {
  WString names[3];  // by AccountType
};

// True if all three names were found.
bool GetLocalGroupNames(LocalGroupNames& groups);

// Whether the account is in no local group at all, as it is between its making and its first group: nobody
// can log on to it. False also where the system doesn't tell.
bool LacksGroup(const wchar_t* account);

// Puts the account into the group of its type and takes it out of the two others. Null `groups` are
// looked up. True if the account is in the group of its type; a type above 2 changes nothing.
bool SetAccountGroup(const wchar_t* account, uint32_t type, const LocalGroupNames* groups);
