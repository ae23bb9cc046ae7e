// The hives of an attached disk and of its accounts are a stranger's files. However broken, they are read
// within bounds and in a bounded time, and they aren't changed.
#include <windows.h>

#include <filesystem>

#include "foundation/privileges.h"
#include "foundation/unique_handle.h"
#include "fuzz_machine.h"
#include "operations/installation_hive.h"
#include "users/user_folders.h"

namespace {

constexpr int kMostKeys = 2000;  // a broken list can name one key again and again

void VisitValues(HKEY key) {
  wchar_t name[300];
  BYTE data[1000];
  for (DWORD i = 0; i < 50; i++) {
    DWORD nameSize = 300, dataSize = sizeof(data), type = 0;
    const LSTATUS status = RegEnumValueW(key, i, name, &nameSize, nullptr, &type, data, &dataSize);
    if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA) return;
  }
}

void VisitKeys(HKEY key, int depth, int& left) {
  VisitValues(key);
  wchar_t name[300];
  for (DWORD i = 0; depth < 20 && left > 0; i++, left--) {
    DWORD size = 300;
    if (RegEnumKeyExW(key, i, name, &size, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) return;
    UniqueKey inner;
    if (RegOpenKeyExW(key, name, 0, KEY_READ, inner.Receive()) == ERROR_SUCCESS) {
      VisitKeys(inner.Get(), depth + 1, left);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool isReady = [] {
    FuzzDrive();
    delete[] EnableProcessPrivileges();
    return std::filesystem::create_directories(FuzzDrive() + "/Test/Windows/System32/config");
  }();
  Require(isReady, "a folder for the hive");
  const std::string file = "Test/Windows/System32/config/SOFTWARE";
  WriteOnDisk(file, data, size);
  const double version = ReadHiveVersion(L"C:\\Test");
  Require(version >= 0.0, "no version is below nothing");

  constexpr wchar_t kSid[] = L"S-1-5-21-1-2-3-1001";
  if (RegLoadKeyW(HKEY_USERS, kSid, L"C:\\Test\\Windows\\System32\\config\\SOFTWARE") == ERROR_SUCCESS) {
    {
      UniqueKey root;
      int left = kMostKeys;
      if (RegOpenKeyExW(HKEY_USERS, kSid, 0, KEY_READ, root.Receive()) == ERROR_SUCCESS) {
        VisitKeys(root.Get(), 0, left);
      }
      WString folder;
      for (const wchar_t* name : {kFolderDocuments, kFolderAppData, kFolderTemp}) {
        GetUserFolder(kSid, name, folder, L"C:\\Users\\Anna");
      }
    }
    Require(RegUnLoadKeyW(HKEY_USERS, kSid) == ERROR_SUCCESS, "the hive can be unloaded");
  }
  Require(ReadFromDisk(file) == std::string(reinterpret_cast<const char*>(data), size),
          "reading doesn't change the hive");
  return 0;
}
