// The notation of keys, and opening them.
#include "foundation/registry.h"

#include "foundation/unique_handle.h"

namespace {

struct Root {
  const wchar_t* shortName;
  const wchar_t* longName;
  HKEY key;
};

const Root kRoots[] = {
    {L"HKLM", L"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},
    {L"HKCU", L"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
    {L"HKCR", L"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
    {L"HKU", L"HKEY_USERS", HKEY_USERS},
    {L"HKCC", L"HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG},
};

// The backslash behind a root: none is shorter than "HKU", and "HKEY_CURRENT_CONFIG64" is the longest.
constexpr int32_t kFirstBackslash = 4;
constexpr int32_t kBackslashSpan = 20;

constexpr REGSAM kCreateAccess = KEY_READ | KEY_SET_VALUE | KEY_CREATE_SUB_KEY;

// Cuts "64" or "32" off the token and gives its access bit.
REGSAM TakeViewSuffix(WString& token) {
  const int32_t length = token.Length();
  if (length < 2) return 0;
  const WString suffix(token.CStr() + length - 2);
  const REGSAM view = suffix == L"64" ? KEY_WOW64_64KEY : suffix == L"32" ? KEY_WOW64_32KEY : 0;
  if (view != 0) token.Truncate(length - 2);
  return view;
}

}  // namespace

HKEY ParseRegistryPath(WString& path, REGSAM& access) {
  if (path.IsEmpty()) return nullptr;
  const int32_t backslash = path.Find(L"\\", true, 1, kFirstBackslash, kBackslashSpan);
  WString token(path);
  if (backslash > 0) token.Truncate(backslash - 1);
  const REGSAM view = TakeViewSuffix(token);
  for (const Root& root : kRoots) {
    if (!token.EqualsNoCase(root.shortName) && !token.EqualsNoCase(root.longName)) continue;
    if (backslash > 0) {
      path.RemoveLeft(backslash);
    } else {
      path.Clear();
    }
    access |= view;
    return root.key;
  }
  return nullptr;
}

HKEY OpenKey(const wchar_t* path, REGSAM access) {
  if (access == kOpenOrCreate) return CreateKey(path);
  SetLastError(NO_ERROR);
  WString rest(path);
  const HKEY root = ParseRegistryPath(rest, access);
  if (root == nullptr) return nullptr;
  HKEY key = nullptr;
  const LSTATUS error = RegOpenKeyExW(root, rest.IsEmpty() ? nullptr : rest.CStr(), 0, access, &key);
  SetLastError(static_cast<DWORD>(error));
  return error == ERROR_SUCCESS ? key : nullptr;
}

HKEY CreateKey(const wchar_t* path) {
  SetLastError(NO_ERROR);
  WString rest(path);
  REGSAM access = kCreateAccess;
  const HKEY root = ParseRegistryPath(rest, access);
  if (root == nullptr) return nullptr;
  HKEY key = nullptr;
  // Unlike the opening call, this one refuses a null name for the root itself; an empty one will do.
  const LSTATUS error = RegCreateKeyExW(root, rest.CStr(), 0, nullptr, 0, access, nullptr, &key, nullptr);
  SetLastError(static_cast<DWORD>(error));
  return error == ERROR_SUCCESS ? key : nullptr;
}

bool KeyExists(const wchar_t* path) {
  WString rest(path);
  REGSAM access = KEY_QUERY_VALUE;
  const HKEY root = ParseRegistryPath(rest, access);
  if (root == nullptr) return false;
  UniqueKey key;
  const LSTATUS error = RegOpenKeyExW(root, rest.IsEmpty() ? nullptr : rest.CStr(), 0, access, key.Receive());
  return error != ERROR_FILE_NOT_FOUND;
}
