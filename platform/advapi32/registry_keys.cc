// registry_keys.cc
//
// Keys of the registry: opened, made, closed, deleted. The hives behind them: machine/hive_store.h.
#include "machine/call.h"
#include "machine/names.h"
#include "machine/registry_key.h"

using namespace machine;

LSTATUS WINAPI RegOpenKeyExW(HKEY key, const wchar_t* path, DWORD options, REGSAM access, HKEY* result) {
  EnterCall();
  // No key is a link here, so that opening one as such changes nothing.
  if (!result || (options & ~DWORD{REG_OPTION_OPEN_LINK}) != 0) return ERROR_INVALID_PARAMETER;
  *result = nullptr;
  const std::lock_guard hold(RegistryLock());
  RegistryKey found;
  std::vector<std::string> rest;
  if (const DWORD error = WalkRegistry(key, path, access, found, rest)) return static_cast<LSTATUS>(error);
  if (!rest.empty()) return ERROR_FILE_NOT_FOUND;
  if (const DWORD error = GrantAccess(found, access)) return static_cast<LSTATUS>(error);
  *result = AddKeyHandle(found, access);
  return ERROR_SUCCESS;
}

LSTATUS WINAPI RegCreateKeyExW(HKEY key, const wchar_t* path, DWORD reserved, wchar_t* className,
                               DWORD options, REGSAM access, SECURITY_ATTRIBUTES* security, HKEY* result,
                               DWORD* disposition) {
  EnterCall();
  if (className && *className) Unsupported("RegCreateKeyExW", "a class");
  if (options != REG_OPTION_NON_VOLATILE) Unsupported("RegCreateKeyExW", "options");
  if (security && security->lpSecurityDescriptor) Unsupported("RegCreateKeyExW", "a security descriptor");
  if (!result || !path || reserved != 0) return ERROR_INVALID_PARAMETER;
  *result = nullptr;
  const std::lock_guard hold(RegistryLock());
  RegistryKey found;
  std::vector<std::string> rest;
  DWORD error = WalkRegistry(key, path, access, found, rest);
  // Nothing can be made directly below a root: only hives hang there.
  if (error == ERROR_FILE_NOT_FOUND && !found.hive) error = ERROR_ACCESS_DENIED;
  if (error != ERROR_SUCCESS) return static_cast<LSTATUS>(error);
  REGSAM granted = access;
  if ((error = GrantAccess(found, granted)) != ERROR_SUCCESS) return static_cast<LSTATUS>(error);
  REGSAM toMake = KEY_CREATE_SUB_KEY;
  if (!rest.empty() && (error = GrantAccess(found, toMake)) != ERROR_SUCCESS)
    return static_cast<LSTATUS>(error);
  if (disposition) *disposition = rest.empty() ? REG_OPENED_EXISTING_KEY : REG_CREATED_NEW_KEY;
  for (const std::string& name : rest) {
    Hive::Key child = 0;
    if ((error = found.hive->AddChild(found.key, name, child)) != ERROR_SUCCESS)
      return static_cast<LSTATUS>(error);
    found.key = child;
  }
  *result = AddKeyHandle(found, granted);
  return ERROR_SUCCESS;
}

LSTATUS WINAPI RegCloseKey(HKEY key) {
  EnterCall();
  if (key == HKEY_CLASSES_ROOT || key == HKEY_CURRENT_USER || key == HKEY_LOCAL_MACHINE ||
      key == HKEY_USERS || key == HKEY_CURRENT_CONFIG) {
    return ERROR_SUCCESS;
  }
  const std::lock_guard hold(RegistryLock());  // the last handle of a hive lets RegUnLoadKeyW through
  if (!std::dynamic_pointer_cast<RegistryKey>(FindHandle(key))) return ERROR_INVALID_HANDLE;
  return RemoveHandle(key) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

LSTATUS WINAPI RegDeleteKeyExW(HKEY key, const wchar_t* path, REGSAM view, DWORD reserved) {
  EnterCall();
  if (!path || reserved != 0) return ERROR_INVALID_PARAMETER;
  const std::lock_guard hold(RegistryLock());
  RegistryKey found;
  std::vector<std::string> rest;
  if (const DWORD error = WalkRegistry(key, path, view & kViewFlags, found, rest)) {
    return static_cast<LSTATUS>(error);
  }
  if (!rest.empty()) return ERROR_FILE_NOT_FOUND;
  REGSAM access = DELETE;
  if (const DWORD error = GrantAccess(found, access)) return static_cast<LSTATUS>(error);
  // The root of a hive stays, and so does a key with keys below it.
  if (!found.hive || found.key == found.hive->Root()) return ERROR_ACCESS_DENIED;
  std::vector<Hive::Key> children;
  if (const DWORD error = found.hive->Children(found.key, children)) return static_cast<LSTATUS>(error);
  if (!children.empty()) return ERROR_ACCESS_DENIED;
  return static_cast<LSTATUS>(found.hive->DeleteChild(found.key));
}

LSTATUS WINAPI RegDeleteKeyW(HKEY key, const wchar_t* path) { return RegDeleteKeyExW(key, path, 0, 0); }
