// registry_hives.cc
//
// Hives as a whole: loaded, unloaded, written.
#include "machine/call.h"
#include "machine/names.h"
#include "machine/registry_key.h"
#include "machine/token.h"

using namespace machine;

namespace {

DWORD CheckLoad(HKEY root, const wchar_t* name, HiveRoot& where) {
  if (root != HKEY_LOCAL_MACHINE && root != HKEY_USERS) return ERROR_INVALID_PARAMETER;
  where = root == HKEY_USERS ? HiveRoot::kUsers : HiveRoot::kLocalMachine;
  const std::string text = ToUtf8(name);
  if (text.empty() || text.find('\\') != std::string::npos) return ERROR_INVALID_PARAMETER;
  const bool mayLoad = HasPrivilege(kRestorePrivilege) && HasPrivilege(kBackupPrivilege);
  return mayLoad ? ERROR_SUCCESS : ERROR_PRIVILEGE_NOT_HELD;
}

}  // namespace

LSTATUS WINAPI RegLoadKeyW(HKEY root, const wchar_t* name, const wchar_t* file) {
  EnterCall();
  HiveRoot where;
  if (const DWORD error = CheckLoad(root, name, where)) return static_cast<LSTATUS>(error);
  if (!file || !*file) return ERROR_INVALID_PARAMETER;
  const std::lock_guard hold(RegistryLock());
  return static_cast<LSTATUS>(LoadHive(where, ToUtf8(name), file));
}

LSTATUS WINAPI RegUnLoadKeyW(HKEY root, const wchar_t* name) {
  EnterCall();
  HiveRoot where;
  if (const DWORD error = CheckLoad(root, name, where)) return static_cast<LSTATUS>(error);
  const std::lock_guard hold(RegistryLock());
  return static_cast<LSTATUS>(UnloadHive(where, ToUtf8(name)));
}

LSTATUS WINAPI RegFlushKey(HKEY handle) {
  EnterCall();
  const std::lock_guard hold(RegistryLock());
  std::shared_ptr<RegistryKey> key;
  if (const DWORD error = UseKey(handle, KEY_QUERY_VALUE, key)) return static_cast<LSTATUS>(error);
  return key->hive ? static_cast<LSTATUS>(FlushHive(*key->hive)) : ERROR_SUCCESS;
}
