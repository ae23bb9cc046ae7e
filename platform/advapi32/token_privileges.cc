// token_privileges.cc
//
// Privileges by name, and switching them on and off.
#include "machine/call.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/token.h"

using namespace machine;

namespace {

struct PrivilegeName {
  uint32_t id;
  const char* name;
};
constexpr PrivilegeName kPrivilegeNames[] = {
    {2, "SeCreateTokenPrivilege"},
    {3, "SeAssignPrimaryTokenPrivilege"},
    {4, "SeLockMemoryPrivilege"},
    {5, "SeIncreaseQuotaPrivilege"},
    {6, "SeMachineAccountPrivilege"},
    {7, "SeTcbPrivilege"},
    {8, "SeSecurityPrivilege"},
    {9, "SeTakeOwnershipPrivilege"},
    {10, "SeLoadDriverPrivilege"},
    {11, "SeSystemProfilePrivilege"},
    {12, "SeSystemtimePrivilege"},
    {13, "SeProfileSingleProcessPrivilege"},
    {14, "SeIncreaseBasePriorityPrivilege"},
    {15, "SeCreatePagefilePrivilege"},
    {16, "SeCreatePermanentPrivilege"},
    {17, "SeBackupPrivilege"},
    {18, "SeRestorePrivilege"},
    {19, "SeShutdownPrivilege"},
    {20, "SeDebugPrivilege"},
    {21, "SeAuditPrivilege"},
    {22, "SeSystemEnvironmentPrivilege"},
    {23, "SeChangeNotifyPrivilege"},
    {24, "SeRemoteShutdownPrivilege"},
    {25, "SeUndockPrivilege"},
    {28, "SeManageVolumePrivilege"},
    {29, "SeImpersonatePrivilege"},
    {30, "SeCreateGlobalPrivilege"},
    {33, "SeIncreaseWorkingSetPrivilege"},
    {34, "SeTimeZonePrivilege"},
    {35, "SeCreateSymbolicLinkPrivilege"},
};
constexpr uint32_t kFirstOfVista = 31;  // these came with Windows Vista

constexpr DWORD kOn = SE_PRIVILEGE_ENABLED;

// The attributes that a privilege of `held` is to have: null where the call leaves it alone.
const LUID_AND_ATTRIBUTES* Wanted(const TOKEN_PRIVILEGES* state, uint32_t id) {
  for (DWORD i = 0; i < state->PrivilegeCount; ++i) {
    const LUID& luid = state->Privileges[i].Luid;
    if (luid.LowPart == id && luid.HighPart == 0) return &state->Privileges[i];
  }
  return nullptr;
}

bool HoldsAll(const TOKEN_PRIVILEGES* state, const std::vector<TokenPrivilege>& held) {
  for (DWORD i = 0; i < state->PrivilegeCount; ++i) {
    bool found = false;
    for (const TokenPrivilege& one : held) found = found || one.id == state->Privileges[i].Luid.LowPart;
    if (!found) return false;
  }
  return true;
}

}  // namespace

BOOL WINAPI LookupPrivilegeValueW(const wchar_t* system, const wchar_t* name, LUID* luid) {
  EnterCall();
  if (system && *system) Unsupported("LookupPrivilegeValueW", "another computer");
  const std::string folded = FoldUtf8(ToUtf8(name));
  for (const PrivilegeName& known : kPrivilegeNames) {
    if (FoldUtf8(known.name) != folded) continue;
    if (known.id >= kFirstOfVista && ThisMachine().settings.major < 6) break;
    *luid = {known.id, 0};
    return TRUE;
  }
  return Fail(ERROR_NO_SUCH_PRIVILEGE);
}

BOOL WINAPI AdjustTokenPrivileges(HANDLE handle, BOOL disableAll, TOKEN_PRIVILEGES* state, DWORD room,
                                  TOKEN_PRIVILEGES* previous, DWORD* size) {
  EnterCall();
  const auto token = HandleTo<Token>(handle);
  if (!token) return FALSE;
  if (!disableAll && !state) return Fail(ERROR_INVALID_PARAMETER);
  std::vector<TokenPrivilege> held = token->Privileges(), changed, kept;
  for (TokenPrivilege& one : held) {
    const TokenPrivilege before = one;
    const LUID_AND_ATTRIBUTES* wanted = disableAll ? nullptr : Wanted(state, one.id);
    if (!disableAll && !wanted) {
      kept.push_back(one);
      continue;
    }
    const DWORD attributes = wanted ? wanted->Attributes : 0;
    one.attributes = (one.attributes & ~kOn) | (attributes & kOn);
    if (one.attributes != before.attributes) changed.push_back(before);
    if (!(attributes & SE_PRIVILEGE_REMOVED)) kept.push_back(one);
  }
  if (previous) {
    const size_t needed =
        offsetof(TOKEN_PRIVILEGES, Privileges) + changed.size() * sizeof(LUID_AND_ATTRIBUTES);
    if (size) *size = static_cast<DWORD>(needed);
    if (room < needed) return Fail(ERROR_INSUFFICIENT_BUFFER);
    previous->PrivilegeCount = static_cast<DWORD>(changed.size());
    for (size_t i = 0; i < changed.size(); ++i) {
      previous->Privileges[i] = {{changed[i].id, 0}, changed[i].attributes};
    }
  }
  const bool all = disableAll || HoldsAll(state, held);
  token->SetPrivileges(std::move(kept));
  SetLastError(all ? ERROR_SUCCESS : ERROR_NOT_ALL_ASSIGNED);
  return TRUE;
}

BOOL WINAPI PrivilegeCheck(HANDLE handle, PRIVILEGE_SET* wanted, BOOL* result) {
  EnterCall();
  const auto token = HandleTo<Token>(handle);
  if (!token) return FALSE;
  if (!wanted || !result) return Fail(ERROR_INVALID_PARAMETER);
  DWORD enabled = 0;
  for (DWORD i = 0; i < wanted->PrivilegeCount; ++i) {
    LUID_AND_ATTRIBUTES& one = wanted->Privilege[i];
    if (one.Luid.HighPart != 0 || !token->IsEnabled(one.Luid.LowPart)) continue;
    one.Attributes |= SE_PRIVILEGE_USED_FOR_ACCESS;
    ++enabled;
  }
  const bool needsAll = (wanted->Control & PRIVILEGE_SET_ALL_NECESSARY) != 0;
  *result = needsAll ? enabled == wanted->PrivilegeCount : enabled > 0;
  return TRUE;
}
