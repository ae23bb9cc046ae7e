#include "users/account_facts.h"

#include <windows.h>
// The headers below need windows.h before them.
#include <lm.h>

bool GetAccountFacts(const wchar_t* name, AccountFacts& facts) {
  constexpr DWORD kNoLevel = 0xffffffff;
  USER_INFO_11* info = nullptr;
  NET_API_STATUS status = NetUserGetInfo(nullptr, name, 11, reinterpret_cast<BYTE**>(&info));
  bool found = status == NERR_Success && info && info->usri11_priv != kNoLevel;
  if (found) {
    facts.privilege = info->usri11_priv;
    facts.fullName.Assign(info->usri11_full_name);
  }
  if (info) NetApiBufferFree(info);
  return found;
}
