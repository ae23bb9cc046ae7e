// account_facts.h
//
// What the account database says about an account beside its name.
#pragma once
#include <cstdint>

#include "foundation/wstring.h"

struct AccountFacts {
  uint32_t privilege = 0;  // 0 guest, 1 standard user, 2 administrator
  WString fullName;        // empty if the account has none
};

// False if the database doesn't know the account or gives it no level.
bool GetAccountFacts(const wchar_t* name, AccountFacts& facts);
