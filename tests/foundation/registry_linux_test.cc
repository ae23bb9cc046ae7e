// On a registry of the test's own alone: where this fails, everything below the root is gone.
#include <gtest/gtest.h>

#include "foundation/registry.h"
#include "support/registry_place.h"
#include "support/test_place.h"

namespace {

// A path that a slip has cut down to its root says no; that must not come after all below it was deleted.
TEST(RegistryRoots, KeepAllBelowThem) {
  const RegistryPlace place;
  RegistryKey key;
  ASSERT_TRUE(key.CreateAndSetValue(L"HKCU\\Norvane test\\deep", L"value", REG_SZ, L"1"));
  ASSERT_TRUE(key.CreateAndSetValue(L"HKLM\\Software\\Norvane test", L"value", REG_SZ, L"1"));
  for (const wchar_t* root : {L"HKCU", L"HKCU\\", L"HKCU\\\\", L"hkey_current_user64\\", L"HKLM", L"HKU"}) {
    EXPECT_FALSE(key.DeleteTree(root)) << Utf8(root);
    EXPECT_FALSE(key.DeleteValueOrTree(root, nullptr)) << Utf8(root);
    EXPECT_TRUE(KeyExists(L"HKCU\\Norvane test\\deep")) << Utf8(root);
    EXPECT_TRUE(KeyExists(L"HKLM\\Software\\Norvane test")) << Utf8(root);
  }
  EXPECT_TRUE(key.DeleteTree(L"HKCU\\Norvane test"));
  EXPECT_FALSE(KeyExists(L"HKCU\\Norvane test"));
}

}  // namespace
