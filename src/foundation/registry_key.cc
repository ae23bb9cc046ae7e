// The held key: what changes values and trees.
#include <memory>

#include "foundation/registry.h"
#include "foundation/unique_handle.h"

namespace {

// Longer than any key name, which has 255 units at most, and than any that a broken hive may hold.
constexpr DWORD kNameCapacity = 16400;

DWORD TextBytes(const void* text) {
  if (text == nullptr) return 0;
  return static_cast<DWORD>(UnitCount(static_cast<const wchar_t*>(text)) + 1) * sizeof(wchar_t);
}

DWORD DataBytes(DWORD type, const void* data) {
  if (data == nullptr) return 0;
  switch (type) {
    case REG_DWORD:
    case REG_DWORD_BIG_ENDIAN:
      return 4;
    case REG_QWORD:
      return 8;
    case REG_SZ:
    case REG_EXPAND_SZ:
    case REG_LINK:
      return TextBytes(data);
    default:
      return 0;
  }
}

// Strings with line feeds between them, as the registry wants them: each with its zero, and one more.
LSTATUS SetStrings(HKEY key, const wchar_t* name, const wchar_t* text) {
  WString strings(text);
  int32_t units = strings.Length();
  while (units > 1 && strings.buffer[units - 1] == L'\n') --units;
  const auto stored = std::make_unique<wchar_t[]>(static_cast<size_t>(units) + 2);
  for (int32_t index = 0; index < units; ++index) {
    stored[index] = strings.buffer[index] == L'\n' ? L'\0' : strings.buffer[index];
  }
  return RegSetValueExW(key, name, 0, REG_MULTI_SZ, reinterpret_cast<const BYTE*>(stored.get()),
                        static_cast<DWORD>(units + 2) * sizeof(wchar_t));
}

// Whether a path leads to a key below a root. A root alone can't be deleted, and what it holds must not be
// gone by the time when that shows.
bool IsBelowRoot(const wchar_t* path) {
  WString rest(path);
  REGSAM access = 0;
  if (ParseRegistryPath(rest, access) == nullptr) return false;
  rest.StripTrailingBackslashes();
  return !rest.IsEmpty();
}

// Opens a key, or the link itself where it is one.
HKEY OpenKeyOrLink(const wchar_t* path, REGSAM access) {
  WString rest(path);
  const HKEY root = ParseRegistryPath(rest, access);
  if (root == nullptr) return nullptr;
  HKEY key = nullptr;
  const LSTATUS error =
      RegOpenKeyExW(root, rest.IsEmpty() ? nullptr : rest.CStr(), REG_OPTION_OPEN_LINK, access, &key);
  return error == ERROR_SUCCESS ? key : nullptr;
}

bool IsLinkKey(HKEY key) {
  DWORD type = REG_NONE;
  return RegQueryValueExW(key, L"SymbolicLinkValue", nullptr, &type, nullptr, nullptr) == ERROR_SUCCESS &&
         type == REG_LINK;
}

// Deleting by name goes to where a link leads; only the call behind it takes the link.
bool DeleteLinkKey(const wchar_t* path) {
  const UniqueKey link(OpenKeyOrLink(path, DELETE));
  const HMODULE library = LoadLibraryW(L"ntdll.dll");
  if (!link || library == nullptr) return false;
  const auto deleteKey = reinterpret_cast<LONG(WINAPI*)(HANDLE)>(
      reinterpret_cast<void*>(GetProcAddress(library, "NtDeleteKey")));
  return deleteKey != nullptr && deleteKey(link.Get()) >= 0;
}

}  // namespace

RegistryKey::RegistryKey() : key(nullptr) {}

RegistryKey::~RegistryKey() { Close(); }

void RegistryKey::Close() {
  if (key != nullptr && reinterpret_cast<INT_PTR>(key) != -1) RegCloseKey(key);
  key = nullptr;
}

bool RegistryKey::SetValue(const wchar_t* name, DWORD type, const void* data) {
  if (key == nullptr) return false;
  const auto text = static_cast<const wchar_t*>(data);
  if (type == REG_MULTI_SZ && text != nullptr && text[0] != 0) {
    return SetStrings(key, name, text) == ERROR_SUCCESS;
  }
  return RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), DataBytes(type, data)) ==
         ERROR_SUCCESS;
}

bool RegistryKey::CreateAndSetValue(const wchar_t* path, const wchar_t* name, DWORD type, const void* data) {
  WString rest(path);
  REGSAM access = KEY_SET_VALUE;
  const HKEY root = ParseRegistryPath(rest, access);
  if (root == nullptr) return false;
  Close();
  if (RegCreateKeyExW(root, rest.CStr(), 0, nullptr, 0, access, nullptr, &key, nullptr) != ERROR_SUCCESS) {
    key = nullptr;
    return false;
  }
  return name == nullptr || SetValue(name, type, data);
}

bool RegistryKey::DeleteValueOrTree(const wchar_t* path, const wchar_t* name) {
  Close();
  if (name == nullptr) return DeleteTree(path);
  key = OpenKey(path, KEY_SET_VALUE);
  return key != nullptr && RegDeleteValueW(key, name) == ERROR_SUCCESS;
}

bool RegistryKey::DeleteTree(const wchar_t* path) {
  Close();
  if (!IsBelowRoot(path)) return false;
  key = OpenKeyOrLink(path, KEY_READ);
  const bool isLink = key != nullptr && IsLinkKey(key);
  DWORD subkeys = 0;
  if (key != nullptr && !isLink &&
      RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, nullptr, nullptr, nullptr,
                       nullptr, nullptr) == ERROR_SUCCESS) {
    const auto name = std::make_unique<wchar_t[]>(kNameCapacity);
    // Backward, so that the lower indices stay valid. The recursion leaves this level's key open.
    while (subkeys-- > 0 && key != nullptr) {
      DWORD units = kNameCapacity;
      if (RegEnumKeyExW(key, subkeys, name.get(), &units, nullptr, nullptr, nullptr, nullptr) ==
              ERROR_SUCCESS &&
          name[0] != 0) {
        DeleteTree((WString(path) + L"\\" + name.get()).CStr());
      }
    }
  }

  WString parent(path);
  const int32_t backslash = parent.LastBackslash();
  const WString name(parent.CStr() + backslash);
  parent.Truncate(backslash - 1);
  Close();
  key = OpenKey(parent.CStr(), KEY_READ);
  if (isLink) return DeleteLinkKey(path);
  return key != nullptr && RegDeleteKeyW(key, name.CStr()) == ERROR_SUCCESS;
}
