// set_accounts.h
//
// The accounts that a backup set names in its info file.
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/ini_document.h"
#include "operations/left_out_keys.h"
#include "operations/stop_word.h"

struct SetAccount {
  WString name;
  int32_t privilege = -1;   // 0 guest, 1 standard user, 2 administrator; -1 if the file doesn't tell
  WString fullName;         // as the file has it; may be empty
  WString displayName;      // never empty: the account's name where the file has no other
  bool isBackedUp = false;  // chosen in the run that wrote the file last
  bool hasFolder = false;   // only these can be restored
};

// In the order of the file, each once. `setFolder` is the folder of the info file. A key that leads out of
// the set's folder of accounts has no folder; it is added to `leftOut`, and so is what would be a second
// account of one folder. A stop, which may be null, leaves out all that is still to come.
std::vector<SetAccount> ReadSetAccounts(IniDocument& document, const wchar_t* setFolder,
                                        LeftOutKeys* leftOut = nullptr, const StopWord* stop = nullptr);

// "level|display name". Without a bar the whole text is the display name.
void ParseUserValue(const WString& value, int32_t& privilege, WString& displayName);
