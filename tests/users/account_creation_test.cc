#include "users/account_creation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/account_calls.h"
#include "support/account_place.h"
#include "users/account_lookup.h"
#include "users/local_groups.h"
#include "users/temporary_password.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

bool HasProfile(const wchar_t* name) {
  WString sid, profile;
  if (!GetAccountSidAndProfile(name, sid, &profile)) return false;
  const uint32_t attributes = Attributes(profile.CStr());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

TEST(LocalGroups, MoveAnAccountFromOneTypeToAnother) {
  AccountPlace place;
  ASSERT_TRUE(CreateUserAccount(L"Eve", nullptr, kAdministratorAccount, nullptr));
  EXPECT_TRUE(SetAccountGroup(L"Eve", kGuestAccount, nullptr));
  EXPECT_THAT(place.Known("Eve").groups, ElementsAre("Guests"));
  EXPECT_TRUE(SetAccountGroup(L"Eve", kGuestAccount, nullptr)) << "a member already";
  EXPECT_FALSE(SetAccountGroup(L"Eve", 3, nullptr));
  EXPECT_FALSE(SetAccountGroup(L"Nobody", kStandardAccount, nullptr));
  EXPECT_THAT(place.Known("Eve").groups, ElementsAre("Guests")) << "an unknown type changes nothing";
}

// The restore would otherwise change the groups of an account that somebody uses.
TEST(AccountCreation, DoesNotTouchAnAccountThatExists) {
  AccountPlace place;
  ASSERT_TRUE(CreateUserAccount(L"Eve", L"Eve Stone", kStandardAccount, L"Secret-1"));
  WatchedAccountCalls calls;
  EXPECT_FALSE(CreateUserAccount(L"EVE", L"Other", kAdministratorAccount, nullptr));
  EXPECT_FALSE(CreateUserAccount(L"", L"Other", kAdministratorAccount, nullptr));
  EXPECT_FALSE(CreateUserAccount(nullptr, nullptr, kStandardAccount, nullptr));
  EXPECT_THAT(calls.made, ElementsAre());
  const KnownAccount eve = place.Known("Eve");
  EXPECT_EQ(eve.fullName, "Eve Stone");
  EXPECT_TRUE(eve.hasPassword);
  EXPECT_THAT(eve.groups, ElementsAre("Users"));
}

// A logon shows in the system's audit, so it is for those systems only that have nothing else.
TEST(AccountCreation, LogsOnOnlyWhereTheProfileCanNotBeMadeDirectly) {
  AccountPlace place;
  WatchedAccountCalls calls;
  ASSERT_TRUE(CreateUserAccount(L"Eve", L"Eve", kAdministratorAccount, nullptr));
  EXPECT_THAT(calls.made,
              ElementsAre("NetUserAdd Eve", "NetLocalGroupAddMembers Administrators", "CreateProfile Eve"))
      << "a full name that equals the name isn't written";

  FailingAccountCall fails("CreateProfile");
  EXPECT_TRUE(CreateUserAccount(L"Bob", nullptr, kStandardAccount, nullptr));
  EXPECT_TRUE(HasProfile(L"Bob"));
  EXPECT_FALSE(place.Known("Bob").hasPassword);
}

// An account that was made without a password must have none in the end, and the password of the program's
// own logon must never take the place of one that was given.
TEST(AccountCreation, LeavesThePasswordAsItWasAskedFor) {
  AccountPlace place(TestSystem::kOld);
  WatchedAccountCalls calls;
  ASSERT_TRUE(CreateUserAccount(L"Eve", L"Eve Stone", kStandardAccount, L""));
  EXPECT_THAT(calls.made, ElementsAre("NetUserAdd Eve", "NetUserSetInfo Eve,1011",
                                      "NetLocalGroupAddMembers Users", "NetUserSetInfo Eve,1003",
                                      "LogonUserW Eve", "LoadUserProfileW Eve", "NetUserSetInfo Eve,1003"));
  EXPECT_FALSE(place.Known("Eve").hasPassword);

  calls.made.clear();
  ASSERT_TRUE(CreateUserAccount(L"Bob", nullptr, kStandardAccount, L"Secret-1"));
  EXPECT_THAT(calls.made, Not(Contains("NetUserSetInfo Bob,1003")));
  EXPECT_THAT(calls.made, Contains("LogonUserW Bob"));
  EXPECT_TRUE(place.Known("Bob").hasPassword);
  EXPECT_FALSE(place.IsHiveLoaded("Bob")) << "the hive of the profile stays loaded";
}

// Each failure of a call, and what must hold after it.
TEST(AccountCreation, TellsWhatFailedAndLeavesNoPassword) {
  const struct {
    const char* call;
    uint32_t nth;
    bool isMade, exists, hasProfile, hasPassword;
  } cases[] = {
      {"NetUserAdd", 1, false, false, false, false},
      {"NetUserSetInfo Eve,1011", 1, true, true, true, false},
      {"NetLocalGroupAddMembers", 1, true, true, true, false},
      {"NetUserSetInfo Eve,1003", 1, false, true, false, false},
      {"LogonUserW", 1, false, true, false, false},
      {"LoadUserProfileW", 1, false, true, false, false},
      // The account's profile is there, but nobody knows its password.
      {"NetUserSetInfo Eve,1003", 2, false, true, true, true},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.call);
    AccountPlace place(TestSystem::kOld);
    bool isMade = false;
    {
      FailingAccountCall fails(one.call, one.nth);
      isMade = CreateUserAccount(L"Eve", L"Eve Stone", kStandardAccount, nullptr);
    }
    EXPECT_EQ(isMade, one.isMade);
    WString sid;
    ASSERT_EQ(GetAccountSidAndProfile(L"Eve", sid), one.exists);
    EXPECT_EQ(HasProfile(L"Eve"), one.hasProfile);
    if (one.exists) {
      EXPECT_EQ(place.Known("Eve").hasPassword, one.hasPassword);
    }
  }
}

// A file's word would otherwise change the groups of an account that only lacks its profile.
TEST(AccountCreation, MakesAMissingProfileWithoutTouchingTheAccount) {
  AccountPlace place;
  place.Add({.name = "Eve", .profileImagePath = "", .hasHive = false});
  WatchedAccountCalls calls;
  EXPECT_TRUE(CompleteUserAccount(L"Eve", L"Eve E", kAdministratorAccount));
  EXPECT_THAT(calls.made, ElementsAre("CreateProfile Eve"));
}

// A password that a policy refuses would leave the account without a profile, and one that is the same twice
// could be known.
TEST(TemporaryPassword, SatisfiesStrictPoliciesAndIsNewEachTime) {
  const TemporaryPassword first, second;
  ASSERT_TRUE(first.IsDrawn());
  const std::string text = Utf8(first.Text());
  EXPECT_NE(text, Utf8(second.Text()));
  EXPECT_GE(text.size(), 24u);
  for (const char* kind :
       {"ABCDEFGHIJKLMNOPQRSTUVWXYZ", "abcdefghijklmnopqrstuvwxyz", "0123456789", "!#$%+-=_"}) {
    EXPECT_NE(text.find_first_of(kind), std::string::npos) << text;
  }
}

}  // namespace
