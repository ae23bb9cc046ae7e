// accounts_file.h
//
// accounts.ini: the local accounts of a machine, read, written and changed.
#pragma once
#include <windows.h>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "machine/machine.h"

namespace machine {

// Held by whoever looks at the accounts of the machine in use, since another thread may make one. Where
// the registry is needed, too, its lock is taken first.
class AccountsHold {
 public:
  AccountsHold();

 private:
  std::lock_guard<std::recursive_mutex> hold_;
};

// False with a sentence in `error` that names the file and what is wrong.
bool ReadAccounts(const std::string& file, std::vector<Account>& accounts, std::string* error);
bool WriteAccounts(const std::string& file, const std::vector<Account>& accounts, std::string* error);

// Changes the accounts of the machine in use, on the disk first: what `change` makes of the file's newest
// content takes its place by a rename, while other programs that want to change it wait. Nothing changes
// if `change` gives an error or the file can't be written. `call` and `what` are for faults. Gives
// ERROR_ACCESS_DENIED to all but administrators and ERROR_WRITE_PROTECT on a machine whose system drive
// isn't written: an account would be known to this folder only, and not to the Windows on the disk.
DWORD ChangeAccounts(const char* call, const std::string& what,
                     const std::function<DWORD(std::vector<Account>&)>& change);

}  // namespace machine
