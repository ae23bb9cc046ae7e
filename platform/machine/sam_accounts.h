// sam_accounts.h
//
// The local accounts of a Windows disk, from its SAM hive. The hive comes from a foreign disk and may be
// damaged: whatever doesn't fit is left out, and nothing is read beyond its bytes.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "machine/hive.h"
#include "machine/machine.h"

namespace machine {

// Accounts with name, SID, full name, comment, profile path, flags, type and groups. Empty if the hive
// has none that can be read. Under RegistryLock().
std::vector<Account> ReadSamAccounts(Hive& sam);

// The pieces, for tests: the values V and F of an account's key, and C of a group's.
bool ReadAccountValue(std::string_view v, Account& account);                // name, texts
bool ReadAccountFlags(std::string_view f, uint32_t& rid, uint32_t& flags);  // flags as UF_…
std::vector<std::string> ReadGroupMembers(std::string_view c);              // SIDs as text

}  // namespace machine
