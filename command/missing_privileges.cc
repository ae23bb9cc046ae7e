#include "missing_privileges.h"

#include <windows.h>

#include "foundation/unique_handle.h"

namespace {

bool IsEnabled(HANDLE token, const wchar_t* privilege) {
  PRIVILEGE_SET wanted = {};
  wanted.PrivilegeCount = 1;
  wanted.Control = PRIVILEGE_SET_ALL_NECESSARY;
  wanted.Privilege[0].Attributes = SE_PRIVILEGE_ENABLED;
  BOOL isEnabled = FALSE;
  return LookupPrivilegeValueW(nullptr, privilege, &wanted.Privilege[0].Luid) &&
         PrivilegeCheck(token, &wanted, &isEnabled) && isEnabled;
}

}  // namespace

std::string MissingPrivilegesSentence() {
  UniqueHandle token;
  const bool isOpen = OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Receive()) != FALSE;
  const bool hasBackup = isOpen && IsEnabled(token.Get(), L"SeBackupPrivilege");
  const bool hasRestore = isOpen && IsEnabled(token.Get(), L"SeRestorePrivilege");
  if (hasBackup && hasRestore) return std::string();
  const std::string which = hasBackup    ? "restore privilege"
                            : hasRestore ? "backup privilege"
                                         : "backup and restore privileges";
  return "Note: this process lacks the " + which +
         ", so accounts that aren't logged on and files that deny you can't be read. Run it as "
         "administrator to have them.";
}
