// The registry calls: handles, views, values, listings, loading, and the errors that Windows gives.
#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>

#include "platform/privilege_switch.h"
#include "platform/test_machine.h"

namespace {

using namespace machine;

std::string Read(HKEY root, const wchar_t* path, const wchar_t* name, REGSAM view = 0) {
  HKEY key;
  if (RegOpenKeyExW(root, path, 0, KEY_READ | view, &key) != ERROR_SUCCESS) return "<no key>";
  char16_t text[600] = {};
  DWORD size = sizeof text - 2, type = 0;
  const LSTATUS status = RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(text), &size);
  RegCloseKey(key);
  return status == ERROR_SUCCESS ? ToUtf8(text) : "<no value>";
}

LSTATUS Create(HKEY root, const wchar_t* path, REGSAM view = 0) {
  HKEY key;
  const LSTATUS status = RegCreateKeyExW(root, path, 0, nullptr, 0, KEY_WRITE | view, nullptr, &key, nullptr);
  if (status == ERROR_SUCCESS) RegCloseKey(key);
  return status;
}

LSTATUS Open(HKEY root, const wchar_t* path, REGSAM access = KEY_READ) {
  HKEY key;
  const LSTATUS status = RegOpenKeyExW(root, path, 0, access, &key);
  if (status == ERROR_SUCCESS) RegCloseKey(key);
  return status;
}

constexpr const wchar_t* kVersion = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion";

// A 32-bit process on a 64-bit system: reading the wrong view finds no ProfileList and no accounts.
TEST(Registry, HasTwoViewsOfSoftware) {
  TestMachine place;
  EXPECT_EQ(Read(HKEY_LOCAL_MACHINE, kVersion, L"ProgramFilesDir", KEY_WOW64_64KEY), "C:\\Program Files");
  for (const REGSAM view : {REGSAM{0}, REGSAM{KEY_WOW64_32KEY}}) {
    EXPECT_EQ(Read(HKEY_LOCAL_MACHINE, kVersion, L"ProgramFilesDir", view), "C:\\Program Files (x86)");
  }
  EXPECT_EQ(Read(HKEY_LOCAL_MACHINE, L"software\\WOW6432NODE\\Microsoft\\Windows\\CurrentVersion",
                 L"ProgramFilesDir"),
            "C:\\Program Files (x86)");
  // Classes are shared, but for those of objects.
  ASSERT_EQ(Create(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes\\.nvsav"), ERROR_SUCCESS);
  ASSERT_EQ(Create(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes\\CLSID\\{1}"), ERROR_SUCCESS);
  EXPECT_EQ(Open(HKEY_CLASSES_ROOT, L".nvsav", KEY_READ | KEY_WOW64_64KEY), ERROR_SUCCESS);
  EXPECT_EQ(Open(HKEY_CLASSES_ROOT, L"CLSID\\{1}"), ERROR_SUCCESS);
  EXPECT_EQ(Open(HKEY_CLASSES_ROOT, L"CLSID\\{1}", KEY_READ | KEY_WOW64_64KEY), ERROR_FILE_NOT_FOUND);
  // A key below an open one stays in the view of that one.
  HKEY key;
  ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE", 0, KEY_READ | KEY_WOW64_64KEY, &key),
            ERROR_SUCCESS);
  EXPECT_EQ(Read(key, L"Microsoft\\Windows\\CurrentVersion", L"ProgramFilesDir"), "C:\\Program Files");
  RegCloseKey(key);
}

TEST(Registry, FindsTheKeysThatAreElsewhere) {
  TestMachine place;
  EXPECT_EQ(Read(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Control\\ComputerName\\ComputerName",
                 L"ComputerName"),
            "NORVANE-PC");
  EXPECT_EQ(Open(HKEY_CURRENT_CONFIG, L"Software"), ERROR_SUCCESS);
  EXPECT_EQ(Read(HKEY_CURRENT_USER, L"Environment", L"TEMP"), "%USERPROFILE%\\AppData\\Local\\Temp");
  const std::u16string annas = Wide16(place.Sid("Anna") + "\\Environment");
  EXPECT_EQ(Read(HKEY_USERS, AsWide(annas), L"tmp"), "%USERPROFILE%\\AppData\\Local\\Temp");
  // Bob isn't logged on, so his hive isn't there.
  EXPECT_EQ(Open(HKEY_USERS, AsWide(Wide16(place.Sid("Bob")))), ERROR_FILE_NOT_FOUND);
}

TEST(Registry, GivesTheErrorsOfWindows) {
  TestMachine place;
  EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, nullptr), ERROR_SUCCESS);
  EXPECT_EQ(Open(HKEY_USERS, L""), ERROR_SUCCESS);
  EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, L"SOFTWARE\\None"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, L"HARDWARE"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, L"\\SOFTWARE"), ERROR_BAD_PATHNAME);
  EXPECT_EQ(Open(reinterpret_cast<HKEY>(0x44), L"a"), ERROR_INVALID_HANDLE);
  EXPECT_EQ(Create(HKEY_LOCAL_MACHINE, L"New"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegCloseKey(reinterpret_cast<HKEY>(0x44)), ERROR_INVALID_HANDLE);
  EXPECT_EQ(RegCloseKey(HKEY_LOCAL_MACHINE), ERROR_SUCCESS);
}

TEST(Registry, QueryTellsWhatRoomItNeeds) {
  TestMachine place;
  HKEY key;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, L"Test\\Values", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                            nullptr),
            ERROR_SUCCESS);
  const BYTE bytes[] = {1, 2, 3, 4, 5};
  ASSERT_EQ(RegSetValueExW(key, L"data", 0, REG_BINARY, bytes, sizeof bytes), ERROR_SUCCESS);
  ASSERT_EQ(RegSetValueExW(key, nullptr, 0, REG_NONE, nullptr, 0), ERROR_SUCCESS);
  BYTE buffer[8] = {};
  DWORD size = 3, type = 77;
  EXPECT_EQ(RegQueryValueExW(key, L"DATA", nullptr, &type, buffer, &size), ERROR_MORE_DATA);
  EXPECT_EQ(size, 5u);
  EXPECT_EQ(type, DWORD{REG_BINARY});
  size = sizeof buffer;
  EXPECT_EQ(RegQueryValueExW(key, L"data", nullptr, nullptr, buffer, &size), ERROR_SUCCESS);
  EXPECT_EQ(memcmp(buffer, bytes, sizeof bytes), 0);
  EXPECT_EQ(RegQueryValueExW(key, L"", nullptr, &type, nullptr, &size), ERROR_SUCCESS);
  EXPECT_EQ(size, 0u);
  EXPECT_EQ(RegQueryValueExW(key, L"none", nullptr, nullptr, nullptr, &size), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegDeleteValueW(key, L"data"), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteValueW(key, L"data"), ERROR_FILE_NOT_FOUND);
  RegCloseKey(key);
}

TEST(Registry, ListsWhatAKeyHolds) {
  TestMachine place;
  HKEY key;
  ASSERT_EQ(
      RegCreateKeyExW(HKEY_CURRENT_USER, L"Test", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
      ERROR_SUCCESS);
  for (const wchar_t* name : {L"b", L"Ä long one", L"a"}) ASSERT_EQ(Create(key, name), ERROR_SUCCESS);
  ASSERT_EQ(RegSetValueExW(key, L"value", 0, REG_DWORD, reinterpret_cast<const BYTE*>("abcd"), 4),
            ERROR_SUCCESS);
  DWORD keys = 0, longestKey = 0, values = 0, longestName = 0, longestData = 0;
  ASSERT_EQ(RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &keys, &longestKey, nullptr, &values,
                             &longestName, &longestData, nullptr, nullptr),
            ERROR_SUCCESS);
  EXPECT_EQ(keys, 3u);
  EXPECT_EQ(longestKey, 10u);
  EXPECT_EQ(values, 1u);
  EXPECT_EQ(longestName, 5u);
  EXPECT_EQ(longestData, 4u);
  wchar_t name[16];
  DWORD size = 1;
  EXPECT_EQ(RegEnumKeyExW(key, 0, name, &size, nullptr, nullptr, nullptr, nullptr), ERROR_MORE_DATA);
  std::string all;
  for (DWORD i = 0;; ++i) {
    size = 16;
    if (RegEnumKeyExW(key, i, name, &size, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
    all += ToUtf8(name) + ";";
  }
  EXPECT_EQ(all, "a;b;Ä long one;");
  // Deleting from the last one down keeps the numbers below valid.
  for (DWORD i = 3; i-- > 0;) {
    size = 16;
    ASSERT_EQ(RegEnumKeyExW(key, i, name, &size, nullptr, nullptr, nullptr, nullptr), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyW(key, name), ERROR_SUCCESS);
  }
  size = 16;
  EXPECT_EQ(RegEnumKeyExW(key, 0, name, &size, nullptr, nullptr, nullptr, nullptr), ERROR_NO_MORE_ITEMS);
  RegCloseKey(key);
}

// A handle of a deleted key must not reach what comes to lie in its place.
TEST(Registry, DeletedKeysAreGone) {
  TestMachine place;
  HKEY key;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, L"Outer\\Inner", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                            nullptr),
            ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L"Outer"), ERROR_ACCESS_DENIED);  // it holds a key
  EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L"Outer\\Inner"), ERROR_SUCCESS);
  EXPECT_EQ(RegSetValueExW(key, L"a", 0, REG_NONE, nullptr, 0), ERROR_KEY_DELETED);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L"Outer\\Inner"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L"Outer"), ERROR_SUCCESS);
  RegCloseKey(key);
}

TEST(Registry, KeepsChangesForTheNextStart) {
  TestMachine place;
  HKEY key;
  ASSERT_EQ(
      RegCreateKeyExW(HKEY_CURRENT_USER, L"Kept", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
      ERROR_SUCCESS);
  const wchar_t text[] = L"Größe";
  ASSERT_EQ(RegSetValueExW(key, L"a", 0, REG_SZ, reinterpret_cast<const BYTE*>(text), sizeof text),
            ERROR_SUCCESS);
  RegCloseKey(key);
  place.Reopen();
  EXPECT_EQ(Read(HKEY_CURRENT_USER, L"Kept", L"a"), "Größe");
}

TEST(Registry, HandleHasTheRightsThatItWasOpenedWith) {
  TestMachine place;
  HKEY key;
  ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"Environment", 0, KEY_READ, &key), ERROR_SUCCESS);
  EXPECT_EQ(RegSetValueExW(key, L"a", 0, REG_NONE, nullptr, 0), ERROR_ACCESS_DENIED);
  RegCloseKey(key);
  ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"Environment", 0, KEY_SET_VALUE, &key), ERROR_SUCCESS);
  EXPECT_EQ(RegQueryValueExW(key, L"TEMP", nullptr, nullptr, nullptr, nullptr), ERROR_ACCESS_DENIED);
  RegCloseKey(key);
}

// An account without rights must not see other people's hives or change the machine's.
TEST(Registry, StandardUserReadsTheMachineAndWritesItself) {
  TestMachine place;
  place.RunAs("Bob");
  EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, kVersion), ERROR_SUCCESS);
  EXPECT_EQ(Create(HKEY_LOCAL_MACHINE, L"SOFTWARE\\New"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(Create(HKEY_CURRENT_USER, L"New"), ERROR_SUCCESS);
  EXPECT_EQ(Open(HKEY_USERS, AsWide(Wide16(place.Sid("Anna")))), ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegLoadKeyW(HKEY_USERS, L"x", L"C:\\Users\\Bob\\NTUSER.DAT"), ERROR_PRIVILEGE_NOT_HELD);
}

TEST(HiveLoading, NeedsBothPrivileges) {
  TestMachine place;
  const auto load = [] { return RegLoadKeyW(HKEY_USERS, L"Bob", L"C:\\Users\\Bob\\NTUSER.DAT"); };
  EXPECT_EQ(load(), ERROR_PRIVILEGE_NOT_HELD);
  SetPrivilege(L"SeBackupPrivilege", true);
  EXPECT_EQ(load(), ERROR_PRIVILEGE_NOT_HELD);
  SetPrivilege(L"SeRestorePrivilege", true);
  EXPECT_EQ(load(), ERROR_SUCCESS);
  EXPECT_EQ(RegUnLoadKeyW(HKEY_USERS, L"BOB"), ERROR_SUCCESS);
}

TEST(HiveLoading, LoadsAndUnloadsAHive) {
  TestMachine place;
  EnableHivePrivileges();
  ASSERT_EQ(RegLoadKeyW(HKEY_USERS, L"Bob", L"c:\\users\\BOB\\ntuser.dat"), ERROR_SUCCESS);
  HKEY key;
  ASSERT_EQ(RegOpenKeyExW(HKEY_USERS, L"bob\\Environment", 0, KEY_ALL_ACCESS, &key), ERROR_SUCCESS);
  EXPECT_EQ(RegLoadKeyW(HKEY_USERS, L"Again", L"C:\\Users\\Bob\\NTUSER.DAT"), ERROR_SHARING_VIOLATION);
  EXPECT_EQ(RegUnLoadKeyW(HKEY_USERS, L"Bob"), ERROR_ACCESS_DENIED);  // a key of it is open
  ASSERT_EQ(RegSetValueExW(key, L"new", 0, REG_DWORD, reinterpret_cast<const BYTE*>("1234"), 4),
            ERROR_SUCCESS);
  RegCloseKey(key);
  EXPECT_EQ(RegUnLoadKeyW(HKEY_USERS, L"Bob"), ERROR_SUCCESS);
  EXPECT_EQ(RegUnLoadKeyW(HKEY_USERS, L"Bob"), ERROR_FILE_NOT_FOUND);
  EXPECT_NE(RunProgramOf("hivexml " + place.Disk("C:\\Users\\Bob\\NTUSER.DAT")).output.find("\"new\""),
            std::string::npos);
}

TEST(HiveLoading, RefusesWhatItCantLoad) {
  TestMachine place;
  EnableHivePrivileges();
  PutBytes(place.Disk("C:\\Users\\text.dat"), std::string(9000, 'x'));
  std::filesystem::create_directory(place.Disk("C:\\Users\\Bob\\folder.dat"));
  const struct {
    HKEY root;
    const wchar_t* name;
    const wchar_t* file;
    LSTATUS error;
  } cases[] = {
      {HKEY_USERS, L"x", L"C:\\Users\\text.dat", ERROR_NOT_REGISTRY_FILE},
      {HKEY_USERS, L"x", L"C:\\Users\\Bob\\folder.dat", ERROR_ACCESS_DENIED},
      {HKEY_USERS, L"x", L"C:\\None\\a.dat", ERROR_PATH_NOT_FOUND},
      {HKEY_USERS, L"x", L"C:\\Users\\Anna\\NTUSER.DAT", ERROR_SHARING_VIOLATION},  // she is logged on
      {HKEY_USERS, L".Default", L"C:\\Users\\Bob\\NTUSER.DAT", ERROR_ALREADY_EXISTS},
      {HKEY_USERS, L"a\\b", L"C:\\Users\\Bob\\NTUSER.DAT", ERROR_INVALID_PARAMETER},
      {HKEY_CURRENT_USER, L"x", L"C:\\Users\\Bob\\NTUSER.DAT", ERROR_INVALID_PARAMETER},
      {HKEY_LOCAL_MACHINE, L"Offline", L"C:\\Users\\Bob\\NTUSER.DAT", ERROR_SUCCESS},
  };
  EXPECT_EQ(Open(HKEY_CURRENT_USER, nullptr), ERROR_SUCCESS);  // Anna's hive is in use from here on
  for (const auto& one : cases) {
    EXPECT_EQ(RegLoadKeyW(one.root, one.name, one.file), one.error) << ToUtf8(one.name) << ToUtf8(one.file);
  }
  EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, L"Offline\\Environment"), ERROR_SUCCESS);
  EXPECT_EQ(RegUnLoadKeyW(HKEY_LOCAL_MACHINE, L"SOFTWARE"), ERROR_ACCESS_DENIED);
}

// Windows makes the file; a program that loads without looking leaves an empty hive in a profile.
TEST(HiveLoading, MakesAHiveWhereThereIsNoFile) {
  TestMachine place;
  EnableHivePrivileges();
  ASSERT_EQ(RegLoadKeyW(HKEY_USERS, L"New", L"C:\\Users\\new.dat"), ERROR_SUCCESS);
  EXPECT_EQ(Create(HKEY_USERS, L"New\\Key"), ERROR_SUCCESS);
  EXPECT_EQ(RegUnLoadKeyW(HKEY_USERS, L"New"), ERROR_SUCCESS);
  EXPECT_EQ(RunProgramOf("hivexml " + place.Disk("C:\\Users\\new.dat")).code, 0);
}

// A link in the machine folder must not lead the registry to a file outside of it.
TEST(HiveLoading, DoesntFollowALinkOutOfTheMachine) {
  TestMachine place;
  EnableHivePrivileges();
  DiskFolder outside;
  std::filesystem::copy_file(place.Disk("C:\\Users\\Bob\\NTUSER.DAT"), outside.path + "/a.dat");
  std::filesystem::create_symlink(outside.path, place.Disk("C:\\Users\\out"));
  EXPECT_NE(RegLoadKeyW(HKEY_USERS, L"x", L"C:\\Users\\out\\a.dat"), ERROR_SUCCESS);
  EXPECT_NE(RegLoadKeyW(HKEY_USERS, L"x", L"C:\\Users\\out\\new.dat"), ERROR_SUCCESS);
  EXPECT_FALSE(std::filesystem::exists(outside.path + "/new.dat"));
}

}  // namespace
