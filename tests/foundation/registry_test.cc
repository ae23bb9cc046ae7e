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

  void TearDown() override { RegistryKey().DeleteTree(kBase); }
};

// The text of a value, or "(none)".
std::string Text(const wchar_t* path, const wchar_t* name) {
  const UniqueKey key(OpenKey(path, KEY_READ));
  WString text(L"old");
  const bool isText = QueryStringValue(key.Get(), name, text);
  EXPECT_TRUE(isText || text.IsEmpty());
  return isText ? Utf8(text) : "(none)";
}

std::string StoredBytes(const wchar_t* name) {
  const UniqueKey key(OpenKey(kBase, KEY_READ));
  std::string bytes(256, '?');
  DWORD size = 256;
  EXPECT_EQ(RegQueryValueExW(key.Get(), name, nullptr, nullptr, reinterpret_cast<BYTE*>(bytes.data()), &size),
            ERROR_SUCCESS);
  return bytes.substr(0, size);
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

  EXPECT_TRUE(UniqueKey(OpenKey(L"HKLM", KEY_READ)));
  EXPECT_TRUE(UniqueKey(CreateKey(L"HKCU")));
  EXPECT_TRUE(KeyExists(L"HKLM64"));
}

// A size that is wrong cuts a text or stores what lies behind it in memory; and what other programs stored
// need not be well formed.
TEST_F(Registry, ValuesAreStoredByTheirTypeAndReadAsTheyCome) {
  const uint64_t number = 0x1122334455667788;
  struct Case {
    DWORD type;
    const void* data;  // null: stored by another program
    std::string stored;
    const char* text;
  };
  const Case cases[] = {
      {REG_DWORD, &number, "\x88\x77\x66\x55", "(none)"},
      {REG_DWORD_BIG_ENDIAN, &number, "\x88\x77\x66\x55", "(none)"},
      {REG_QWORD, &number, "\x88\x77\x66\x55\x44\x33\x22\x11", "(none)"},
      {REG_SZ, L"ab", "a\0b\0\0\0"s, "ab"},
      {REG_SZ, nullptr, "a\0b\0"s, "ab"},   // no terminator
      {REG_SZ, nullptr, "a\0b\0c"s, "ab"},  // half a unit
      {REG_SZ, L"", "\0\0"s, ""},
      {REG_SZ, nullptr, "", ""},
      {REG_EXPAND_SZ, L"%A%", "%\0A\0%\0\0\0"s, "%A%"},
      {REG_BINARY, &number, "", "(none)"},
      {REG_BINARY, nullptr, "a\0\0\0"s, "(none)"},
      {REG_MULTI_SZ, L"a\nb\n\n", "a\0\0\0b\0\0\0\0\0"s, "a\nb"},
      {REG_MULTI_SZ, nullptr, "a\0\0\0b\0"s, "a\nb"},
      {REG_MULTI_SZ, L"\n", "\0\0\0\0\0\0"s, nullptr},
      {REG_MULTI_SZ, L"", "", nullptr},
  };
  RegistryKey key;
  EXPECT_FALSE(key.SetValue(L"value", REG_SZ, L"no key is open"));
  ASSERT_TRUE(key.CreateAndSetValue(kBase, nullptr, 0, nullptr));
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.type << " of " << c.stored.size());
    if (c.data != nullptr) {
      EXPECT_TRUE(key.SetValue(L"value", c.type, c.data));
      EXPECT_EQ(StoredBytes(L"value"), c.stored);
    } else {
      ASSERT_EQ(RegSetValueExW(key.key, L"value", 0, c.type, reinterpret_cast<const BYTE*>(c.stored.data()),
                               static_cast<DWORD>(c.stored.size())),
                ERROR_SUCCESS);
    }
    if (c.text != nullptr) {
      EXPECT_EQ(Text(kBase, L"value"), c.text);
    }
  }
  EXPECT_TRUE(key.SetValue(L"value", REG_SZ, nullptr));
  EXPECT_EQ(StoredBytes(L"value"), "");
}

TEST_F(Registry, ReadsAndDeletesAValueByItsName) {
  RegistryKey key;
  for (const wchar_t* name : {L"", L"a", L"b"}) {
    ASSERT_TRUE(key.CreateAndSetValue(kBase, name, REG_SZ, L"text"));
  }
  EXPECT_TRUE(key.DeleteValueOrTree(kBase, L"a"));
  EXPECT_FALSE(key.DeleteValueOrTree(kBase, L"a"));
  EXPECT_EQ(Text(kBase, L"a"), "(none)");
  EXPECT_EQ(Text(kBase, L"b"), "text");
  EXPECT_EQ(Text(kBase, L""), "text");
  EXPECT_EQ(Text(kBase, nullptr), "text");
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
