// create_machine.h
//
// Makes a machine folder: settings, accounts, profiles with their hives, the well-known folders, and
// nothing in them. Used by norvane-machine and by tests. It needs no machine in use and changes none.
#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "machine/machine.h"

namespace machine {

struct AccountPlan {
  std::string name;
  AccountType type = AccountType::kStandard;
  std::string fullName;
  std::string comment;
  std::string home;  // profile path of the account database; mostly empty
  uint32_t rid = 0;  // last part of the SID; 0: the next one from 1001 on
  bool isDisabled = false;
  bool hasProfile = true;  // the folder, its hive and the entry in ProfileList
  bool hasHive = true;     // false: the profile has no NTUSER.DAT
  // Shell folders elsewhere than in the profile: logical name -> Windows path, such as
  // "Personal" -> "D:\\Anna\\Documents". The folder is made where its drive is one of the machine.
  std::map<std::string, std::string> folders;
};

struct MachinePlan {
  std::string computerName = "NORVANE-PC";
  uint32_t major = 10, minor = 0, build = 19045;  // below 6: "Documents and Settings" and its names
  std::vector<AccountPlan> accounts;
  std::string consoleAccount;  // empty: nobody sits there
  std::string runAs;           // empty: the console account
  std::string timeZone;        // empty: UTC
  std::string moreDrives;      // letters beside C, such as "D", each a folder
  uint64_t seed = 0;           // of the machine's part of the SIDs; 0: drawn by chance
};

// "name[:type[:full name]]". False with a sentence in `error`.
bool ParseAccountPlan(std::string_view text, AccountPlan& account, std::string* error);
bool ParseMachineVersion(std::string_view text, MachinePlan& plan, std::string* error);  // "10.0.19045"

// `folder` must not exist or be empty. The built-in accounts Administrator and Guest are there, too,
// disabled and without profiles, unless the plan names them. False with a sentence in `error`.
bool CreateMachine(const std::string& folder, const MachinePlan& plan, std::string* error);

// "C:\Users\<name>", or as the version of the machine has it.
std::string ProfilePath(uint32_t major, std::string_view name);

}  // namespace machine
