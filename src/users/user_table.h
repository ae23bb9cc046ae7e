// user_table.h
//
// Which local accounts can be worked on: the rows of every list of accounts that the program shows.
#pragma once
#include <cstdint>
#include <memory>

#include "foundation/wstring_array.h"

// The row i of the three lists is one account. The lists have as many rows as the account database
// reported; those from `count` on are empty.
struct UserTable {
  uint32_t count = 0;         // rows in use, never 0 once LoadUserTable has given the table
  WStringArray profilePaths;  // absolute, without a trailing backslash or variables
  WStringArray sids;          // S-1-5-21-…
  WStringArray userNames;     // as the account database spells them
};

// A new table, in the order of the account database. The hive of every listed account that wasn't in
// the registry is loaded under HKU\<SID>, where that is possible. When the database can't be read, the
// table has one row for the user at the console; when that fails, too, the row is empty.
std::unique_ptr<UserTable> LoadUserTable();

// Fills the three lists with the accounts that have a SID and a local profile, loads their hives, and
// gives the number of rows kept. Disabled and built-in accounts count like any other. Falls back to the
// user at the console; 0 if there is none.
uint32_t EnumerateLocalUsers(WStringArray& sids, WStringArray& profilePaths, WStringArray& names);
