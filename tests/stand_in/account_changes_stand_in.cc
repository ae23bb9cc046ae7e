// The making of accounts and profiles.
#include <windows.h>

#include <lm.h>
#include <sddl.h>
#include <userenv.h>

#include <algorithm>

#include "foundation/unique_handle.h"
#include "stand_in/account_stand_in.h"
#include "support/test_place.h"

namespace stand_in {
namespace {

// Tells the call, and whether it is one that is to fail.
bool IsToFail(const std::string& call, const std::string& what) {
  Accounts& accounts = TheAccounts();
  const std::string whole = call + " " + what;
  if (accounts.watcher) accounts.watcher->push_back(whole);
  if (accounts.failing != call && accounts.failing != whole) return false;
  if (accounts.failingFrom == 1) return true;
  accounts.failingFrom--;
  return false;
}

bool Refuse(DWORD error) {
  SetLastError(error);
  return false;
}

std::string TextOfSid(PSID sid) {
  LPWSTR text = nullptr;
  if (!ConvertSidToStringSidW(sid, &text)) return {};
  UniqueLocalMemory owner(text);
  return Utf8(text);
}

bool IsIn(const Account& account, const char* group) {
  return std::count(account.groups.begin(), account.groups.end(), group) != 0;
}

NET_API_STATUS ChangeGroup(const char* call, const wchar_t* name, const BYTE* members, bool begins) {
  const std::string group = Utf8(name);
  const std::string sid = TextOfSid(reinterpret_cast<const LOCALGROUP_MEMBERS_INFO_0*>(members)->lgrmi0_sid);
  for (Account& account : TheAccounts().list) {
    if (account.sid != sid) continue;
    if (IsIn(account, group.c_str()) == begins) {
      return begins ? ERROR_MEMBER_IN_ALIAS : ERROR_MEMBER_NOT_IN_ALIAS;
    }
    if (IsToFail(call, group)) return ERROR_ACCESS_DENIED;
    if (begins) {
      account.groups.push_back(group);
    } else {
      std::erase(account.groups, group);
    }
    account.privilege = IsIn(account, "Administrators") ? 2 : IsIn(account, "Guests") ? 0 : 1;
    return NERR_Success;
  }
  return ERROR_NO_SUCH_MEMBER;
}

// The only open one at a time is what a test needs.
struct Logon {
  HANDLE token = nullptr;
  std::string account;
};
Logon& TheLogon() {
  static Logon logon;
  return logon;
}

BOOL WINAPI LogOn(LPCWSTR name, LPCWSTR, LPCWSTR password, DWORD, DWORD, PHANDLE token) {
  const Account* account = FindAccount(name);
  if (IsToFail("LogonUserW", Utf8(name))) return Refuse(ERROR_ACCESS_DENIED);
  if (!account || account->password != Utf8(password)) return Refuse(ERROR_LOGON_FAILURE);
  if (account->password.empty()) return Refuse(ERROR_ACCOUNT_RESTRICTION);
  *token = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  TheLogon() = {*token, account->name};
  return TRUE;
}

BOOL WINAPI LoadProfile(HANDLE token, LPPROFILEINFOW info) {
  Account* account = FindAccount(info->lpUserName);
  if (info->dwSize != 32 || info->dwFlags != 1) return Refuse(ERROR_INVALID_PARAMETER);
  if (!account || token != TheLogon().token || account->name != TheLogon().account) {
    return Refuse(ERROR_INVALID_HANDLE);
  }
  if (IsToFail("LoadUserProfileW", account->name)) return Refuse(ERROR_ACCESS_DENIED);
  if (!account->hasMadeProfile) TheAccounts().makeProfile(account->name, account->sid);
  account->hasMadeProfile = true;
  const LSTATUS status =
      RegOpenKeyExW(HKEY_USERS, nullptr, 0, KEY_READ, reinterpret_cast<HKEY*>(&info->hProfile));
  return status == ERROR_SUCCESS || Refuse(static_cast<DWORD>(status));
}

BOOL WINAPI UnloadProfile(HANDLE, HANDLE key) { return RegCloseKey(static_cast<HKEY>(key)) == ERROR_SUCCESS; }

// Userenv.dll of the tests is the test program itself, which exports the function below.
HMODULE WINAPI LoadModule(LPCWSTR name) {
  const bool isOurs = TheAccounts().isActive && TheAccounts().hasCreateProfile;
  if (isOurs && WString(name).EqualsNoCase(L"Userenv.dll")) return GetModuleHandleW(nullptr);
  return LoadLibraryExW(name, nullptr, 0);
}

}  // namespace

// Exported under the plain name, which the compiler can't give to a function of this calling convention.
asm(".globl _CreateProfile\n"
    "_CreateProfile: jmp _StandInCreateProfile@16\n"
    ".section .drectve\n"
    ".ascii \" -export:CreateProfile\"\n"
    ".text\n");
extern "C" HRESULT WINAPI StandInCreateProfile(LPCWSTR sid, LPCWSTR name, LPWSTR, DWORD size) {
  Account* account = FindAccount(name);
  if (!account || account->sid != Utf8(sid) || size < MAX_PATH) return E_INVALIDARG;
  if (IsToFail("CreateProfile", account->name)) return E_ACCESSDENIED;
  if (account->hasMadeProfile) return HRESULT_FROM_WIN32(ERROR_ALREADY_EXISTS);
  account->hasMadeProfile = true;
  TheAccounts().makeProfile(account->name, account->sid);
  return S_OK;
}

extern "C" NET_API_STATUS WINAPI NetUserAdd(LPCWSTR, DWORD level, LPBYTE buffer, LPDWORD) {
  const USER_INFO_1& info = *reinterpret_cast<USER_INFO_1*>(buffer);
  const std::string name = Utf8(info.usri1_name);
  if (level != 1) return ERROR_INVALID_LEVEL;
  if (info.usri1_priv != USER_PRIV_USER || info.usri1_flags != (UF_SCRIPT | UF_DONT_EXPIRE_PASSWD)) {
    return ERROR_INVALID_PARAMETER;
  }
  if (name.empty() || Wide(name).Length() > 20 ||
      name.find_first_of("\"/\\[]:;|=,+*?<>@") != std::string::npos ||
      name.find_first_not_of(". ") == std::string::npos) {
    return NERR_BadUsername;
  }
  if (FindAccount(info.usri1_name)) return NERR_UserExists;
  for (const wchar_t* group : {L"Administrators", L"Users", L"Guests"}) {
    if (Wide(name).EqualsNoCase(group)) return NERR_GroupExists;
  }
  if (IsToFail("NetUserAdd", name)) return ERROR_ACCESS_DENIED;
  Account account;
  account.name = name;
  account.password = Utf8(info.usri1_password);
  account.sid = "S-1-5-21-1004336348-1177238915-" + std::to_string(GetCurrentProcessId()) + "-" +
                std::to_string(5001 + TheAccounts().list.size());
  TheAccounts().list.push_back(account);
  return NERR_Success;
}

extern "C" NET_API_STATUS WINAPI NetUserSetInfo(LPCWSTR, LPCWSTR name, DWORD level, LPBYTE buffer, LPDWORD) {
  Account* account = FindAccount(name);
  if (!account) return NERR_UserNotFound;
  if (level != 1003 && level != 1011) return ERROR_INVALID_LEVEL;
  if (IsToFail("NetUserSetInfo", account->name + "," + std::to_string(level))) return ERROR_ACCESS_DENIED;
  (level == 1003 ? account->password : account->fullName) = Utf8(*reinterpret_cast<wchar_t**>(buffer));
  return NERR_Success;
}

extern "C" NET_API_STATUS WINAPI NetLocalGroupAddMembers(LPCWSTR, LPCWSTR group, DWORD, LPBYTE members,
                                                         DWORD) {
  return ChangeGroup("NetLocalGroupAddMembers", group, members, true);
}

extern "C" NET_API_STATUS WINAPI NetLocalGroupDelMembers(LPCWSTR, LPCWSTR group, DWORD, LPBYTE members,
                                                         DWORD) {
  return ChangeGroup("NetLocalGroupDelMembers", group, members, false);
}

STAND_IN_FOR("LogonUserW@24", LogOn)
STAND_IN_FOR("LoadUserProfileW@8", LoadProfile)
STAND_IN_FOR("UnloadUserProfile@8", UnloadProfile)
STAND_IN_FOR("LoadLibraryW@4", LoadModule)
}  // namespace stand_in
