// Answers of the account database that a real one gives rarely.
#include <gtest/gtest.h>
#include <windows.h>

#include "stand_in/account_stand_in.h"
#include "support/account_place.h"
#include "users/account_facts.h"
#include "users/account_lookup.h"
#include "users/user_table.h"

namespace {

// Would catch rows written behind the end of the lists, and a database that says "more" for ever.
TEST(UserTable, EndsTheEnumerationAfterOneBatch) {
  AccountPlace place;
  for (const char* name : {"Anna", "Bob", "Eve"}) place.Add({.name = name});
  stand_in::TheAccounts().enumerationResult = ERROR_MORE_DATA;
  stand_in::TheAccounts().enumerationTotal = 2;

  WStringArray sids, paths, names;
  EXPECT_EQ(EnumerateLocalUsers(sids, paths, names), 2u);
  EXPECT_EQ(names.count, 2u);
  EXPECT_EQ(stand_in::TheAccounts().enumerations, 1u);
}

TEST(UserTable, FallsBackWhereTheDatabaseCantBeRead) {
  AccountPlace place;
  place.Add({.name = "Bob"});
  place.AddConsoleUser({.name = "Anna"});
  stand_in::TheAccounts().enumerationResult = ERROR_ACCESS_DENIED;

  auto table = LoadUserTable();
  ASSERT_EQ(table->count, 1u);
  EXPECT_EQ(Utf8(table->userNames[0]), "Anna");
}

// Would catch one person's data in the hands of another one who has the same name in the domain, and an
// account that isn't found because the computer is called like it.
TEST(AccountLookup, TakesTheMachinesOwnAccountFirst) {
  AccountPlace place;
  place.Add({.name = "Anna"});
  wchar_t computer[MAX_PATH];
  DWORD size = MAX_PATH;
  ASSERT_TRUE(GetComputerNameW(computer, &size));
  place.Add({.name = Utf8(computer)});
  stand_in::TheAccounts().ofDomain = {{.name = "Anna", .sid = "S-1-5-21-1-2-3-1001"},
                                      {.name = "Cora", .sid = "S-1-5-21-1-2-3-1002"}};
  WString anna(L"Anna"), cora(L"Cora");
  EXPECT_TRUE(AccountNameToSid(anna) && AccountNameToSid(cora));
  EXPECT_EQ(Utf8(anna), place.Sid("Anna"));
  EXPECT_EQ(Utf8(cora), "S-1-5-21-1-2-3-1002");
  WString own(computer);
  EXPECT_TRUE(AccountNameToSid(own));
  EXPECT_EQ(Utf8(own), place.Sid(Utf8(computer)));
}

// Would catch a level of 4294967295 in an info file.
TEST(AccountFacts, TakesNoLevelForNoAccount) {
  AccountPlace place;
  place.Add({.name = "Anna", .privilege = 0xffffffff});
  AccountFacts facts;
  EXPECT_FALSE(GetAccountFacts(L"Anna", facts));
}

}  // namespace
