#include "foundation/registry.h"

#include <gtest/gtest.h>

#include <string>

#include "foundation/unique_handle.h"
#include "support/registry_place.h"
#include "support/test_place.h"

namespace {

using namespace std::string_literals;

const wchar_t kBase[] = L"HKCU\\Software\\Norvane test";

WString Below(const wchar_t* name) { return WString(kBase) + L"\\" + name; }

class Registry : public testing::Test {
 protected:
  RegistryPlace place_;

  void TearDown() override {
    RegistryKey().DeleteTree(kBase);
    RegistryKey().DeleteTree(L"HKLM64\\Software\\Norvane test");
    RegistryKey().DeleteTree(L"HKLM32\\Software\\Norvane test");
  }
};

std::string StoredBytes(HKEY key, const wchar_t* name) {
  char bytes[256];
  DWORD size = sizeof(bytes);
  const LSTATUS error = RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(bytes), &size);
  EXPECT_EQ(error, ERROR_SUCCESS);
  return error == ERROR_SUCCESS ? std::string(bytes, size) : std::string();
}

bool StoreBytes(HKEY key, DWORD type, const std::string& bytes) {
  return RegSetValueExW(key, L"value", 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                        static_cast<DWORD>(bytes.size())) == ERROR_SUCCESS;
}

// A root that is missed sends a write to nowhere; a view that is missed sends it to the other half.
TEST_F(Registry, PathsNameARootAndAView) {
  struct Case {
    const wchar_t* path;
    HKEY root;
    const char* rest;
    REGSAM view;
  };
  const Case cases[] = {
      {L"hklm64\\software", HKEY_LOCAL_MACHINE, "software", KEY_WOW64_64KEY},
      {L"HKU\\S-1-5-21-1", HKEY_USERS, "S-1-5-21-1", 0},
      {L"HKLM", HKEY_LOCAL_MACHINE, "", 0},
      {L"HKCU\\", HKEY_CURRENT_USER, "", 0},
      {L"HKCU64", HKEY_CURRENT_USER, "", KEY_WOW64_64KEY},
      {L"HKCR32\\.txt", HKEY_CLASSES_ROOT, ".txt", KEY_WOW64_32KEY},
      {L"HKEY_CURRENT_CONFIG64\\a\\b", HKEY_CURRENT_CONFIG, "a\\b", KEY_WOW64_64KEY},
      {L"hkey_Users32\\a", HKEY_USERS, "a", KEY_WOW64_32KEY},
      {L"HKXX\\a", nullptr, "HKXX\\a", 0},
      {L"HKLM65\\a", nullptr, "HKLM65\\a", 0},
      {L"HKLM6464\\a", nullptr, "HKLM6464\\a", 0},
      {L"\\HKLM\\a", nullptr, "\\HKLM\\a", 0},
      {L"64", nullptr, "64", 0},
      {L"", nullptr, "", 0},
  };
  for (const Case& c : cases) {
    WString path(c.path);
    REGSAM access = KEY_READ;
    EXPECT_EQ(ParseRegistryPath(path, access), c.root) << Utf8(c.path);
    EXPECT_EQ(Utf8(path), c.rest) << Utf8(c.path);
    EXPECT_EQ(access, KEY_READ | c.view) << Utf8(c.path);
  }
}

// Callers tell a key that isn't there from one that failed by the last error.
TEST_F(Registry, OpeningTellsWhyItFailed) {
  SetLastError(ERROR_GEN_FAILURE);
  EXPECT_EQ(OpenKey(L"HKXX\\a", KEY_READ), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{NO_ERROR});
  EXPECT_EQ(OpenKey(Below(L"missing").CStr(), KEY_READ), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
  EXPECT_FALSE(KeyExists(kBase));

  const UniqueKey made(OpenKey(kBase, kOpenOrCreate));
  EXPECT_TRUE(made);
  EXPECT_TRUE(KeyExists(kBase));
  const UniqueKey again(OpenKey(kBase, KEY_READ));
  EXPECT_TRUE(again);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_SUCCESS});
}

TEST_F(Registry, RootsOpenWithoutAKey) {
  EXPECT_TRUE(UniqueKey(OpenKey(L"HKLM", KEY_READ)));
  EXPECT_TRUE(UniqueKey(CreateKey(L"HKCU")));
  EXPECT_TRUE(KeyExists(L"HKLM64"));
}

// In a 32-bit process a path without a suffix means the 32-bit half.
TEST_F(Registry, ViewsAreApart) {
  RegistryKey key;
  ASSERT_TRUE(key.CreateAndSetValue(L"HKLM64\\Software\\Norvane test", L"value", REG_SZ, L"64"));
  EXPECT_FALSE(KeyExists(L"HKLM32\\Software\\Norvane test"));
  EXPECT_FALSE(KeyExists(L"HKLM\\Software\\Norvane test"));
  ASSERT_TRUE(key.CreateAndSetValue(L"HKLM\\Software\\Norvane test", L"value", REG_SZ, L"32"));
  const UniqueKey other(OpenKey(L"HKLM32\\Software\\Norvane test", KEY_READ));
  WString text;
  EXPECT_TRUE(QueryStringValue(other.Get(), L"value", text));
  EXPECT_EQ(text, L"32");
}

// A size that is wrong cuts a text or stores what lies behind it in memory.
TEST_F(Registry, SizeFollowsFromTheType) {
  const uint64_t number = 0x1122334455667788;
  struct Case {
    DWORD type;
    const void* data;
    std::string stored;
  };
  const Case cases[] = {
      {REG_DWORD, &number, "\x88\x77\x66\x55"},
      {REG_DWORD_BIG_ENDIAN, &number, "\x88\x77\x66\x55"},
      {REG_QWORD, &number, "\x88\x77\x66\x55\x44\x33\x22\x11"},
      {REG_SZ, L"ab", "a\0b\0\0\0"s},
      {REG_EXPAND_SZ, L"%", "%\0\0\0"s},
      {REG_SZ, L"", "\0\0"s},
      {REG_SZ, nullptr, ""},
      {REG_BINARY, &number, ""},
      {REG_MULTI_SZ, L"a\nb\n\n", "a\0\0\0b\0\0\0\0\0"s},
      {REG_MULTI_SZ, L"\n", "\0\0\0\0\0\0"s},
      {REG_MULTI_SZ, L"", ""},
  };
  RegistryKey key;
  EXPECT_FALSE(key.SetValue(L"value", REG_SZ, L"no key is open"));
  ASSERT_TRUE(key.CreateAndSetValue(kBase, nullptr, 0, nullptr));
  key.Close();
  key.key = CreateKey(kBase);
  for (const Case& c : cases) {
    EXPECT_TRUE(key.SetValue(L"value", c.type, c.data));
    EXPECT_EQ(StoredBytes(key.key, L"value"), c.stored) << c.type;
  }
}

// What other programs stored need not be well formed.
TEST_F(Registry, TextValuesAreReadAsTheyCome) {
  struct Case {
    DWORD type;
    std::string stored;
    bool isText;
    const char* text;
  };
  const Case cases[] = {
      {REG_SZ, "a\0b\0\0\0"s, true, "ab"},
      {REG_SZ, "a\0b\0"s, true, "ab"},   // no terminator
      {REG_SZ, "a\0b\0c"s, true, "ab"},  // half a unit
      {REG_SZ, "", true, ""},
      {REG_EXPAND_SZ, "%\0A\0%\0\0\0"s, true, "%A%"},
      {REG_MULTI_SZ, "a\0\0\0b\0\0\0\0\0"s, true, "a\nb"},
      {REG_MULTI_SZ, "a\0\0\0b\0"s, true, "a\nb"},
      {REG_BINARY, "a\0\0\0"s, false, ""},
      {REG_DWORD, "1234", false, ""},
  };
  const UniqueKey key(CreateKey(kBase));
  for (const Case& c : cases) {
    ASSERT_TRUE(StoreBytes(key.Get(), c.type, c.stored));
    WString text(L"old");
    EXPECT_EQ(QueryStringValue(key.Get(), L"value", text), c.isText) << c.type;
    EXPECT_EQ(Utf8(text), c.text) << c.type << " of " << c.stored.size();
  }
  WString text(L"old");
  EXPECT_FALSE(QueryStringValue(key.Get(), L"missing", text));
  EXPECT_EQ(text, L"");
}

TEST_F(Registry, EmptyNameIsTheDefaultValue) {
  RegistryKey key;
  ASSERT_TRUE(key.CreateAndSetValue(kBase, L"", REG_SZ, L"default"));
  WString text;
  const UniqueKey reader(OpenKey(kBase, KEY_READ));
  EXPECT_TRUE(QueryStringValue(reader.Get(), L"", text));
  EXPECT_TRUE(QueryStringValue(reader.Get(), nullptr, text));
  EXPECT_EQ(text, L"default");
}

TEST_F(Registry, DeletesAValueAndKeepsItsKey) {
  RegistryKey key;
  ASSERT_TRUE(key.CreateAndSetValue(kBase, L"a", REG_SZ, L"1"));
  ASSERT_TRUE(key.SetValue(L"b", REG_SZ, L"2"));
  EXPECT_TRUE(key.DeleteValueOrTree(kBase, L"a"));
  EXPECT_FALSE(key.DeleteValueOrTree(kBase, L"a"));
  WString text;
  const UniqueKey reader(OpenKey(kBase, KEY_READ));
  EXPECT_FALSE(QueryStringValue(reader.Get(), L"a", text));
  EXPECT_TRUE(QueryStringValue(reader.Get(), L"b", text));
}

// A walk from the first subkey on would skip every second one, and a key with subkeys can't be deleted.
TEST_F(Registry, DeletesATreeOfManyLevels) {
  RegistryKey key;
  for (const wchar_t* name : {L"tree\\a\\b\\c", L"tree\\a\\b\\d", L"tree\\e", L"tree\\f\\g", L"tree\\h",
                              L"tree\\\u00c4\u4e2d", L"tree2"}) {
    ASSERT_TRUE(key.CreateAndSetValue(Below(name).CStr(), L"value", REG_SZ, L"1"));
  }
  EXPECT_TRUE(key.DeleteValueOrTree(Below(L"tree").CStr(), nullptr));
  EXPECT_NE(key.key, nullptr);  // the parent
  EXPECT_FALSE(KeyExists(Below(L"tree").CStr()));
  EXPECT_TRUE(KeyExists(Below(L"tree2").CStr()));
  EXPECT_FALSE(key.DeleteTree(Below(L"tree").CStr()));
  EXPECT_FALSE(key.DeleteTree(L"HKXX"));
}

}  // namespace
