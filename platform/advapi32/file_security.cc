// file_security.cc
//
// Owners and access lists of what a file handle stands for.
#include <cerrno>
#include <cstring>

#include "machine/call.h"
#include "machine/open_files.h"
#include "machine/path_resolution.h"
#include "machine/security_store.h"
#include "machine/token.h"

using namespace machine;

namespace {

// The SDK's headers don't name these.
constexpr SECURITY_INFORMATION kSetProtected = 0x80000000, kSetUnprotected = 0x20000000;

// S-1-5-32-544, the administrators.
constexpr uint8_t kAdministrators[] = {1, 2, 0, 0, 0, 0, 0, 5, 32, 0, 0, 0, 0x20, 2, 0, 0};

std::shared_ptr<File> AskedFile(HANDLE handle, uint32_t right, const char* call, Effect effect) {
  std::shared_ptr<File> file = FileOf(handle);
  if (!file || HasFault(call, effect, file->Path())) return nullptr;
  if (file->access & right) return file;
  SetLastError(ERROR_ACCESS_DENIED);
  return nullptr;
}

// Who may be made the owner: oneself, the administrators by one of them, anybody with SE_RESTORE.
bool MayBeOwner(PSID owner) {
  std::shared_ptr<Token> token = ThreadToken();
  bool isAllowed = HasPrivilege(kRestorePrivilege) || EqualSid(owner, token->user.data()) ||
                   (token->IsAdministrator() && EqualSid(owner, const_cast<uint8_t*>(kAdministrators)));
  return isAllowed || Fail(ERROR_INVALID_OWNER);
}

}  // namespace

BOOL WINAPI GetKernelObjectSecurity(HANDLE handle, SECURITY_INFORMATION wanted, PSECURITY_DESCRIPTOR result,
                                    DWORD size, LPDWORD needed) {
  EnterCall();
  if (wanted & SACL_SECURITY_INFORMATION) Unsupported("GetKernelObjectSecurity", "audit lists");
  std::shared_ptr<File> file = AskedFile(handle, READ_CONTROL, "GetKernelObjectSecurity", Effect::kReads);
  SecurityBytes stored;
  if (!file) return FALSE;
  if (!ReadSecurity(file->Get(), "", stored, file->facts.IsLink())) return Fail(ErrorFromErrno(errno));
  SecurityParts parts = PartsOf(stored);
  // What has no descriptor belongs to the administrators and lets everybody in.
  if (!parts.owner) parts.owner = const_cast<uint8_t*>(kAdministrators);
  if (!parts.group) parts.group = parts.owner;
  parts.hasList = wanted & DACL_SECURITY_INFORMATION;
  if (!parts.hasList) parts.list = nullptr;
  if (!(wanted & OWNER_SECURITY_INFORMATION)) parts.owner = nullptr;
  if (!(wanted & GROUP_SECURITY_INFORMATION)) parts.group = nullptr;
  SecurityBytes bytes = MakeSecurity(parts);
  *needed = static_cast<DWORD>(bytes.size());
  if (size < bytes.size()) return Fail(ERROR_INSUFFICIENT_BUFFER);
  std::memcpy(result, bytes.data(), bytes.size());
  return TRUE;
}

BOOL WINAPI SetKernelObjectSecurity(HANDLE handle, SECURITY_INFORMATION given,
                                    PSECURITY_DESCRIPTOR descriptor) {
  EnterCall();
  if (given & SACL_SECURITY_INFORMATION) Unsupported("SetKernelObjectSecurity", "audit lists");
  bool setsOwner = given & (OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION);
  bool setsList = given & DACL_SECURITY_INFORMATION;
  uint32_t rights = (setsOwner ? WRITE_OWNER : 0) | (setsList ? WRITE_DAC : 0);
  std::shared_ptr<File> file = AskedFile(handle, rights, "SetKernelObjectSecurity", Effect::kChanges);
  if (!file || !IsWritable(file->Path())) return FALSE;
  if ((file->access & rights) != rights) return Fail(ERROR_ACCESS_DENIED);
  bool isLink = file->facts.IsLink();
  SecurityBytes stored;
  if (!ReadSecurity(file->Get(), "", stored, isLink)) return Fail(ErrorFromErrno(errno));
  SecurityParts parts = PartsOf(stored);
  BOOL isPresent = FALSE, isDefault = FALSE;
  if (given & OWNER_SECURITY_INFORMATION) {
    if (!GetSecurityDescriptorOwner(descriptor, &parts.owner, &isDefault)) return FALSE;
    if (!parts.owner || !MayBeOwner(parts.owner)) return Fail(ERROR_INVALID_OWNER);
  }
  if ((given & GROUP_SECURITY_INFORMATION) &&
      !GetSecurityDescriptorGroup(descriptor, &parts.group, &isDefault)) {
    return FALSE;
  }
  if (setsList) {
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    parts.list = nullptr;
    if (!GetSecurityDescriptorDacl(descriptor, &isPresent, &parts.list, &isDefault) ||
        !GetSecurityDescriptorControl(descriptor, &control, &revision)) {
      return FALSE;
    }
    parts.hasList = true;
    bool isProtected = control & SE_DACL_PROTECTED;
    parts.isProtected = (given & kSetProtected) || (isProtected && !(given & kSetUnprotected));
  }
  if (!WriteSecurity(file->Get(), "", MakeSecurity(parts), isLink)) return Fail(ErrorFromErrno(errno));
  ForgetPinnedSecurity({file->facts.device, file->facts.inode});
  return TRUE;
}
