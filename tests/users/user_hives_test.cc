#include "users/user_hives.h"

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <thread>

#include "foundation/registry.h"
#include "support/account_place.h"
#include "users/account_lookup.h"

namespace {

// Would catch a second load for each folder that is asked for: without its entry in ProfileList the hive
// can't be loaded any more.
TEST(UserHives, AreLoadedOnce) {
  AccountPlace place;
  const WString sid = place.Add({.name = "Anna"});
  ASSERT_TRUE(EnsureUserHiveLoaded(sid.CStr()));

  ASSERT_TRUE(RegistryKey().DeleteTree((WString(kProfileListKey) + L"\\" + sid).CStr()));
  EXPECT_TRUE(EnsureUserHiveLoaded(sid.CStr()));

  UnloadOwnHives();
  EXPECT_FALSE(EnsureUserHiveLoaded(sid.CStr()));
}

// The window's thread and a worker may ask at the same time; a load that fails because the other was
// faster would leave out the account's folders.
TEST(UserHives, CanBeAskedForFromSeveralThreads) {
  constexpr int kThreads = 4, kRounds = 150;
  AccountPlace place;
  const WString sid = place.Add({.name = "Anna"});
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

// An empty file would be made into a hive, and then nobody would know why the folders are missing.
TEST(UserHives, TellWhyTheyAreNotThere) {
  AccountPlace place;
  const WString anna = place.Add({.name = "Anna"});
  const WString noHive = place.Add({.name = "NoHive", .hasHive = false});
  place.Add({.name = "Empty", .hasHive = false});
  const WString noProfile = place.Add({.name = "NoProfile", .profileImagePath = ""});
  place.files.File("Users/Empty/NTUSER.DAT", "");
  EXPECT_FALSE(EnsureUserHiveLoaded(noHive.CStr()));
  EXPECT_FALSE(EnsureUserHiveLoaded(noProfile.CStr()));
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
  EXPECT_FALSE(FindHiveProblem(anna.CStr(), place.Profile("Anna").CStr(), none));
}

}  // namespace
