// registry_key.h
//
// Keys of the registry: what a handle of a key holds, and how a path finds one.
#pragma once
#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "machine/handles.h"
#include "machine/hive_store.h"

namespace machine {

// What stands behind an HKEY. HKEY_LOCAL_MACHINE and HKEY_USERS themselves have no hive.
struct RegistryKey : Object {
  HiveRoot root = HiveRoot::kLocalMachine;
  std::string hiveName;  // empty: the root itself
  std::shared_ptr<Hive> hive;
  Hive::Key key = 0;
  REGSAM access = 0;

  // The subkeys and values as they were listed at `listedAt`, for enumerations by number.
  uint64_t listedAt = ~0ull;
  std::vector<Hive::Key> children;
  std::vector<HiveValue> values;

  ~RegistryKey() override;
};

// Finds the key of a handle (predefined or open) and a path below it. The path's first components are
// gone through as far as keys exist; `rest` is what is left. `view` are KEY_WOW64_64KEY and
// KEY_WOW64_32KEY: the process is a 32-bit one, so without a flag HKLM\SOFTWARE is its Wow6432Node.
// ERROR_SUCCESS also where something is left.
DWORD WalkRegistry(HKEY handle, const wchar_t* path, REGSAM view, RegistryKey& found,
                   std::vector<std::string>& rest);

// The mask that an open gives: generic rights and MAXIMUM_ALLOWED resolved. ERROR_ACCESS_DENIED if the
// calling thread may not have it: who isn't an administrator reads HKLM and writes only its own hive.
DWORD GrantAccess(const RegistryKey& key, REGSAM& access);

// The open key of a handle for one use of it: not deleted, and opened with at least `access`.
DWORD UseKey(HKEY handle, REGSAM access, std::shared_ptr<RegistryKey>& key);

HKEY AddKeyHandle(const RegistryKey& key, REGSAM access);

constexpr REGSAM kViewFlags = KEY_WOW64_64KEY | KEY_WOW64_32KEY;

}  // namespace machine
