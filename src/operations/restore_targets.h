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

// Whether the text can be the name of a new account and of its profile's folder: 1 to 20 units, none of
// those that the system forbids, not only dots and blanks, and no device's name.
bool IsPossibleAccountName(const WString& name);

// What a target with the mark finds on this machine. Only the machine's own accounts count; one of the same
// name in its domain is somebody else's.
enum class TargetState {
  kReady,         // there is such an account, with a profile, and it is taken as it is
  kLacksProfile,  // there is one, such as from a run that was cut short, and it gets a profile
  kNew,           // it is made
  kGroup,         // a group has the name, so that the system makes no account of it
  kImpossible,    // IsPossibleAccountName says no
};
TargetState StateOfTarget(const WString& account);

// An account to make for the account `source`, from the value that this has in the section Users (empty if
// it has none there). The file may be a stranger's, and its word alone makes nobody an administrator: that
// takes the name in `administrators`, which may be null.
struct AccountToCreate {
  uint32_t type;   // AccountType
  bool isLowered;  // the file calls it an administrator, and nobody else does
  WString fullName;
};
AccountToCreate DescribeAccountToCreate(const wchar_t* value, const WString& source, const WString& account,
                                        const WStringArray* administrators);
