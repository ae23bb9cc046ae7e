// Hives that others use or keep to themselves.
#include <gtest/gtest.h>

#include <thread>

#include "foundation/unique_handle.h"
#include "machine/faults.h"
#include "support/account_place.h"
#include "users/user_hives.h"

namespace {

// Scanners and indexers look at a hive as soon as it is there. Left loaded for that, it would cost the
// account its profile at the next logon.
TEST(UserHives, AreUnloadedWhenOthersLetGoOfThem) {
  AccountPlace place;
  const WString sid = place.Add({.name = "Anna"});
  ASSERT_TRUE(EnsureUserHiveLoaded(sid.CStr()));
  UniqueKey key;
  ASSERT_EQ(RegOpenKeyExW(HKEY_USERS, sid.CStr(), 0, KEY_READ, key.Receive()), ERROR_SUCCESS);

  const ULONGLONG begin = GetTickCount64();
  const std::vector<UserHive> left = UnloadOwnHives();
  EXPECT_LT(GetTickCount64() - begin, 1500u);
  ASSERT_EQ(left.size(), 1u);
  EXPECT_EQ(left[0].sid, sid);
  EXPECT_EQ(left[0].profile, place.Profile("Anna"));

  std::thread indexer([&key] {
    Sleep(150);
    key.Reset();
  });
  EXPECT_TRUE(UnloadOwnHives().empty());
  indexer.join();
  EXPECT_FALSE(place.IsHiveLoaded("Anna"));
}

// No privilege helps the question whether the file is there.
TEST(UserHives, AreLoadedFromAProfileThatDeniesItsReader) {
  AccountPlace place;
  const WString sid = place.Add({.name = "Anna"});
  machine::FaultPlan plan;
  plan.call = "GetFileAttributesW";
  plan.path = "*\\NTUSER.DAT";
  plan.nth = 1;
  plan.error = ERROR_ACCESS_DENIED;
  machine::SetFaults(plan);
  EXPECT_TRUE(EnsureUserHiveLoaded(sid.CStr()));
  EXPECT_EQ(machine::FaultCalls(), 1u);
  machine::ClearFaults();
}

}  // namespace
