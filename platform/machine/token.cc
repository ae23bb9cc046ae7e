#include "machine/token.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include "machine/accounts_file.h"
#include "machine/current_token.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/sid_text.h"

namespace machine {
namespace {

std::mutex privilegesLock;

constexpr uint32_t kGroupEnabled = SE_GROUP_MANDATORY | SE_GROUP_ENABLED_BY_DEFAULT | SE_GROUP_ENABLED;

// What an elevated administrator's token holds. Windows gives them switched off but for a few.
constexpr uint32_t kAdministratorPrivileges[] = {
    kIncreaseQuotaPrivilege, kSecurityPrivilege,          kTakeOwnershipPrivilege, kSystemProfilePrivilege,
    kBackupPrivilege,        kRestorePrivilege,           kShutdownPrivilege,      kDebugPrivilege,
    kManageVolumePrivilege,  kCreateSymbolicLinkPrivilege};
constexpr uint32_t kEnabledFromTheStart[] = {kChangeNotifyPrivilege, kImpersonatePrivilege};

TokenPrivilege Off(uint32_t id) { return {id, 0}; }
TokenPrivilege On(uint32_t id) { return {id, SE_PRIVILEGE_ENABLED | SE_PRIVILEGE_ENABLED_BY_DEFAULT}; }

void AddGroup(Token& token, const char* sid) { token.groups.push_back({SidBytes(sid), kGroupEnabled}); }

void MakeAdministrator(Token& token) {
  AddGroup(token, kAdministratorsSid);
  std::vector<TokenPrivilege> privileges;
  for (const uint32_t id : kAdministratorPrivileges) privileges.push_back(Off(id));
  for (const uint32_t id : kEnabledFromTheStart) privileges.push_back(On(id));
  token.SetPrivileges(std::move(privileges));
}

}  // namespace

bool Token::IsEnabled(uint32_t privilege) const {
  const std::lock_guard hold(privilegesLock);
  return std::any_of(privileges_.begin(), privileges_.end(), [&](const TokenPrivilege& held) {
    return held.id == privilege && (held.attributes & SE_PRIVILEGE_ENABLED);
  });
}

bool Token::Holds(const void* sid) const {
  const auto isSame = [&](const std::string& own) {
    return memcmp(own.data(), sid, std::min<size_t>(own.size(), 2)) == 0 &&
           memcmp(own.data(), sid, own.size()) == 0;
  };
  if (isSame(user)) return true;
  return std::any_of(groups.begin(), groups.end(),
                     [&](const TokenGroup& group) { return isSame(group.sid); });
}

bool Token::IsAdministrator() const {
  static const std::string administrators = SidBytes(kAdministratorsSid);
  return Holds(administrators.data());
}

std::vector<TokenPrivilege> Token::Privileges() const {
  const std::lock_guard hold(privilegesLock);
  return privileges_;
}

void Token::SetPrivileges(std::vector<TokenPrivilege> privileges) {
  const std::lock_guard hold(privilegesLock);
  privileges_ = std::move(privileges);
}

std::shared_ptr<Token> Token::Duplicate() const {
  auto copy = std::make_shared<Token>();
  copy->user = user;
  copy->groups = groups;
  copy->session = session;
  copy->SetPrivileges(Privileges());
  return copy;
}

std::shared_ptr<Token> MakeToken(const std::string& name, uint32_t session) {
  auto token = std::make_shared<Token>();
  token->session = session;
  const AccountsHold hold;
  const Account* account = ThisMachine().FindAccount(name);
  token->user = SidBytes(account ? account->sid : kSystemSid);
  AddGroup(*token, kEveryoneSid);
  if (!account) {
    MakeAdministrator(*token);
    return token;
  }
  switch (account->type) {
    case AccountType::kAdministrator:
      AddGroup(*token, kUsersSid);
      MakeAdministrator(*token);
      break;
    case AccountType::kStandard:
      AddGroup(*token, kUsersSid);
      token->SetPrivileges({Off(kShutdownPrivilege), On(kChangeNotifyPrivilege)});
      break;
    case AccountType::kGuest:
      AddGroup(*token, kGuestsSid);
      token->SetPrivileges({On(kChangeNotifyPrivilege)});
      break;
  }
  return token;
}

bool HasPrivilege(uint32_t privilege) { return ThreadToken()->IsEnabled(privilege); }

std::string TokenUserText(const Token& token) { return SidText(std::string_view(token.user)); }

}  // namespace machine
