#include "operations/installation_hive.h"

#include <windows.h>

#include "foundation/directory_enumerator.h"
#include "foundation/registry.h"
#include "foundation/unique_handle.h"
#include "operations/held_way.h"
#include "operations/path_queries.h"

namespace {

constexpr wchar_t kHiveFolder[] = L"Windows\\System32\\config";

bool ReadNumber(HKEY key, const wchar_t* name, DWORD& number) {
  DWORD type = 0, size = sizeof(number);
  return RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(&number), &size) ==
             ERROR_SUCCESS &&
         type == REG_DWORD && size == sizeof(number);
}

double ReadVersion(const wchar_t* hiveName) {
  WString path;
  path.Concat(L"HKLM\\", hiveName, L"\\Microsoft\\Windows NT\\CurrentVersion");
  const UniqueKey key(OpenKey(path.CStr(), KEY_READ));
  DWORD minor = 0, major = 0;
  if (!key || !ReadNumber(key.Get(), L"CurrentMinorVersionNumber", minor)) return 0.0;
  if (!ReadNumber(key.Get(), L"CurrentMajorVersionNumber", major)) return minor / 10.0;
  return major + minor / 10.0;
}

WString HiveFile(const wchar_t* root) {
  WString file;
  file.Concat(root, L"\\", kHiveFolder, L"\\SOFTWARE");
  return file;
}

bool IsPlainFile(const WString& path) {
  DirectoryEnumerator file;
  return file.First(path.CStr(), kSkipReparsePoints | kSkipDirectories);
}

// A new name at each call, so that a key left behind by a killed program is no obstacle.
WString TemporaryKeyName() {
  SYSTEMTIME now;
  FILETIME time = {};
  GetLocalTime(&now);
  SystemTimeToFileTime(&now, &time);
  WString name;
  name.FromUInt64(static_cast<uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
  return name;
}

}  // namespace

double ReadHiveVersion(const wchar_t* root) {
  const WString file = HiveFile(root);
  HeldWay way;
  // Led astray by a link, this would read the version of the machine that runs now.
  if (way.Hold(root, kHiveFolder, false) != HeldWay::Result::kHeld) return 0.0;
  // Where there is no file, the system would make an empty one.
  if (!IsPlainFile(file)) return 0.0;
  const WString name = TemporaryKeyName();
  double version = 0.0;
  if (RegLoadKeyW(HKEY_LOCAL_MACHINE, name.CStr(), file.CStr()) == ERROR_SUCCESS) {
    version = ReadVersion(name.CStr());
  }
  RegUnLoadKeyW(HKEY_LOCAL_MACHINE, name.CStr());
  return version;
}

WString InstallationHive(const wchar_t* root) {
  WString file = HiveFile(root);
  if (PathAttributes(file.CStr()) == INVALID_FILE_ATTRIBUTES) file.Clear();
  return file;
}
