// registry_values.cc
//
// Values of a key: read, set, deleted.
#include <cstring>

#include "machine/call.h"
#include "machine/names.h"
#include "machine/registry_key.h"

using namespace machine;

LSTATUS WINAPI RegQueryValueExW(HKEY handle, const wchar_t* name, DWORD* reserved, DWORD* type, BYTE* data,
                                DWORD* size) {
  EnterCall();
  if (reserved || (data && !size)) return ERROR_INVALID_PARAMETER;
  const std::lock_guard hold(RegistryLock());
  std::shared_ptr<RegistryKey> key;
  if (const DWORD error = UseKey(handle, KEY_QUERY_VALUE, key)) return static_cast<LSTATUS>(error);
  if (!key->hive) return ERROR_FILE_NOT_FOUND;
  HiveValue value;
  if (const DWORD error = key->hive->ReadValue(key->key, ToUtf8(name), value))
    return static_cast<LSTATUS>(error);
  if (type) *type = value.type;
  if (!size) return ERROR_SUCCESS;
  const DWORD room = *size;
  *size = static_cast<DWORD>(value.data.size());
  if (!data) return ERROR_SUCCESS;
  if (room < value.data.size()) return ERROR_MORE_DATA;
  memcpy(data, value.data.data(), value.data.size());
  return ERROR_SUCCESS;
}

LSTATUS WINAPI RegSetValueExW(HKEY handle, const wchar_t* name, DWORD reserved, DWORD type, const BYTE* data,
                              DWORD size) {
  EnterCall();
  if (reserved != 0 || (!data && size != 0)) return ERROR_INVALID_PARAMETER;
  const std::lock_guard hold(RegistryLock());
  std::shared_ptr<RegistryKey> key;
  if (const DWORD error = UseKey(handle, KEY_SET_VALUE, key)) return static_cast<LSTATUS>(error);
  if (!key->hive) return ERROR_ACCESS_DENIED;
  return static_cast<LSTATUS>(key->hive->SetValue(
      key->key, {ToUtf8(name), type, std::string(reinterpret_cast<const char*>(data), size)}));
}

LSTATUS WINAPI RegDeleteValueW(HKEY handle, const wchar_t* name) {
  EnterCall();
  const std::lock_guard hold(RegistryLock());
  std::shared_ptr<RegistryKey> key;
  if (const DWORD error = UseKey(handle, KEY_SET_VALUE, key)) return static_cast<LSTATUS>(error);
  if (!key->hive) return ERROR_FILE_NOT_FOUND;
  return static_cast<LSTATUS>(key->hive->DeleteValue(key->key, ToUtf8(name)));
}
