#include "machine/account_names.h"

#include <algorithm>

#include "machine/accounts_file.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/sid_text.h"

namespace machine {
namespace {

struct WellKnown {
  const char* name;
  const char* domain;
  const char* sid;
  SID_NAME_USE use;
};
constexpr WellKnown kWellKnown[] = {
    {"SYSTEM", "NT AUTHORITY", kSystemSid, SidTypeWellKnownGroup},
    {"LOCAL SERVICE", "NT AUTHORITY", "S-1-5-19", SidTypeWellKnownGroup},
    {"NETWORK SERVICE", "NT AUTHORITY", "S-1-5-20", SidTypeWellKnownGroup},
    {"Authenticated Users", "NT AUTHORITY", "S-1-5-11", SidTypeWellKnownGroup},
    {"Everyone", "", kEveryoneSid, SidTypeWellKnownGroup},
    {"Administrators", "BUILTIN", kAdministratorsSid, SidTypeAlias},
    {"Users", "BUILTIN", kUsersSid, SidTypeAlias},
    {"Guests", "BUILTIN", kGuestsSid, SidTypeAlias},
};

constexpr size_t kLongestAccountName = 20;

NamedSid Local(const Account& account) {
  return {account.sid, account.name, ThisMachine().settings.computerName, SidTypeUser};
}
NamedSid Known(const WellKnown& known) { return {known.sid, known.name, known.domain, known.use}; }

}  // namespace

bool FindAccountName(std::string_view name, NamedSid& found) {
  const AccountsHold hold;
  std::string_view domain;
  if (const size_t slash = name.find('\\'); slash != std::string_view::npos) {
    domain = name.substr(0, slash);
    name.remove_prefix(slash + 1);
  }
  const Machine& here = ThisMachine();
  if (domain.empty() || domain == "." || SameText(domain, here.settings.computerName)) {
    if (const Account* account = here.FindAccount(name)) {
      found = Local(*account);
      return true;
    }
  }
  for (const WellKnown& known : kWellKnown) {
    if (!SameText(name, known.name) || !(domain.empty() || SameText(domain, known.domain))) continue;
    found = Known(known);
    return true;
  }
  return false;
}

bool FindAccountSid(std::string_view sid, NamedSid& found) {
  const AccountsHold hold;
  if (const Account* account = ThisMachine().FindSid(sid)) {
    found = Local(*account);
    return true;
  }
  for (const WellKnown& known : kWellKnown) {
    if (!SameText(sid, known.sid)) continue;
    found = Known(known);
    return true;
  }
  return false;
}

bool IsAccountName(std::string_view name) {
  return !name.empty() && ToUtf16(name).size() <= kLongestAccountName &&
         name.find_first_of("\"/\\[]:;|=,+*?<>@") == std::string_view::npos && name.back() != '.' &&
         name.back() != ' ' && name.front() != ' ' &&
         std::none_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; });
}

bool IsThisComputer(const wchar_t* computer) {
  std::string name = ToUtf8(computer);
  name.erase(0, name.find_first_not_of('\\'));
  return name.empty() || SameText(name, ThisMachine().settings.computerName);
}

}  // namespace machine
