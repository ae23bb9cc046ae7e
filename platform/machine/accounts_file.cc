#include "machine/accounts_file.h"

#include <fcntl.h>
#include <lm.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>

#include "machine/call.h"
#include "machine/descriptor.h"
#include "machine/faults.h"
#include "machine/names.h"
#include "machine/settings_text.h"
#include "machine/token.h"

namespace machine {
namespace {

std::recursive_mutex& Lock() {
  static auto* lock = new std::recursive_mutex;
  return *lock;
}

bool Complain(std::string* error, const std::string& file, const std::string& reason) {
  if (error) *error = "\"" + file + "\"" + reason;
  return false;
}

void Take(const SettingsSection& section, std::string_view key, std::string& value) {
  if (const std::string* text = section.Find(key)) value = *text;
}

std::vector<std::string> SplitGroups(const std::string& text) {
  std::vector<std::string> groups;
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find(',', start), text.size());
    if (end > start) groups.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return groups;
}

bool ReadAccount(const SettingsSection& section, const std::string& file, Account& account,
                 std::string* error) {
  account.name = section.name;
  Take(section, "Sid", account.sid);
  Take(section, "FullName", account.fullName);
  Take(section, "Comment", account.comment);
  Take(section, "Home", account.home);
  Take(section, "PasswordDigest", account.passwordDigest);
  std::string type = "standard", groups;
  Take(section, "Type", type);
  if (!ParseAccountType(type, account.type)) {
    return Complain(error, file,
                    ": account \"" + account.name + "\" has the unknown type \"" + type +
                        "\". Known are guest, standard and administrator.");
  }
  if (const std::string* flags = section.Find("Flags")) {
    account.flags = static_cast<uint32_t>(strtoul(flags->c_str(), nullptr, 0));
  }
  Take(section, "Groups", groups);
  account.groups = SplitGroups(groups);
  if (account.name.empty() || !account.sid.starts_with("S-1-")) {
    return Complain(error, file,
                    ": account \"" + account.name + "\" lacks its name or its \"Sid=S-1-5-21-…\".");
  }
  return true;
}

SettingsSection WriteAccount(const Account& account) {
  SettingsSection section{account.name, {}};
  section.Add("Sid", account.sid);
  section.Add("FullName", account.fullName);
  section.Add("Comment", account.comment);
  section.Add("Type", AccountTypeName(account.type));
  char flags[16];
  snprintf(flags, sizeof flags, "0x%X", account.flags);
  section.Add("Flags", flags);
  section.Add("Home", account.home);
  std::string groups;
  for (const auto& group : account.groups) groups += (groups.empty() ? "" : ",") + group;
  section.Add("Groups", groups);
  section.Add("PasswordDigest", account.passwordDigest);
  return section;
}

// Waits until no other program changes the accounts of this machine. The file itself can't be locked,
// since a rename replaces it.
bool LockFolder(Descriptor& folder) {
  folder.Reset(open(ThisMachine().folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) return false;
  while (flock(folder.Get(), LOCK_EX) != 0) {
    if (errno != EINTR) return false;
  }
  return true;
}

}  // namespace

AccountsHold::AccountsHold() : hold_(Lock()) {}

bool ReadAccounts(const std::string& file, std::vector<Account>& accounts, std::string* error) {
  SettingsText text;
  if (!text.Read(file, error)) return false;
  std::vector<Account> read;
  for (const SettingsSection& row : text.sections) {
    Account account;
    if (!ReadAccount(row, file, account, error)) return false;
    if (FindByName(read, account.name) || FindBySid(read, account.sid)) {
      return Complain(error, file, " has the account \"" + account.name + "\" or its SID twice.");
    }
    read.push_back(account);
  }
  accounts = std::move(read);
  return true;
}

bool WriteAccounts(const std::string& file, const std::vector<Account>& accounts, std::string* error) {
  SettingsText text;
  for (const Account& account : accounts) text.sections.push_back(WriteAccount(account));
  return text.Write(file, "The local accounts of the machine.", error);
}

DWORD ChangeAccounts(const char* call, const std::string& what,
                     const std::function<DWORD(std::vector<Account>&)>& change) {
  if (!ThreadToken()->IsAdministrator()) return ERROR_ACCESS_DENIED;
  const AccountsHold hold;
  Machine& here = ThisMachine();
  const char drive = here.settings.systemDrive;
  if (here.IsAttachedDrive(drive) || here.IsReadOnlyDrive(drive)) return ERROR_WRITE_PROTECT;
  Descriptor folder;
  if (!LockFolder(folder)) return ErrorFromErrno(errno);
  const std::string file = here.folder + "/" + kAccountsFile;
  std::vector<Account> accounts;
  if (!ReadAccounts(file, accounts, nullptr)) return NERR_InternalError;
  if (const DWORD error = change(accounts)) return error;
  if (FaultHitsChange(call, what)) return GetLastError();
  if (!WriteAccounts(file, accounts, nullptr)) return NERR_InternalError;
  here.accounts = std::move(accounts);
  return ERROR_SUCCESS;
}

}  // namespace machine
