#include "stand_in/account_stand_in.h"

#include <lm.h>
#include <sddl.h>
#include <wtsapi32.h>

#include <cstring>

#include "foundation/unique_handle.h"
#include "support/test_place.h"

namespace stand_in {

Accounts& TheAccounts() {
  static Accounts accounts;
  return accounts;
}

namespace {

Account* FindIn(std::vector<Account>& list, const WString& name) {
  for (Account& account : list) {
    if (Wide(account.name).EqualsNoCase(name)) return &account;
  }
  return nullptr;
}

bool IsThisComputer(const WString& name) {
  wchar_t computer[MAX_PATH];
  DWORD size = MAX_PATH;
  return GetComputerNameW(computer, &size) && name.EqualsNoCase(computer);
}

// NAME or COMPUTER\NAME.
const Account* FindByAnyName(const wchar_t* text) {
  WString name(text);
  const int32_t backslash = name.LastBackslash();
  if (backslash == 0) {
    const Account* own = FindAccount(text);
    return own ? own : FindIn(TheAccounts().ofDomain, name);
  }
  WString domain(name);
  domain.Truncate(backslash - 1);
  return IsThisComputer(domain) ? FindAccount(text + backslash) : nullptr;
}

}  // namespace

Account* FindAccount(const wchar_t* name) { return FindIn(TheAccounts().list, WString(name)); }

namespace {

// One block with room for texts behind the structures, as NetApiBufferFree wants it.
class Block {
 public:
  Block(size_t structures, size_t texts) {
    start_ = static_cast<BYTE*>(HeapAlloc(GetProcessHeap(), HEAP_ZERO_MEMORY, structures + texts * 2));
    text_ = reinterpret_cast<wchar_t*>(start_ + structures);
  }
  BYTE* Start() const { return start_; }
  wchar_t* Add(const std::string& utf8) {
    const WString text = Wide(utf8);
    wchar_t* place = text_;
    const size_t units = static_cast<size_t>(text.Length()) + 1;
    memcpy(place, text.CStr(), units * 2);
    text_ += units;
    return place;
  }

 private:
  BYTE* start_;
  wchar_t* text_;
};

size_t TextRoom(const Account& account) {
  return account.name.size() + account.fullName.size() + account.profile.size() + 3;
}

bool CopySid(const Account& account, PSID sid, DWORD* size) {
  PSID found = nullptr;
  if (!ConvertStringSidToSidW(Wide(account.sid).CStr(), &found)) return false;
  UniqueLocalMemory owner(found);
  const DWORD needed = GetLengthSid(found);
  const bool fits = *size >= needed;
  if (fits) memcpy(sid, found, needed);
  *size = needed;
  if (!fits) SetLastError(ERROR_INSUFFICIENT_BUFFER);
  return fits;
}

BOOL WINAPI LookUpName(LPCWSTR system, LPCWSTR name, PSID sid, LPDWORD sidSize, LPWSTR domain,
                       LPDWORD domainSize, PSID_NAME_USE use) {
  if (!TheAccounts().isActive) {
    return System<decltype(&LookupAccountNameW)>(L"advapi32", "LookupAccountNameW")(
        system, name, sid, sidSize, domain, domainSize, use);
  }
  const Account* account = FindByAnyName(name);
  if (!account || account->sid.empty()) {
    SetLastError(ERROR_NONE_MAPPED);
    return FALSE;
  }
  if (!CopySid(*account, sid, sidSize)) return FALSE;
  if (*domainSize != 0) domain[0] = 0;
  // The computer's own name comes before all others.
  *use = IsThisComputer(WString(name)) ? SidTypeDomain : SidTypeUser;
  return TRUE;
}

}  // namespace

// The headers declare these without import, so that ours are simply the ones that are linked.
extern "C" NET_API_STATUS WINAPI NetUserEnum(LPCWSTR server, DWORD level, DWORD filter, LPBYTE* buffer,
                                             DWORD longest, LPDWORD read, LPDWORD total, LPDWORD resume) {
  if (!TheAccounts().isActive) {
    return System<decltype(&NetUserEnum)>(L"netapi32", "NetUserEnum")(server, level, filter, buffer, longest,
                                                                      read, total, resume);
  }
  if (level != 3) return ERROR_INVALID_LEVEL;
  TheAccounts().enumerations++;
  const std::vector<Account>& list = TheAccounts().list;
  const DWORD result = TheAccounts().enumerationResult;
  *buffer = nullptr;
  *read = *total = 0;
  if (result != NERR_Success && result != ERROR_MORE_DATA) return result;
  size_t texts = 0;
  for (const Account& account : list) texts += TextRoom(account);
  Block block(list.size() * sizeof(USER_INFO_3), texts);
  USER_INFO_3* users = reinterpret_cast<USER_INFO_3*>(block.Start());
  for (size_t i = 0; i < list.size(); i++) {
    // An account without a name stands for an entry that the database gives damaged.
    users[i].usri3_name = list[i].name.empty() ? nullptr : block.Add(list[i].name);
    users[i].usri3_profile = block.Add(list[i].profile);
  }
  *buffer = block.Start();
  *read = static_cast<DWORD>(list.size());
  *total = TheAccounts().enumerationTotal ? TheAccounts().enumerationTotal : *read;
  return result;
}

extern "C" NET_API_STATUS WINAPI NetUserGetInfo(LPCWSTR server, LPCWSTR name, DWORD level, LPBYTE* buffer) {
  if (!TheAccounts().isActive) {
    return System<decltype(&NetUserGetInfo)>(L"netapi32", "NetUserGetInfo")(server, name, level, buffer);
  }
  const Account* account = FindAccount(name);
  if (!account) return NERR_UserNotFound;
  Block block(sizeof(USER_INFO_4) + sizeof(USER_INFO_11), TextRoom(*account));
  *buffer = block.Start();
  if (level == 4) {
    reinterpret_cast<USER_INFO_4*>(block.Start())->usri4_profile = block.Add(account->profile);
    return NERR_Success;
  }
  if (level == 11) {
    USER_INFO_11* info = reinterpret_cast<USER_INFO_11*>(block.Start());
    info->usri11_full_name = block.Add(account->fullName);
    info->usri11_priv = account->privilege;
    return NERR_Success;
  }
  HeapFree(GetProcessHeap(), 0, block.Start());
  return ERROR_INVALID_LEVEL;
}

extern "C" NET_API_STATUS WINAPI NetUserGetLocalGroups(LPCWSTR server, LPCWSTR name, DWORD level, DWORD flags,
                                                       LPBYTE* buffer, DWORD longest, LPDWORD read,
                                                       LPDWORD total) {
  if (!TheAccounts().isActive) {
    return System<decltype(&NetUserGetLocalGroups)>(L"netapi32", "NetUserGetLocalGroups")(
        server, name, level, flags, buffer, longest, read, total);
  }
  const Account* account = FindAccount(name);
  if (!account) return NERR_UserNotFound;
  size_t texts = 0;
  for (const std::string& group : account->groups) texts += group.size() + 1;
  Block block(account->groups.size() * sizeof(LOCALGROUP_USERS_INFO_0), texts);
  *buffer = block.Start();
  auto* place = reinterpret_cast<LOCALGROUP_USERS_INFO_0*>(block.Start());
  for (const std::string& group : account->groups) (place++)->lgrui0_name = block.Add(group);
  *read = *total = static_cast<DWORD>(account->groups.size());
  return NERR_Success;
}

extern "C" NET_API_STATUS WINAPI NetApiBufferFree(LPVOID buffer) {
  // Wine takes its buffers from the same heap.
  return !buffer || HeapFree(GetProcessHeap(), 0, buffer) ? NERR_Success : ERROR_INVALID_PARAMETER;
}

extern "C" BOOL WINAPI WTSQuerySessionInformationW(HANDLE server, DWORD session, WTS_INFO_CLASS what,
                                                   LPWSTR* text, LPDWORD bytes) {
  if (!TheAccounts().isActive || what != WTSUserName) {
    return System<decltype(&WTSQuerySessionInformationW)>(L"wtsapi32", "WTSQuerySessionInformationW")(
        server, session, what, text, bytes);
  }
  const std::string& name = TheAccounts().consoleUser;
  Block block(0, name.size() + 1);
  *text = block.Add(name);
  *bytes = static_cast<DWORD>(2 * (Wide(name).Length() + 1));
  return TRUE;
}

extern "C" void WINAPI WTSFreeMemory(PVOID memory) {
  // Wine takes it from the same heap.
  HeapFree(GetProcessHeap(), 0, memory);
}

STAND_IN_FOR("LookupAccountNameW@28", LookUpName)
}  // namespace stand_in
