// access_lists.cc
//
// Access lists in memory: a header, entries one behind the other, and room behind them.
#include <cstring>

#include "machine/call.h"

using namespace machine;

namespace {

bool IsRevision(DWORD revision) { return revision == ACL_REVISION2 || revision == ACL_REVISION4; }

// Where the entry `index` begins; the place behind the last one for index == AceCount. Null if an entry
// before it doesn't lie within the list.
BYTE* EntryAt(ACL* list, DWORD index) {
  BYTE* const start = reinterpret_cast<BYTE*>(list);
  BYTE* entry = start + sizeof(ACL);
  BYTE* const end = start + list->AclSize;
  for (DWORD i = 0; i < index; ++i) {
    if (entry + sizeof(ACE_HEADER) > end) return nullptr;
    const WORD size = reinterpret_cast<ACE_HEADER*>(entry)->AceSize;
    if (size < sizeof(ACE_HEADER) || entry + size > end) return nullptr;
    entry += size;
  }
  return entry;
}

}  // namespace

BOOL WINAPI InitializeAcl(ACL* list, DWORD size, DWORD revision) {
  if (!list || size < sizeof(ACL) || size > MAXWORD || !IsRevision(revision))
    return Fail(ERROR_INVALID_PARAMETER);
  *list = {static_cast<BYTE>(revision), 0, static_cast<WORD>(size & ~3u), 0, 0};
  return TRUE;
}

BOOL WINAPI IsValidAcl(ACL* list) {
  return list && IsRevision(list->AclRevision) && list->AclSize >= sizeof(ACL) &&
         EntryAt(list, list->AceCount);
}

BOOL WINAPI GetAce(ACL* list, DWORD index, void** result) {
  if (!list || !result || index >= list->AceCount) return Fail(ERROR_INVALID_PARAMETER);
  BYTE* const entry = EntryAt(list, index);
  if (!entry || !EntryAt(list, index + 1)) return Fail(ERROR_INVALID_PARAMETER);
  *result = entry;
  return TRUE;
}

BOOL WINAPI AddAce(ACL* list, DWORD revision, DWORD index, void* entries, DWORD size) {
  if (!IsValidAcl(list) || !IsRevision(revision) || !entries) return Fail(ERROR_INVALID_PARAMETER);
  DWORD count = 0;
  for (DWORD at = 0; at < size; ++count) {
    const auto* header = reinterpret_cast<const ACE_HEADER*>(static_cast<const BYTE*>(entries) + at);
    if (size - at < sizeof(ACE_HEADER) || header->AceSize < sizeof(ACE_HEADER) ||
        header->AceSize > size - at) {
      return Fail(ERROR_INVALID_PARAMETER);
    }
    at += header->AceSize;
  }
  BYTE* const end = EntryAt(list, list->AceCount);
  BYTE* const place = index >= list->AceCount ? end : EntryAt(list, index);
  if (end + size > reinterpret_cast<BYTE*>(list) + list->AclSize) return Fail(ERROR_ALLOTTED_SPACE_EXCEEDED);
  memmove(place + size, place, static_cast<size_t>(end - place));
  memcpy(place, entries, size);
  list->AceCount = static_cast<WORD>(list->AceCount + count);
  if (revision > list->AclRevision) list->AclRevision = static_cast<BYTE>(revision);
  return TRUE;
}

BOOL WINAPI DeleteAce(ACL* list, DWORD index) {
  if (!IsValidAcl(list) || index >= list->AceCount) return Fail(ERROR_INVALID_PARAMETER);
  BYTE* const entry = EntryAt(list, index);
  BYTE* const next = EntryAt(list, index + 1);
  memmove(entry, next, static_cast<size_t>(EntryAt(list, list->AceCount) - next));
  --list->AceCount;
  return TRUE;
}

BOOL WINAPI AddAccessAllowedAceEx(ACL* list, DWORD revision, DWORD flags, DWORD mask, PSID sid) {
  if (!IsValidSid(sid)) return Fail(ERROR_INVALID_SID);
  alignas(DWORD) BYTE entry[sizeof(ACCESS_ALLOWED_ACE) + SECURITY_MAX_SID_SIZE] = {};
  const DWORD size = 8 + GetLengthSid(sid);
  auto* allowed = reinterpret_cast<ACCESS_ALLOWED_ACE*>(entry);
  allowed->Header = {ACCESS_ALLOWED_ACE_TYPE, static_cast<BYTE>(flags), static_cast<WORD>(size)};
  allowed->Mask = mask;
  memcpy(&allowed->SidStart, sid, GetLengthSid(sid));
  return AddAce(list, revision, MAXDWORD, entry, size);
}

BOOL WINAPI AddAccessAllowedAce(ACL* list, DWORD revision, DWORD mask, PSID sid) {
  return AddAccessAllowedAceEx(list, revision, 0, mask, sid);
}

BOOL WINAPI AddAccessDeniedAceEx(ACL* list, DWORD revision, DWORD flags, DWORD mask, PSID sid) {
  if (!IsValidAcl(list)) return Fail(ERROR_INVALID_ACL);
  const DWORD index = list->AceCount;
  if (!AddAccessAllowedAceEx(list, revision, flags, mask, sid)) return FALSE;
  reinterpret_cast<ACE_HEADER*>(EntryAt(list, index))->AceType = ACCESS_DENIED_ACE_TYPE;
  return TRUE;
}

BOOL WINAPI GetAclInformation(ACL* list, void* result, DWORD size, ACL_INFORMATION_CLASS kind) {
  if (!IsValidAcl(list)) return Fail(ERROR_INVALID_ACL);
  if (kind == AclRevisionInformation) {
    if (size < sizeof(ACL_REVISION_INFORMATION)) return Fail(ERROR_INSUFFICIENT_BUFFER);
    static_cast<ACL_REVISION_INFORMATION*>(result)->AclRevision = list->AclRevision;
    return TRUE;
  }
  if (kind != AclSizeInformation) return Fail(ERROR_INVALID_PARAMETER);
  if (size < sizeof(ACL_SIZE_INFORMATION)) return Fail(ERROR_INSUFFICIENT_BUFFER);
  const auto used = static_cast<DWORD>(EntryAt(list, list->AceCount) - reinterpret_cast<BYTE*>(list));
  *static_cast<ACL_SIZE_INFORMATION*>(result) = {list->AceCount, used, list->AclSize - used};
  return TRUE;
}
