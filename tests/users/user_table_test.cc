#include "users/user_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include "support/account_place.h"
#include "support/array_rows.h"
#include "users/user_hives.h"

namespace {

using testing::ElementsAre;

// Would catch an account that can't be worked on in the list, one that can be left out of it, and a gap
// in the rows where one was passed over.
TEST(UserTable, ListsAccountsWithASidAndALocalProfile) {
  AccountPlace place;
  place.Add({.name = "Server", .databaseProfile = "\\\\server\\profiles\\x"});
  place.Add({.name = "Root", .databaseProfile = "\\profiles\\x"});
  place.Add({.name = "Anna"});
  place.Add({.name = "NoSid", .hasSid = false});
  place.Add({.name = "NoProfile", .profileImagePath = ""});
  place.Add({.name = "Elsewhere", .databaseProfile = "Q:\\not there", .profileImagePath = ""});
  place.Add({.name = "Zoë"});

  auto table = LoadUserTable();

  ASSERT_EQ(table->count, 3u);
  EXPECT_THAT(ArrayRows(table->userNames), ElementsAre("Anna", "Elsewhere", "Zoë", "", "", "", ""))
      << "as many rows as the database has accounts";
  EXPECT_THAT(ArrayRows(table->sids, 3),
              ElementsAre(place.Sid("Anna"), place.Sid("Elsewhere"), place.Sid("Zoë")));
  EXPECT_THAT(ArrayRows(table->profilePaths, 3),
              ElementsAre(Utf8(place.Profile("Anna")), "Q:\\not there", Utf8(place.Profile("Zoë"))));
}

// A path that is kept with its variables is no folder to anyone who opens it.
TEST(UserTable, ExpandsVariablesAndDropsTrailingBackslashes) {
  AccountPlace place;
  place.Add({.name = "Anna", .profileImagePath = "%SystemDrive%\\Profiles\\Anna\\"});
  place.Add({.name = "Bob", .databaseProfile = "%SystemDrive%\\Profiles\\Bob\\"});

  auto table = LoadUserTable();

  EXPECT_THAT(ArrayRows(table->profilePaths, table->count),
              ElementsAre("C:\\Profiles\\Anna", "C:\\Profiles\\Bob"));
}

// Would catch an account whose folders can't be found for want of its hive, a hive that stays loaded
// when the program has ended, also for a run before this one that was killed, and one that is pulled from
// under a logged-on account.
TEST(UserTable, LoadsMissingHivesAndUnloadsOnlyThese) {
  AccountPlace place;
  place.Add({.name = "Anna"});
  place.Add({.name = "Bob", .isLoggedOn = true});
  place.Add({.name = "Eve", .hasHive = false});
  place.Add({.name = "Cora"});
  const WString hive = place.Profile("Cora") + L"\\NTUSER.DAT";
  ASSERT_EQ(RegLoadKeyW(HKEY_USERS, Wide(place.Sid("Cora")).CStr(), hive.CStr()), ERROR_SUCCESS);
  ASSERT_FALSE(place.IsHiveLoaded("Anna"));
  ASSERT_TRUE(place.IsHiveLoaded("Bob"));

  auto table = LoadUserTable();
  EXPECT_EQ(table->count, 4u) << "an account without a hive stays in the table";
  EXPECT_TRUE(place.IsHiveLoaded("Anna"));
  EXPECT_FALSE(place.IsHiveLoaded("Eve"));
  EXPECT_FALSE(place.files.Exists("Users/Eve/NTUSER.DAT")) << "a hive was made in a profile without one";

  EXPECT_TRUE(UnloadOwnHives().empty());
  EXPECT_FALSE(place.IsHiveLoaded("Anna"));
  EXPECT_FALSE(place.IsHiveLoaded("Cora"));
  EXPECT_TRUE(place.IsHiveLoaded("Bob"));
}

// Where the account database names nobody, the person at the machine can still be backed up.
TEST(UserTable, FallsBackToTheConsoleUser) {
  AccountPlace place;
  place.Add({.name = "NoProfile", .profileImagePath = ""});
  place.AddConsoleUser({.name = "Anna", .privilege = 2, .databaseProfile = "\\\\server\\Anna"});

  auto table = LoadUserTable();

  ASSERT_EQ(table->count, 1u);
  EXPECT_EQ(Utf8(table->userNames[0]), "Anna");
  EXPECT_EQ(Utf8(table->sids[0]), place.Sid("Anna"));
  EXPECT_FALSE(table->profilePaths[0].IsEmpty());
  EXPECT_TRUE(UnloadOwnHives().empty()) << "the hive of who is logged on isn't this program's";
}

// At the logon screen the session has an empty name, which the look-up would take for a domain.
TEST(UserTable, HasOneEmptyRowWhenNobodyIsFound) {
  AccountPlace place;
  place.Add({.name = "NoProfile", .profileImagePath = ""});

  WStringArray sids, paths, names;
  EXPECT_EQ(EnumerateLocalUsers(sids, paths, names), 0u);
  auto table = LoadUserTable();
  ASSERT_EQ(table->count, 1u);
  EXPECT_TRUE(table->userNames[0].IsEmpty() && table->sids[0].IsEmpty() && table->profilePaths[0].IsEmpty());
}

}  // namespace
