// Links between keys, which the machine folder's registry doesn't have.
#include <gtest/gtest.h>

#include "foundation/registry.h"
#include "foundation/unique_handle.h"
#include "users/console_user.h"

namespace {

const wchar_t kTarget[] = L"HKCU\\Software\\Norvane test target";
const wchar_t kTree[] = L"HKCU\\Software\\Norvane test tree";

// Somebody who may write below HKCU could have keys of others deleted by a program with more rights.
TEST(RegistryLinks, DeleteTreeDoesNotFollowALink) {
  RegistryKey key;
  key.DeleteTree(kTree);  // of a run that was ended
  ASSERT_TRUE(key.CreateAndSetValue((WString(kTarget) + L"\\below").CStr(), L"value", REG_SZ, L"1"));
  ASSERT_TRUE(key.CreateAndSetValue(kTree, nullptr, 0, nullptr));
  UniqueKey link;
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Norvane test tree\\link", 0, nullptr,
                            REG_OPTION_CREATE_LINK, KEY_SET_VALUE | KEY_CREATE_LINK, nullptr, link.Receive(),
                            nullptr),
            ERROR_SUCCESS);
  const WString target = L"\\Registry\\User\\" + ProcessUserSid() + L"\\Software\\Norvane test target";
  ASSERT_EQ(RegSetValueExW(link.Get(), L"SymbolicLinkValue", 0, REG_LINK,
                           reinterpret_cast<const BYTE*>(target.CStr()),
                           static_cast<DWORD>(target.Length()) * sizeof(wchar_t)),
            ERROR_SUCCESS);
  link.Reset();
  ASSERT_TRUE(KeyExists((WString(kTree) + L"\\link\\below").CStr()));  // it leads there

  EXPECT_TRUE(key.DeleteTree(kTree));
  EXPECT_FALSE(KeyExists(kTree));
  EXPECT_TRUE(KeyExists((WString(kTarget) + L"\\below").CStr()));
  key.DeleteTree(kTarget);
}

}  // namespace
