// machine.h
//
// The machine folder that this process runs on: its settings (machine.ini) and its accounts
// (accounts.ini). The format is described in docs/machine-folder.md.
#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace machine {

enum class AccountType { kGuest = 0, kStandard = 1, kAdministrator = 2 };
bool ParseAccountType(std::string_view text, AccountType& type);  // guest, standard, administrator
std::string AccountTypeName(AccountType type);

struct Account {
  std::string name;  // all texts are UTF-8
  std::string sid;   // text form, S-1-5-21-…
  std::string fullName;
  std::string comment;
  AccountType type = AccountType::kStandard;
  uint32_t flags = 0x10200;  // UF_NORMAL_ACCOUNT | UF_DONT_EXPIRE_PASSWD
  std::string home;          // profile path of the account database; mostly empty
  std::vector<std::string> groups;
  std::string passwordDigest;  // of password_digest.h; empty: no password
};

constexpr uint32_t kAccountDisabled = 2;  // UF_ACCOUNTDISABLE, of `flags`

constexpr const char* kAccountsFile = "accounts.ini";

// Without regard to case; null if there is none.
const Account* FindByName(const std::vector<Account>& accounts, std::string_view name);
const Account* FindBySid(const std::vector<Account>& accounts, std::string_view sid);

// A process of the machine beside this one, as machine.ini names it.
struct ProcessSettings {
  std::string image;    // Windows path of its program, such as C:\Windows\explorer.exe
  std::string account;  // name of a local account, or SYSTEM
  uint32_t session = 1;
};

struct MachineSettings {
  std::string computerName = "NORVANE-PC";
  uint32_t major = 10, minor = 0, build = 19045;
  bool HasOldLayout() const { return major < 6; }  // before Windows Vista
  char systemDrive = 'C';
  std::string consoleAccount;  // who sits at the console; empty: nobody
  std::string runAs;           // the account whose token this process has; empty: the console account
  std::string timeZone;        // a name of the time zone database; empty: UTC
  std::string programPath = "C:\\Norvane\\Norvane.exe";
  std::map<char, std::string> drives;  // letter -> absolute folder; others are <folder>/<letter>
  std::string readOnlyDrives;          // letters of drives that nothing is written to
  std::vector<ProcessSettings> processes;
};

class Machine {
 public:
  std::string folder;  // absolute, without a trailing slash
  MachineSettings settings;
  std::vector<Account> accounts;

  // Reads machine.ini and accounts.ini. False with a sentence in `error` that names what is wrong.
  static bool Open(const std::string& folder, Machine& machine, std::string* error);
  bool Save(std::string* error) const;  // both files, each by a rename
  bool SaveAccounts(std::string* error) const;

  // Absolute folder of a drive, or empty if there is none.
  std::string DriveFolder(char letter) const;
  // A drive that machine.ini places outside of the folder, such as a mounted disk. No hive on it is
  // ever written.
  bool IsAttachedDrive(char letter) const;
  bool IsReadOnlyDrive(char letter) const;
  std::string Drives() const;  // letters in order
  const Account* FindAccount(std::string_view name) const { return FindByName(accounts, name); }
  const Account* FindSid(std::string_view sid) const { return FindBySid(accounts, sid); }
  const Account* RunningAccount() const;  // null: the process has an administrator's rights all the same
};

// The machine of this process. Set once by the program's entry (or again and again by tests, which
// must hold no handles then); every call into the platform that needs a machine ends the program with
// a message where none was set.
void UseMachine(Machine machine);
Machine& ThisMachine();
bool HasMachine();

// Called when another machine is set and at the end of the process: writes changed hives, drops what
// is remembered of directories. The machine stays set.
void LeaveMachine();

// Has `drop` called by LeaveMachine, for whatever a part of the platform remembers of a machine. The
// later a part asked, the earlier it is called. A part asks once.
void OnLeaveMachine(void (*drop)());

}  // namespace machine
