#include "machine/account_names.h"

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

bool Same(std::string_view a, std::string_view b) { return FoldUtf8(a) == FoldUtf8(b); }

NamedSid Local(const Account& account) {
  return {account.sid, account.name, ThisMachine().settings.computerName, SidTypeUser};
}
NamedSid Known(const WellKnown& known) { return {known.sid, known.name, known.domain, known.use}; }

}  // namespace

bool FindAccountName(std::string_view name, NamedSid& found) {
  std::string_view domain;
  if (const size_t slash = name.find('\\'); slash != std::string_view::npos) {
    domain = name.substr(0, slash);
    name.remove_prefix(slash + 1);
  }
  const Machine& here = ThisMachine();
  if (domain.empty() || domain == "." || Same(domain, here.settings.computerName)) {
    if (const Account* account = here.FindAccount(name)) {
      found = Local(*account);
      return true;
    }
  }
  for (const WellKnown& known : kWellKnown) {
    if (!Same(name, known.name) || !(domain.empty() || Same(domain, known.domain))) continue;
    found = Known(known);
    return true;
  }
  return false;
}

bool FindAccountSid(std::string_view sid, NamedSid& found) {
  if (const Account* account = ThisMachine().FindSid(sid)) {
    found = Local(*account);
    return true;
  }
  for (const WellKnown& known : kWellKnown) {
    if (!Same(sid, known.sid)) continue;
    found = Known(known);
    return true;
  }
  return false;
}

}  // namespace machine
