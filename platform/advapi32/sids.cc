// sids.cc
//
// Security identifiers in memory.
#include <windows.h>

#include <sddl.h>

#include <cstring>

#include "machine/call.h"
#include "machine/names.h"
#include "machine/sid_text.h"

using namespace machine;

namespace {

constexpr DWORD kLongestSid = SECURITY_MAX_SID_SIZE;

SID* AsSid(PSID sid) { return static_cast<SID*>(sid); }

struct WellKnownSid {
  WELL_KNOWN_SID_TYPE type;
  const char* text;
};
constexpr WellKnownSid kWellKnownSids[] = {
    {WinNullSid, "S-1-0-0"},
    {WinWorldSid, kEveryoneSid},
    {WinCreatorOwnerSid, "S-1-3-0"},
    {WinInteractiveSid, "S-1-5-4"},
    {WinAuthenticatedUserSid, "S-1-5-11"},
    {WinLocalSystemSid, kSystemSid},
    {WinLocalServiceSid, "S-1-5-19"},
    {WinNetworkServiceSid, "S-1-5-20"},
    {WinBuiltinDomainSid, "S-1-5-32"},
    {WinBuiltinAdministratorsSid, kAdministratorsSid},
    {WinBuiltinUsersSid, kUsersSid},
    {WinBuiltinGuestsSid, kGuestsSid},
};

void* LocalCopy(const void* bytes, size_t size) {
  void* memory = LocalAlloc(LMEM_FIXED, size);
  if (memory) memcpy(memory, bytes, size);
  return memory;
}

}  // namespace

BOOL WINAPI IsValidSid(PSID sid) { return SidLength(sid, kLongestSid) != 0; }

DWORD WINAPI GetLengthSid(PSID sid) { return GetSidLengthRequired(AsSid(sid)->SubAuthorityCount); }

DWORD WINAPI GetSidLengthRequired(BYTE count) { return 8 + 4 * static_cast<DWORD>(count); }

BOOL WINAPI EqualSid(PSID a, PSID b) {
  if (!IsValidSid(a) || !IsValidSid(b)) return Fail(ERROR_INVALID_SID);
  const bool isSame = GetLengthSid(a) == GetLengthSid(b) && memcmp(a, b, GetLengthSid(a)) == 0;
  if (!isSame) SetLastError(ERROR_SUCCESS);
  return isSame;
}

BOOL WINAPI CopySid(DWORD room, PSID target, PSID source) {
  if (!IsValidSid(source)) return Fail(ERROR_INVALID_SID);
  if (room < GetLengthSid(source)) return Fail(ERROR_INSUFFICIENT_BUFFER);
  memmove(target, source, GetLengthSid(source));
  return TRUE;
}

BOOL WINAPI InitializeSid(PSID sid, SID_IDENTIFIER_AUTHORITY* authority, BYTE count) {
  if (count > SID_MAX_SUB_AUTHORITIES) return Fail(ERROR_INVALID_PARAMETER);
  memset(sid, 0, GetSidLengthRequired(count));
  AsSid(sid)->Revision = SID_REVISION;
  AsSid(sid)->SubAuthorityCount = count;
  AsSid(sid)->IdentifierAuthority = *authority;
  return TRUE;
}

DWORD* WINAPI GetSidSubAuthority(PSID sid, DWORD index) { return &AsSid(sid)->SubAuthority[index]; }

UCHAR* WINAPI GetSidSubAuthorityCount(PSID sid) { return &AsSid(sid)->SubAuthorityCount; }

BOOL WINAPI AllocateAndInitializeSid(SID_IDENTIFIER_AUTHORITY* authority, BYTE count, DWORD a0, DWORD a1,
                                     DWORD a2, DWORD a3, DWORD a4, DWORD a5, DWORD a6, DWORD a7,
                                     PSID* result) {
  if (!authority || !result || count > 8) return Fail(ERROR_INVALID_PARAMETER);
  const DWORD parts[] = {a0, a1, a2, a3, a4, a5, a6, a7};
  *result = LocalAlloc(LMEM_FIXED, GetSidLengthRequired(count));
  if (!*result) return FALSE;
  InitializeSid(*result, authority, count);
  memcpy(AsSid(*result)->SubAuthority, parts, 4u * count);
  return TRUE;
}

void* WINAPI FreeSid(PSID sid) {
  LocalFree(sid);
  return nullptr;
}

BOOL WINAPI CreateWellKnownSid(WELL_KNOWN_SID_TYPE type, PSID domain, PSID result, DWORD* size) {
  EnterCall();
  if (!size) return Fail(ERROR_INVALID_PARAMETER);
  if (domain) Unsupported("CreateWellKnownSid", "SIDs of a domain");
  for (const WellKnownSid& known : kWellKnownSids) {
    if (known.type != type) continue;
    const std::string bytes = SidBytes(known.text);
    const DWORD room = *size;
    *size = static_cast<DWORD>(bytes.size());
    if (!result || room < bytes.size()) return Fail(ERROR_INSUFFICIENT_BUFFER);
    memcpy(result, bytes.data(), bytes.size());
    return TRUE;
  }
  Unsupported("CreateWellKnownSid", "this kind");
}

BOOL WINAPI ConvertSidToStringSidW(PSID sid, wchar_t** result) {
  EnterCall();
  if (!IsValidSid(sid)) return Fail(ERROR_INVALID_SID);
  if (!result) return Fail(ERROR_INVALID_PARAMETER);
  const std::u16string text = ToUtf16(SidText(sid));
  *result = static_cast<wchar_t*>(LocalCopy(text.c_str(), (text.size() + 1) * sizeof(wchar_t)));
  return *result ? TRUE : FALSE;
}

BOOL WINAPI ConvertStringSidToSidW(const wchar_t* text, PSID* result) {
  EnterCall();
  if (!text || !result) return Fail(ERROR_INVALID_PARAMETER);
  const std::string bytes = SidBytes(ToUtf8(text));
  if (bytes.empty()) return Fail(ERROR_INVALID_SID);
  *result = LocalCopy(bytes.data(), bytes.size());
  return *result ? TRUE : FALSE;
}
