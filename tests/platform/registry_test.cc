// The registry calls: handles, views, loading, and the errors that Windows gives.
#include <gtest/gtest.h>
#include <windows.h>

#include "foundation/unique_handle.h"
#include "platform/privilege_switch.h"
#include "platform/test_machine.h"

namespace {

using namespace machine;

std::string Read(HKEY root, const wchar_t* path, const wchar_t* name, REGSAM view = 0) {
  UniqueKey key;
  if (RegOpenKeyExW(root, path, 0, KEY_READ | view, key.Receive()) != ERROR_SUCCESS) return "<no key>";
  char16_t text[600] = {};
  DWORD size = sizeof text - 2;
  const LSTATUS status =
      RegQueryValueExW(key.Get(), name, nullptr, nullptr, reinterpret_cast<BYTE*>(text), &size);
  return status == ERROR_SUCCESS ? ToUtf8(text) : "<no value>";
}

LSTATUS Create(HKEY root, const wchar_t* path) {
  UniqueKey key;
  return RegCreateKeyExW(root, path, 0, nullptr, 0, KEY_WRITE, nullptr, key.Receive(), nullptr);
}

LSTATUS Open(HKEY root, const wchar_t* path, REGSAM access = KEY_READ) {
  UniqueKey key;
  return RegOpenKeyExW(root, path, 0, access, key.Receive());
}

LSTATUS SetNothing(const UniqueKey& key, const wchar_t* name) {
  return RegSetValueExW(key.Get(), name, 0, REG_NONE, nullptr, 0);
}

constexpr const wchar_t* kVersion = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion";

// A 32-bit process on a 64-bit system: reading the wrong view finds no ProfileList and no accounts.
TEST(Registry, HasTwoViewsOfSoftware) {
  TestMachine place;
  EXPECT_EQ(Read(HKEY_LOCAL_MACHINE, kVersion, L"ProgramFilesDir", KEY_WOW64_64KEY), "C:\\Program Files");
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
  UniqueKey key;
  ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE", 0, KEY_READ | KEY_WOW64_64KEY, key.Receive()),
            ERROR_SUCCESS);
  EXPECT_EQ(Read(key.Get(), L"Microsoft\\Windows\\CurrentVersion", L"ProgramFilesDir"), "C:\\Program Files");
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

// A handle of a deleted key must not reach what comes to lie in its place.
TEST(Registry, DeletedKeysAreGone) {
  TestMachine place;
  UniqueKey key;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, L"Outer\\Inner", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                            key.Receive(), nullptr),
            ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L"Outer"), ERROR_ACCESS_DENIED);  // it holds a key
  EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L"Outer\\Inner"), ERROR_SUCCESS);
  EXPECT_EQ(SetNothing(key, L"a"), ERROR_KEY_DELETED);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L"Outer\\Inner"), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, L"Outer"), ERROR_SUCCESS);
}

TEST(Registry, HandleHasTheRightsThatItWasOpenedWith) {
  TestMachine place;
  UniqueKey key;
  ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"Environment", 0, KEY_READ, key.Receive()), ERROR_SUCCESS);
  EXPECT_EQ(SetNothing(key, L"a"), ERROR_ACCESS_DENIED);
  ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"Environment", 0, KEY_SET_VALUE, key.Receive()), ERROR_SUCCESS);
  EXPECT_EQ(RegQueryValueExW(key.Get(), L"TEMP", nullptr, nullptr, nullptr, nullptr), ERROR_ACCESS_DENIED);
}

// An account without rights must not see other people's hives or change the machine's.
TEST(Registry, StandardUserReadsTheMachineAndWritesItself) {
  TestMachine place;
  place.RunAs("Bob");
  EXPECT_EQ(Open(HKEY_LOCAL_MACHINE, kVersion), ERROR_SUCCESS);
  EXPECT_EQ(Create(HKEY_LOCAL_MACHINE, L"SOFTWARE\\New"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(Create(HKEY_CURRENT_USER, L"New"), ERROR_SUCCESS);
  EXPECT_EQ(Open(HKEY_USERS, AsWide(Wide16(place.Sid("Anna")))), ERROR_ACCESS_DENIED);
}

TEST(HiveLoading, LoadsAndUnloadsAHive) {
  TestMachine place;
  const auto load = [] { return RegLoadKeyW(HKEY_USERS, L"Bob", L"c:\\users\\BOB\\ntuser.dat"); };
  EXPECT_EQ(load(), ERROR_PRIVILEGE_NOT_HELD);
  SetPrivilege(L"SeBackupPrivilege", true);
  EXPECT_EQ(load(), ERROR_PRIVILEGE_NOT_HELD);
  SetPrivilege(L"SeRestorePrivilege", true);
  ASSERT_EQ(load(), ERROR_SUCCESS);
  UniqueKey key;
  ASSERT_EQ(RegOpenKeyExW(HKEY_USERS, L"bob\\Environment", 0, KEY_ALL_ACCESS, key.Receive()), ERROR_SUCCESS);
  EXPECT_EQ(RegLoadKeyW(HKEY_USERS, L"Again", L"C:\\Users\\Bob\\NTUSER.DAT"), ERROR_SHARING_VIOLATION);
  EXPECT_EQ(RegUnLoadKeyW(HKEY_USERS, L"Bob"), ERROR_ACCESS_DENIED);  // a key of it is open
  ASSERT_EQ(RegSetValueExW(key.Get(), L"new", 0, REG_DWORD, reinterpret_cast<const BYTE*>("1234"), 4),
            ERROR_SUCCESS);
  key.Reset();
  EXPECT_EQ(RegUnLoadKeyW(HKEY_USERS, L"BOB"), ERROR_SUCCESS);
  EXPECT_EQ(RegUnLoadKeyW(HKEY_USERS, L"Bob"), ERROR_FILE_NOT_FOUND);
  EXPECT_NE(RunProgramOf("hivexml " + place.Disk("C:\\Users\\Bob\\NTUSER.DAT")).output.find("\"new\""),
            std::string::npos);
  // Windows makes a missing file; a program that loads without looking leaves an empty hive in a profile.
  ASSERT_EQ(RegLoadKeyW(HKEY_USERS, L"New", L"C:\\Users\\new.dat"), ERROR_SUCCESS);
  EXPECT_EQ(Create(HKEY_USERS, L"New\\Key"), ERROR_SUCCESS);
  EXPECT_EQ(RegUnLoadKeyW(HKEY_USERS, L"New"), ERROR_SUCCESS);
  EXPECT_EQ(RunProgramOf("hivexml " + place.Disk("C:\\Users\\new.dat")).code, 0);
}

TEST(HiveLoading, RefusesWhatItCantLoad) {
  TestMachine place;
  EnableHivePrivileges();
  PutBytes(place.Disk("C:\\Users\\text.dat"), std::string(9000, 'x'));
  const std::string whole = BytesOf(place.Disk("C:\\Users\\Bob\\NTUSER.DAT"));
  PutBytes(place.Disk("C:\\Users\\cut.dat"), whole.substr(0, whole.size() - 100));
  std::filesystem::create_directory(place.Disk("C:\\Users\\Bob\\folder.dat"));
  const struct {
    HKEY root;
    const wchar_t* name;
    const wchar_t* file;
    LSTATUS error;
  } cases[] = {
      {HKEY_USERS, L"x", L"C:\\Users\\text.dat", ERROR_NOT_REGISTRY_FILE},
      {HKEY_USERS, L"x", L"C:\\Users\\cut.dat", ERROR_BADDB},
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
