#include "users/local_groups.h"

#include <windows.h>
// The header below needs windows.h before it.
#include <lm.h>

namespace {

constexpr DWORD kSidRoom = 260;
constexpr DWORD kNameRoom = 260;
constexpr WELL_KNOWN_SID_TYPE kGroupSids[] = {WinBuiltinGuestsSid, WinBuiltinUsersSid,
                                              WinBuiltinAdministratorsSid};

bool GroupName(WELL_KNOWN_SID_TYPE type, WString& name) {
  alignas(DWORD) BYTE sid[kSidRoom];
  DWORD sidSize = sizeof(sid), nameSize = kNameRoom, domainSize = kNameRoom;
  wchar_t domain[kNameRoom];
  SID_NAME_USE use;
  name.Reserve(kNameRoom, nullptr, true);
  if (!CreateWellKnownSid(type, nullptr, sid, &sidSize)) return false;
  if (!LookupAccountSidW(nullptr, sid, name.buffer, &nameSize, domain, &domainSize, &use)) return false;
  name.length = 0;
  return true;
}

}  // namespace

bool GetLocalGroupNames(LocalGroupNames& groups) {
  for (uint32_t type = 0; type < 3; type++) {
    if (!GroupName(kGroupSids[type], groups.names[type])) return false;
  }
  return true;
}

bool LacksGroup(const wchar_t* account) {
  BYTE* names = nullptr;
  DWORD read = 0, total = 0;
  const NET_API_STATUS status =
      NetUserGetLocalGroups(nullptr, account, 0, 0, &names, MAX_PREFERRED_LENGTH, &read, &total);
  if (names) NetApiBufferFree(names);
  return status == NERR_Success && total == 0;
}

bool SetAccountGroup(const wchar_t* account, uint32_t type, const LocalGroupNames* groups) {
  if (type > kAdministratorAccount) return false;
  LocalGroupNames own;
  if (!groups) {
    if (!GetLocalGroupNames(own)) return false;
    groups = &own;
  }
  alignas(DWORD) BYTE sid[kSidRoom];
  DWORD sidSize = sizeof(sid), domainSize = kNameRoom;
  wchar_t domain[kNameRoom];
  SID_NAME_USE use;
  if (!LookupAccountNameW(nullptr, account, sid, &sidSize, domain, &domainSize, &use)) return false;

  LOCALGROUP_MEMBERS_INFO_0 member = {sid};
  BYTE* const members = reinterpret_cast<BYTE*>(&member);
  bool isMember = false;
  for (uint32_t group = 0; group < 3; group++) {
    const wchar_t* name = groups->names[group].CStr();
    if (group != type) {
      NetLocalGroupDelMembers(nullptr, name, 0, members, 1);
      continue;
    }
    const NET_API_STATUS status = NetLocalGroupAddMembers(nullptr, name, 0, members, 1);
    isMember = status == NERR_Success || status == ERROR_MEMBER_IN_ALIAS;
  }
  return isMember;
}
