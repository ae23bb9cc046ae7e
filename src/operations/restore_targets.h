// restore_targets.h
//
// Which account receives the data of an account of a set or of another installation.
#pragma once
#include <cstdint>

#include "foundation/wstring_array.h"
#include "users/user_table.h"

// For a folder of another installation: `name` itself if there is a local account of that name, without
// regard to case; otherwise `name` and the mark that has the account made.
WString ChooseTargetByName(const UserTable& accounts, const wchar_t* name);

// For a set, which knows full names, too: by name, then by the full name of a local account, otherwise
// `name` and the mark that has the account made. `fullName` may be empty.
WString ChooseTarget(const UserTable& accounts, const wchar_t* name, const wchar_t* fullName);

// The local account that `name` or else `fullName` matches, as the table spells it; empty if there is
// none.
WString FindLocalMatch(const UserTable& accounts, const wchar_t* name, const wchar_t* fullName);

// What may be chosen for the account `name`: all local accounts, and, where it has no local match, the
// account that would be made for it.
void DestinationEntries(const UserTable& accounts, const wchar_t* name, WStringArray& entries);

// `account` with the mark that has it made.
WString TargetToCreate(const wchar_t* account);

// Whether the target has the mark that has the account made; `account` gets the name without it, or the
// target as it stands.
bool IsToBeCreated(const wchar_t* target, WString& account);

// Whether the system takes the text as the name of a new account: 1 to 20 units, none of those that it
// forbids, and not only dots and blanks.
bool IsPossibleAccountName(const WString& name);

// The type and full name of an account to make, from the value that its original has in the section Users
// (empty if it has none there).
struct AccountToCreate {
  uint32_t type;  // AccountType
  WString fullName;
};
AccountToCreate DescribeAccountToCreate(const wchar_t* value, const wchar_t* account);
