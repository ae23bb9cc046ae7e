// tokens.cc
//
// Tokens: opened, asked, copied, taken on by a thread.
#include <cstring>

#include "machine/call.h"
#include "machine/current_token.h"
#include "machine/process_table.h"
#include "machine/token.h"

using namespace machine;

namespace {

// Puts a structure of `size` bytes with SIDs behind it into the caller's buffer, if it has the room.
bool HasRoom(DWORD needed, DWORD room, DWORD* result) {
  if (result) *result = needed;
  return room >= needed || Fail(ERROR_INSUFFICIENT_BUFFER);
}

DWORD Length(const std::string& bytes) { return static_cast<DWORD>(bytes.size()); }

BOOL PutUser(const Token& token, void* buffer, DWORD room, DWORD* size) {
  if (!HasRoom(static_cast<DWORD>(sizeof(TOKEN_USER)) + Length(token.user), room, size)) return FALSE;
  auto* const user = static_cast<TOKEN_USER*>(buffer);
  user->User.Attributes = 0;
  user->User.Sid = user + 1;
  memcpy(user->User.Sid, token.user.data(), token.user.size());
  return TRUE;
}

BOOL PutGroups(const Token& token, void* buffer, DWORD room, DWORD* size) {
  const size_t head = offsetof(TOKEN_GROUPS, Groups) + token.groups.size() * sizeof(SID_AND_ATTRIBUTES);
  size_t needed = head;
  for (const TokenGroup& group : token.groups) needed += group.sid.size();
  if (!HasRoom(static_cast<DWORD>(needed), room, size)) return FALSE;
  auto* const groups = static_cast<TOKEN_GROUPS*>(buffer);
  groups->GroupCount = static_cast<DWORD>(token.groups.size());
  char* place = static_cast<char*>(buffer) + head;
  for (size_t i = 0; i < token.groups.size(); ++i) {
    memcpy(place, token.groups[i].sid.data(), token.groups[i].sid.size());
    groups->Groups[i] = {place, token.groups[i].attributes};
    place += token.groups[i].sid.size();
  }
  return TRUE;
}

BOOL PutPrivileges(const Token& token, void* buffer, DWORD room, DWORD* size) {
  const std::vector<TokenPrivilege> held = token.Privileges();
  const size_t needed = offsetof(TOKEN_PRIVILEGES, Privileges) + held.size() * sizeof(LUID_AND_ATTRIBUTES);
  if (!HasRoom(static_cast<DWORD>(needed), room, size)) return FALSE;
  auto* const list = static_cast<TOKEN_PRIVILEGES*>(buffer);
  list->PrivilegeCount = static_cast<DWORD>(held.size());
  for (size_t i = 0; i < held.size(); ++i) list->Privileges[i] = {{held[i].id, 0}, held[i].attributes};
  return TRUE;
}

BOOL PutElevation(const Token& token, void* buffer, DWORD room, DWORD* size) {
  if (!HasRoom(sizeof(TOKEN_ELEVATION), room, size)) return FALSE;
  static_cast<TOKEN_ELEVATION*>(buffer)->TokenIsElevated = token.IsAdministrator();
  return TRUE;
}

}  // namespace

BOOL WINAPI OpenProcessToken(HANDLE handle, DWORD, HANDLE* result) {
  EnterCall();
  const auto process = ProcessOf(handle);
  if (!process) return FALSE;
  const auto token = TokenOfProcess(process);
  if (!token) return FALSE;
  *result = AddHandle(token);
  return TRUE;
}

BOOL WINAPI GetTokenInformation(HANDLE handle, TOKEN_INFORMATION_CLASS kind, void* buffer, DWORD room,
                                DWORD* size) {
  EnterCall();
  const auto token = HandleTo<Token>(handle);
  if (!token) return FALSE;
  if (kind == TokenUser) return PutUser(*token, buffer, room, size);
  if (kind == TokenGroups) return PutGroups(*token, buffer, room, size);
  if (kind == TokenPrivileges) return PutPrivileges(*token, buffer, room, size);
  if (kind == TokenElevation) return PutElevation(*token, buffer, room, size);
  Unsupported("GetTokenInformation", "this class");
}

BOOL WINAPI DuplicateToken(HANDLE handle, SECURITY_IMPERSONATION_LEVEL level, HANDLE* result) {
  EnterCall();
  const auto token = HandleTo<Token>(handle);
  if (!token) return FALSE;
  if (level != SecurityImpersonation) Unsupported("DuplicateToken", "another level than impersonation");
  const auto copy = token->Duplicate();
  copy->isImpersonation = true;
  *result = AddHandle(copy);
  return TRUE;
}

BOOL WINAPI ImpersonateLoggedOnUser(HANDLE handle) {
  EnterCall();
  const auto token = HandleTo<Token>(handle);
  if (!token) return FALSE;
  // Without the privilege a thread may take on its own user only.
  const auto process = ProcessToken();
  if (token->user != process->user && !process->IsEnabled(kImpersonatePrivilege)) {
    return Fail(ERROR_BAD_IMPERSONATION_LEVEL);
  }
  Impersonate(token);
  return TRUE;
}

BOOL WINAPI RevertToSelf() {
  EnterCall();
  Impersonate(nullptr);
  return TRUE;
}
