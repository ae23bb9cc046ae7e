#include "foundation/privileges.h"

#include <memory>

#include "foundation/unique_handle.h"

namespace {

const wchar_t* const kPrivileges[] = {
    L"SeRestorePrivilege",       L"SeBackupPrivilege",
    L"SeDebugPrivilege",         L"SeSecurityPrivilege",
    L"SeTakeOwnershipPrivilege", L"SeImpersonatePrivilege",
    L"SeSystemProfilePrivilege", L"SeShutdownPrivilege",
    L"SeIncreaseQuotaPrivilege", L"SeCreateSymbolicLinkPrivilege",
    L"SeManageVolumePrivilege",
};
constexpr size_t kPrivilegeCount = sizeof(kPrivileges) / sizeof(kPrivileges[0]);

constexpr DWORD kStateSize = sizeof(TOKEN_PRIVILEGES) + kPrivilegeCount * sizeof(LUID_AND_ATTRIBUTES);

}  // namespace

uint8_t* EnableProcessPrivileges() {
  UniqueHandle token;
  constexpr DWORD kAllAccess = 0xf01ff;  // TOKEN_ALL_ACCESS with the session's right, also in old headers
  if (!OpenProcessToken(GetCurrentProcess(), kAllAccess, token.Receive())) return nullptr;

  alignas(TOKEN_PRIVILEGES) uint8_t wantedState[kStateSize] = {};
  const auto wanted = reinterpret_cast<TOKEN_PRIVILEGES*>(wantedState);
  for (const wchar_t* name : kPrivileges) {
    LUID_AND_ATTRIBUTES& entry = wanted->Privileges[wanted->PrivilegeCount];
    // Older systems don't know all of them.
    if (!LookupPrivilegeValueW(nullptr, name, &entry.Luid)) continue;
    entry.Attributes = SE_PRIVILEGE_ENABLED;
    ++wanted->PrivilegeCount;
  }

  auto previous = std::make_unique<uint8_t[]>(kStateSize);
  DWORD previousSize = 0;
  const BOOL adjusted =
      AdjustTokenPrivileges(token.Get(), FALSE, wanted, kStateSize,
                            reinterpret_cast<TOKEN_PRIVILEGES*>(previous.get()), &previousSize);
  const DWORD error = GetLastError();
  token.Reset();
  SetLastError(error);
  return adjusted ? previous.release() : nullptr;
}
