// account_changes.cc
//
// New local accounts, and changes of theirs.
#include <windows.h>

#include <lm.h>

#include <algorithm>
#include <random>

#include "machine/account_names.h"
#include "machine/accounts_file.h"
#include "machine/call.h"
#include "machine/names.h"
#include "machine/password_digest.h"
#include "machine/sid_text.h"

using namespace machine;

// Declared in not every SDK.
extern "C" NET_API_STATUS WINAPI NetUserSetInfo(const wchar_t* server, const wchar_t* name, DWORD level,
                                                BYTE* info, DWORD* wrongParameter);

namespace {

constexpr DWORD kPasswordLevel = 1003, kFullNameLevel = 1011;
constexpr uint32_t kFirstRelativeId = 1001;
constexpr size_t kLongestFullName = 256, kLongestPassword = 256;

std::u16string_view Units(const wchar_t* text) {
  return text ? std::u16string_view(reinterpret_cast<const char16_t*>(text)) : std::u16string_view();
}

// The machine's part of its accounts' SIDs, with the dash behind it; drawn where there is no account yet.
std::string MachineAuthority(const std::vector<Account>& accounts) {
  for (const Account& account : accounts) {
    if (account.sid.starts_with("S-1-5-21-")) return account.sid.substr(0, account.sid.rfind('-') + 1);
  }
  std::random_device random;
  std::string authority = "S-1-5-21-";
  for (int i = 0; i < 3; ++i) authority += std::to_string(random()) + "-";
  return authority;
}

std::string NewSid(const std::vector<Account>& accounts) {
  const std::string authority = MachineAuthority(accounts);
  uint32_t next = kFirstRelativeId;
  for (const Account& account : accounts) {
    if (!account.sid.starts_with(authority)) continue;
    next = std::max(next,
                    static_cast<uint32_t>(strtoul(account.sid.c_str() + authority.size(), nullptr, 10)) + 1);
  }
  return authority + std::to_string(next);
}

DWORD AddAccount(const USER_INFO_1& info, std::vector<Account>& accounts) {
  const std::string name = ToUtf8(info.usri1_name);
  NamedSid group;
  if (FindByName(accounts, name)) return NERR_UserExists;
  if (FindAccountName(name, group)) return NERR_GroupExists;
  Account account;
  account.name = name;
  account.sid = NewSid(accounts);
  account.comment = ToUtf8(info.usri1_comment);
  account.flags = (info.usri1_flags & ~static_cast<DWORD>(UF_SCRIPT)) | UF_NORMAL_ACCOUNT;
  account.passwordDigest = PasswordDigest(Units(info.usri1_password));
  accounts.push_back(account);
  return NERR_Success;
}

Account* Find(std::vector<Account>& accounts, const Account* found) {
  return found ? accounts.data() + (found - accounts.data()) : nullptr;
}

// An account's type is the strongest of the three groups that it is in.
AccountType TypeOfGroups(const Account& account) {
  const auto isIn = [&](const char* group) {
    return std::any_of(account.groups.begin(), account.groups.end(),
                       [&](const std::string& own) { return SameText(own, group); });
  };
  if (isIn("Administrators")) return AccountType::kAdministrator;
  return isIn("Guests") && !isIn("Users") ? AccountType::kGuest : AccountType::kStandard;
}

enum class Membership { kBegins, kEnds };

DWORD ChangeMember(Account& account, const std::string& group, Membership change) {
  const auto own = std::find_if(account.groups.begin(), account.groups.end(),
                                [&](const std::string& name) { return SameText(name, group); });
  const bool isMember = own != account.groups.end();
  if (change == Membership::kBegins) {
    if (isMember) return ERROR_MEMBER_IN_ALIAS;
    account.groups.push_back(group);
  } else {
    if (!isMember) return ERROR_MEMBER_NOT_IN_ALIAS;
    account.groups.erase(own);
  }
  account.type = TypeOfGroups(account);
  return NERR_Success;
}

DWORD ChangeGroup(const char* call, const wchar_t* server, const wchar_t* groupName, DWORD level,
                  const BYTE* members, DWORD count, Membership change) {
  if (level != 0 || count != 1) Unsupported(call, "anything but one member by its SID");
  if (!members) return ERROR_INVALID_PARAMETER;
  if (!IsThisComputer(server)) return ERROR_BAD_NETPATH;
  NamedSid group;
  if (!FindAccountName(ToUtf8(groupName), group) || group.use != SidTypeAlias) return NERR_GroupNotFound;
  PSID sid = reinterpret_cast<const LOCALGROUP_MEMBERS_INFO_0*>(members)->lgrmi0_sid;
  if (!IsValidSid(sid)) return ERROR_INVALID_SID;
  const std::string text = SidText(sid);
  return ChangeAccounts(call, group.name, [&](std::vector<Account>& accounts) -> DWORD {
    Account* account = Find(accounts, FindBySid(accounts, text));
    return account ? ChangeMember(*account, group.name, change) : ERROR_NO_SUCH_MEMBER;
  });
}

}  // namespace

NET_API_STATUS WINAPI NetUserAdd(const wchar_t* server, DWORD level, BYTE* given, DWORD* wrongParameter) {
  EnterCall();
  if (level != 1) Unsupported("NetUserAdd", "this level");
  if (wrongParameter) Unsupported("NetUserAdd", "which parameter is wrong");
  if (!given) return ERROR_INVALID_PARAMETER;
  if (!IsThisComputer(server)) return ERROR_BAD_NETPATH;
  const auto& info = *reinterpret_cast<const USER_INFO_1*>(given);
  if (info.usri1_priv != USER_PRIV_USER) return ERROR_INVALID_PARAMETER;
  if (info.usri1_home_dir || info.usri1_script_path) Unsupported("NetUserAdd", "home folder and script");
  const std::string name = ToUtf8(info.usri1_name);
  if (!IsAccountName(name)) return NERR_BadUsername;
  if (Units(info.usri1_password).size() > kLongestPassword) return ERROR_INVALID_PARAMETER;
  return ChangeAccounts("NetUserAdd", name,
                        [&](std::vector<Account>& accounts) { return AddAccount(info, accounts); });
}

NET_API_STATUS WINAPI NetUserSetInfo(const wchar_t* server, const wchar_t* name, DWORD level, BYTE* info,
                                     DWORD* wrongParameter) {
  EnterCall();
  if (level != kPasswordLevel && level != kFullNameLevel) Unsupported("NetUserSetInfo", "this level");
  if (wrongParameter) Unsupported("NetUserSetInfo", "which parameter is wrong");
  if (!name || !info) return ERROR_INVALID_PARAMETER;
  if (!IsThisComputer(server)) return ERROR_BAD_NETPATH;
  // The structures of both levels are one text.
  const std::u16string_view text = Units(*reinterpret_cast<wchar_t* const*>(info));
  if (text.size() > (level == kPasswordLevel ? kLongestPassword : kLongestFullName)) {
    return ERROR_INVALID_PARAMETER;
  }
  const std::string asked = ToUtf8(name) + "," + std::to_string(level);
  return ChangeAccounts("NetUserSetInfo", asked, [&](std::vector<Account>& accounts) -> DWORD {
    Account* account = Find(accounts, FindByName(accounts, ToUtf8(name)));
    if (!account) return NERR_UserNotFound;
    if (level == kPasswordLevel) {
      account->passwordDigest = PasswordDigest(text);
    } else {
      account->fullName = ToUtf8(text);
    }
    return NERR_Success;
  });
}

NET_API_STATUS WINAPI NetLocalGroupAddMembers(const wchar_t* server, const wchar_t* group, DWORD level,
                                              BYTE* members, DWORD count) {
  EnterCall();
  return ChangeGroup("NetLocalGroupAddMembers", server, group, level, members, count, Membership::kBegins);
}

NET_API_STATUS WINAPI NetLocalGroupDelMembers(const wchar_t* server, const wchar_t* group, DWORD level,
                                              BYTE* members, DWORD count) {
  EnterCall();
  return ChangeGroup("NetLocalGroupDelMembers", server, group, level, members, count, Membership::kEnds);
}
