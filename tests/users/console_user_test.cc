#include "users/console_user.h"

#include <gtest/gtest.h>

#include "foundation/unique_handle.h"
#include "support/account_place.h"

namespace {

TEST(ConsoleUser, IsFoundByTheOwnProcess) {
  AccountPlace place;
  place.AddConsoleUser({.name = "Anna"});

  WString name, profile, sid;
  UniqueHandle token(GetConsoleUser(name, &profile, &sid));

  ASSERT_TRUE(token);
  EXPECT_EQ(Utf8(name), "Anna");
  EXPECT_EQ(Utf8(sid), place.Sid("Anna"));
  EXPECT_FALSE(profile.IsEmpty());
}

// At the logon screen the session has an empty name, which the look-up would take for a domain.
TEST(ConsoleUser, IsNobodyAtTheLogonScreen) {
  AccountPlace place;
  place.Add({.name = "Anna"});
  WString name;
  EXPECT_EQ(GetConsoleUser(name), nullptr);
}

}  // namespace
