// registry.h
//
// The registry through one notation: a key is a text such as "HKLM64\SOFTWARE\Microsoft". It begins
// with a root ("HKLM" or "HKEY_LOCAL_MACHINE", in any case), which may carry "64" or "32" for the view
// of a 64-bit system. Without them the system's default for this process holds. Nothing here shows a
// message; an unknown root gives null or false without a call of the system.
#pragma once
#include <windows.h>

#include "foundation/wstring.h"

// As the access of OpenKey: the key is made if it isn't there.
constexpr REGSAM kOpenOrCreate = static_cast<REGSAM>(-1);

// The root of `path`, or null for one that isn't known. On success `path` holds the part behind the
// root, which may be empty, and the view bits are added to `access`; otherwise both stay as they are.
HKEY ParseRegistryPath(WString& path, REGSAM& access);

// An open key, which the caller closes, or null. The last error is the result of the call; it is
// NO_ERROR for an unknown root, too.
HKEY OpenKey(const wchar_t* path, REGSAM access);

// As OpenKey, for reading, setting values and making subkeys; makes the key and its parents where they
// are missing.
HKEY CreateKey(const wchar_t* path);

// Only a key that isn't there gives false: one that can't be read for another reason counts as present.
bool KeyExists(const wchar_t* path);

// A text value (REG_SZ, REG_EXPAND_SZ as it stands, REG_MULTI_SZ with line feeds between its strings).
// An empty `name` is the key's default value. False, with an empty `output`, if there is none.
bool QueryStringValue(HKEY key, const wchar_t* name, WString& output);

// One open key, which the operations with a path close before they open theirs.
class RegistryKey {
 public:
  HKEY key;  // null when closed

  RegistryKey();
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;
  ~RegistryKey();

  void Close();

  // Sets a value of the open key. `data` is a text for the types of texts, with line feeds between the
  // strings of a REG_MULTI_SZ, and 4 or 8 bytes for the types of numbers. Null data and every other
  // type (REG_BINARY, too) write a value of no bytes.
  bool SetValue(const wchar_t* name, DWORD type, const void* data);

  // Opens or makes the key, keeps it open, and sets the value; with a null `name` just the key is made.
  bool CreateAndSetValue(const wchar_t* path, const wchar_t* name, DWORD type, const void* data);

  // Deletes a value of the key, or with a null `name` the key with everything below it.
  bool DeleteValueOrTree(const wchar_t* path, const wchar_t* name);

  // Deletes the key with everything below it, the deepest keys first, and leaves its parent open. A
  // link to another key goes as the link that it is. False for a root, and if the key itself is still
  // there; what could be deleted below it is gone all the same.
  bool DeleteTree(const wchar_t* path);
};
