// token.h
//
// Tokens: as whom the process and each of its threads act, and with which privileges.
#pragma once
#include <windows.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "machine/handles.h"

namespace machine {

struct TokenPrivilege {
  uint32_t id = 0;          // low part of its LUID: the SE_…_PRIVILEGE numbers
  uint32_t attributes = 0;  // SE_PRIVILEGE_ENABLED and SE_PRIVILEGE_ENABLED_BY_DEFAULT
};

struct TokenGroup {
  std::string sid;  // binary
  uint32_t attributes = 0;
};

// What a token handle names. A token doesn't change but for its privileges, which one lock guards.
class Token : public Object {
 public:
  std::string user;  // binary SID
  std::vector<TokenGroup> groups;
  bool isImpersonation = false;
  uint32_t session = 0;

  bool IsEnabled(uint32_t privilege) const;
  // Whether the token acts as this SID: its user or one of its groups.
  bool Holds(const void* sid) const;
  bool IsAdministrator() const;
  std::vector<TokenPrivilege> Privileges() const;
  void SetPrivileges(std::vector<TokenPrivilege> privileges);
  std::shared_ptr<Token> Duplicate() const;

 private:
  std::vector<TokenPrivilege> privileges_;
};

// The token of this process. It is made anew from the machine's settings when another machine is set.
std::shared_ptr<Token> ProcessToken();

// As whom the calling thread acts: what it impersonates, or the process's token. Access checks ask this.
std::shared_ptr<Token> ThreadToken();

// Whether a privilege such as SE_BACKUP_PRIVILEGE (17) is enabled for the calling thread.
bool HasPrivilege(uint32_t privilege);

// A new token of an account of the machine, by name; SYSTEM and unknown names give that of the system.
std::shared_ptr<Token> MakeToken(const std::string& account, uint32_t session);

std::string TokenUserText(const Token& token);  // S-1-5-…

constexpr uint32_t kSecurityPrivilege = 8, kTakeOwnershipPrivilege = 9, kSystemProfilePrivilege = 11,
                   kBackupPrivilege = 17, kRestorePrivilege = 18, kShutdownPrivilege = 19,
                   kDebugPrivilege = 20, kChangeNotifyPrivilege = 23, kImpersonatePrivilege = 29,
                   kManageVolumePrivilege = 28, kIncreaseQuotaPrivilege = 5,
                   kCreateSymbolicLinkPrivilege = 35;

}  // namespace machine
