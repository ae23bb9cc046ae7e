// registry_listing.cc
//
// What a key holds: its subkeys and values by number, and how many there are.
#include <algorithm>
#include <cstring>

#include "machine/call.h"
#include "machine/names.h"
#include "machine/registry_key.h"

using namespace machine;

namespace {

// Lists what the key holds unless that was done since the last change, so that an enumeration by
// number doesn't read the key anew for each number.
DWORD List(RegistryKey& key) {
  if (key.listedAt == key.hive->Changes()) return ERROR_SUCCESS;
  if (const DWORD error = key.hive->Children(key.key, key.children)) return error;
  if (const DWORD error = key.hive->Values(key.key, key.values)) return error;
  key.listedAt = key.hive->Changes();
  return ERROR_SUCCESS;
}

// Copies `text` with its terminator; `size` counts units, with the terminator before and without after.
DWORD CopyName(const std::string& text, wchar_t* name, DWORD* size) {
  const std::u16string units = ToUtf16(text);
  if (*size <= units.size()) return ERROR_MORE_DATA;
  memcpy(name, units.c_str(), (units.size() + 1) * sizeof(wchar_t));
  *size = static_cast<DWORD>(units.size());
  return ERROR_SUCCESS;
}

void StoreTime(FILETIME* time, uint64_t value) {
  if (time) *time = {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
}

struct Counts {
  DWORD keys = 0, longestKey = 0, values = 0, longestName = 0, longestData = 0;
};

DWORD Count(RegistryKey& key, Counts& counts) {
  const auto lengthOf = [](const std::string& text) { return static_cast<DWORD>(ToUtf16(text).size()); };
  if (!key.hive) {
    for (const std::string& name : HiveNames(key.root)) {
      ++counts.keys;
      counts.longestKey = std::max(counts.longestKey, lengthOf(name));
    }
    return ERROR_SUCCESS;
  }
  if (const DWORD error = List(key)) return error;
  for (const Hive::Key child : key.children) {
    std::string name;
    if (const DWORD error = key.hive->Name(child, name)) return error;
    ++counts.keys;
    counts.longestKey = std::max(counts.longestKey, lengthOf(name));
  }
  for (const HiveValue& value : key.values) {
    ++counts.values;
    counts.longestName = std::max(counts.longestName, lengthOf(value.name));
    counts.longestData = std::max(counts.longestData, static_cast<DWORD>(value.data.size()));
  }
  return ERROR_SUCCESS;
}

}  // namespace

LSTATUS WINAPI RegEnumKeyExW(HKEY handle, DWORD index, wchar_t* name, DWORD* size, DWORD* reserved,
                             wchar_t* className, DWORD* classSize, FILETIME* time) {
  EnterCall();
  if (reserved || !name || !size) return ERROR_INVALID_PARAMETER;
  if (className || classSize) Unsupported("RegEnumKeyExW", "the class");
  const std::lock_guard hold(RegistryLock());
  std::shared_ptr<RegistryKey> key;
  if (const DWORD error = UseKey(handle, KEY_ENUMERATE_SUB_KEYS, key)) return static_cast<LSTATUS>(error);
  std::string text;
  StoreTime(time, 0);
  if (!key->hive) {
    const std::vector<std::string> names = HiveNames(key->root);
    if (index >= names.size()) return ERROR_NO_MORE_ITEMS;
    text = names[index];
  } else {
    if (const DWORD error = List(*key)) return static_cast<LSTATUS>(error);
    if (index >= key->children.size()) return ERROR_NO_MORE_ITEMS;
    if (const DWORD error = key->hive->Name(key->children[index], text)) return static_cast<LSTATUS>(error);
    StoreTime(time, key->hive->WriteTime(key->children[index]));
  }
  return static_cast<LSTATUS>(CopyName(text, name, size));
}

LSTATUS WINAPI RegEnumValueW(HKEY handle, DWORD index, wchar_t* name, DWORD* nameSize, DWORD* reserved,
                             DWORD* type, BYTE* data, DWORD* size) {
  EnterCall();
  if (reserved || !name || !nameSize || (data && !size)) return ERROR_INVALID_PARAMETER;
  const std::lock_guard hold(RegistryLock());
  std::shared_ptr<RegistryKey> key;
  if (const DWORD error = UseKey(handle, KEY_QUERY_VALUE, key)) return static_cast<LSTATUS>(error);
  if (!key->hive) return ERROR_NO_MORE_ITEMS;
  if (const DWORD error = List(*key)) return static_cast<LSTATUS>(error);
  if (index >= key->values.size()) return ERROR_NO_MORE_ITEMS;
  const HiveValue& value = key->values[index];
  if (type) *type = value.type;
  const DWORD room = size ? *size : 0;
  if (size) *size = static_cast<DWORD>(value.data.size());
  if (data && room < value.data.size()) return ERROR_MORE_DATA;
  if (const DWORD error = CopyName(value.name, name, nameSize)) return static_cast<LSTATUS>(error);
  if (data) memcpy(data, value.data.data(), value.data.size());
  return ERROR_SUCCESS;
}

LSTATUS WINAPI RegQueryInfoKeyW(HKEY handle, wchar_t* className, DWORD* classSize, DWORD* reserved,
                                DWORD* keys, DWORD* longestKey, DWORD* longestClass, DWORD* values,
                                DWORD* longestName, DWORD* longestData, DWORD* descriptorSize,
                                FILETIME* time) {
  EnterCall();
  if (reserved) return ERROR_INVALID_PARAMETER;
  if (className || classSize) Unsupported("RegQueryInfoKeyW", "the class");
  if (descriptorSize) Unsupported("RegQueryInfoKeyW", "the size of the security descriptor");
  const std::lock_guard hold(RegistryLock());
  std::shared_ptr<RegistryKey> key;
  if (const DWORD error = UseKey(handle, KEY_QUERY_VALUE, key)) return static_cast<LSTATUS>(error);
  Counts counts;
  if (const DWORD error = Count(*key, counts)) return static_cast<LSTATUS>(error);
  if (keys) *keys = counts.keys;
  if (longestKey) *longestKey = counts.longestKey;
  if (longestClass) *longestClass = 0;
  if (values) *values = counts.values;
  if (longestName) *longestName = counts.longestName;
  if (longestData) *longestData = counts.longestData;
  StoreTime(time, key->hive ? key->hive->WriteTime(key->key) : 0);
  return ERROR_SUCCESS;
}
