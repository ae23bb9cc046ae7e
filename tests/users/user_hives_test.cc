#include "users/user_hives.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <thread>

#include "foundation/unique_handle.h"
#include "support/account_place.h"
#include "users/account_lookup.h"

namespace {

// Would catch a second load for each folder that is asked for: without its entry in ProfileList the hive
// can't be loaded any more.
TEST(UserHives, AreLoadedOnce) {
  AccountPlace place;
  place.Add({.name = "Anna"});
  const WString sid = Wide(place.Sid("Anna"));
  ASSERT_TRUE(EnsureUserHiveLoaded(sid.CStr()));

  WString key;
  key.Concat(L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\", sid.CStr());
  ASSERT_EQ(RegDeleteKeyExW(HKEY_LOCAL_MACHINE, key.CStr(), KEY_WOW64_64KEY, 0), ERROR_SUCCESS);
  EXPECT_TRUE(EnsureUserHiveLoaded(sid.CStr()));

  UnloadOwnHives();
  EXPECT_FALSE(EnsureUserHiveLoaded(sid.CStr()));
}

// The window's thread and a worker may ask at the same time; a load that fails because the other was
// faster would leave out the account's folders.
TEST(UserHives, CanBeAskedForFromSeveralThreads) {
  constexpr int kThreads = 4, kRounds = 150;
  AccountPlace place;
  place.Add({.name = "Anna"});
  const WString sid = Wide(place.Sid("Anna"));
  std::atomic<int> failures = 0;
  std::barrier begin(kThreads, [] { UnloadOwnHives(); });
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; i++) {
    threads.emplace_back([&] {
      for (int round = 0; round < kRounds; round++) {
        begin.arrive_and_wait();
        if (!EnsureUserHiveLoaded(sid.CStr())) failures++;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures, 0);
}

TEST(UserHives, NeedASidAndAProfile) {
  AccountPlace place;
  place.Add({.name = "NoHive", .hasHive = false});
  place.Add({.name = "NoProfile", .profileImagePath = ""});
  EXPECT_FALSE(EnsureUserHiveLoaded(Wide(place.Sid("NoHive")).CStr()));
  EXPECT_FALSE(EnsureUserHiveLoaded(Wide(place.Sid("NoProfile")).CStr()));
}

// An empty file would be made into a hive, and then nobody would know why the folders are missing.
TEST(UserHives, TellWhyTheyAreNotThere) {
  AccountPlace place;
  place.Add({.name = "Anna"});
  place.Add({.name = "NoHive", .hasHive = false});
  place.Add({.name = "Empty", .hasHive = false});
  place.files.File("Users/Empty/NTUSER.DAT", "");
  const std::pair<const char*, LSTATUS> cases[] = {{"NoHive", ERROR_FILE_NOT_FOUND}, {"Empty", ERROR_BADDB}};
  for (const auto& [name, status] : cases) {
    HiveProblem problem;
    const WString profile = place.Profile(name);
    ASSERT_TRUE(FindHiveProblem(Wide(place.Sid(name)).CStr(), profile.CStr(), problem)) << name;
    EXPECT_EQ(problem.status, status) << name;
    EXPECT_EQ(problem.file, profile + L"\\NTUSER.DAT");
    EXPECT_FALSE(place.IsHiveLoaded(name));
  }
  HiveProblem none;
  EXPECT_FALSE(FindHiveProblem(Wide(place.Sid("Anna")).CStr(), place.Profile("Anna").CStr(), none));
}

}  // namespace
