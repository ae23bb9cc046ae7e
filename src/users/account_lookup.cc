#include "users/account_lookup.h"

#include <windows.h>
// The headers below need windows.h before them.
#include <lm.h>
#include <sddl.h>
#include <shlwapi.h>
#include <userenv.h>

#include "foundation/registry.h"
#include "foundation/unique_handle.h"
#include "users/expand_variables.h"

namespace {

// The path that the account database itself keeps for the profile; mostly empty.
WString DatabaseProfile(const wchar_t* name) {
  WString profile;
  USER_INFO_4* info = nullptr;
  if (NetUserGetInfo(nullptr, name, 4, reinterpret_cast<BYTE**>(&info)) == NERR_Success && info) {
    profile.Assign(info->usri4_profile);
  }
  if (info) NetApiBufferFree(info);
  ExpandVariables(profile);
  profile.StripTrailingBackslashes();
  return profile;
}

bool ConventionalProfile(const wchar_t* name, WString& profile) {
  WString folder;
  DWORD size = MAX_PATH;
  folder.Reserve(MAX_PATH, nullptr, true);
  if (!GetProfilesDirectoryW(folder.buffer, &size)) return false;
  folder.length = 0;
  profile.Concat(folder.CStr(), L"\\", name);
  if (PathFileExistsW(profile.CStr())) return true;
  profile.Assign(L"");
  return false;
}

// What the system knows under a name.
struct NamedSid {
  alignas(DWORD) BYTE sid[260];
  SID_NAME_USE use;

  bool Find(const WString& name) {
    constexpr DWORD kDomainRoom = 260;
    wchar_t domain[kDomainRoom];
    DWORD sidSize = sizeof sid, domainSize = kDomainRoom;
    // An empty name would be found, too: as the domain of the built-in groups.
    return !name.IsEmpty() &&
           LookupAccountNameW(nullptr, name.CStr(), sid, &sidSize, domain, &domainSize, &use);
  }
};

WString OnThisComputer(const WString& name) {
  wchar_t computer[MAX_PATH] = {};
  DWORD size = MAX_PATH;
  WString full;
  if (GetComputerNameW(computer, &size)) full.Concat(computer, L"\\", name.CStr());
  return full;
}

}  // namespace

bool AccountNameToSid(WString& name) {
  NamedSid found;
  if (name.IsEmpty()) return false;
  // The bare name alone finds the accounts of a machine that keeps none of its own, as a domain's server.
  bool isUser = found.Find(OnThisComputer(name)) && found.use == SidTypeUser;
  if (!isUser) isUser = found.Find(name) && found.use == SidTypeUser;
  LPWSTR text = nullptr;
  if (!isUser || !ConvertSidToStringSidW(found.sid, &text)) return false;
  UniqueLocalMemory owner(text);
  name.Assign(text);
  return true;
}

bool IsGroupName(const wchar_t* name) {
  NamedSid found;
  return found.Find(WString(name)) && (found.use == SidTypeAlias || found.use == SidTypeWellKnownGroup);
}

bool GetProfilePathFromSid(const wchar_t* sid, WString* profile) {
  if (!profile) return false;
  WString path;
  path.Concat(kProfileListKey, L"\\", sid);
  UniqueKey key(OpenKey(path.CStr(), KEY_READ));
  if (!key || !QueryStringValue(key.Get(), L"ProfileImagePath", *profile)) return false;
  ExpandVariables(*profile);
  profile->StripTrailingBackslashes();
  return true;
}

bool CanReadProfileList() { return static_cast<bool>(UniqueKey(OpenKey(kProfileListKey, KEY_READ))); }

bool GetAccountSidAndProfile(const wchar_t* name, WString& sid, WString* profile) {
  WString account(name);
  WString text(account);
  if (!AccountNameToSid(text)) return false;
  sid = text;
  if (!profile) return true;
  *profile = DatabaseProfile(account.CStr());
  if (!profile->IsEmpty() && PathFileExistsW(profile->CStr())) return true;
  if (GetProfilePathFromSid(sid.CStr(), profile)) return true;
  return ConventionalProfile(account.CStr(), *profile);
}

bool HasKnownProfile(const wchar_t* name) {
  WString sid(name);
  if (!AccountNameToSid(sid)) return false;
  WString profile = DatabaseProfile(name);
  if (!profile.IsEmpty() && PathFileExistsW(profile.CStr())) return true;
  if (GetProfilePathFromSid(sid.CStr(), &profile)) return true;
  return !CanReadProfileList() && ConventionalProfile(name, profile);
}
