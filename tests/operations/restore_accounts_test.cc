// Accounts that a restore makes, on the word of a file that may be a stranger's.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/account_calls.h"
#include "support/array_rows.h"
#include "support/operation_run.h"
#include "users/account_lookup.h"

namespace {

using testing::Contains;
using testing::ElementsAre;

WString ProfileOf(const char* name) {
  WString sid, profile;
  EXPECT_TRUE(GetAccountSidAndProfile(Wide(name).CStr(), sid, &profile)) << name;
  return profile;
}

// A person's data in an account of the wrong type or name, or an administrator that nobody wanted.
TEST(RestoreAccounts, AreMadeAsTheSetDescribesThem) {
  const struct {
    const char* value;
    const char* fullName;
    const char* group;
  } cases[] = {
      {"0|Eve Adams", "Eve Adams", "Guests"}, {"2|Eve Adams", "Eve Adams", "Users"}, {"7|E", "", "Users"}};
  for (const auto& test : cases) {
    RestoreRun run;
    run.machine.Add({.name = "Anna"});
    run.files.File("set/Users/Eve/AppData/a");
    run.document.SetValue(L"Users", L"Eve", Wide(test.value).CStr());
    run.Select(1, {{"Eve", "Evi <create>"}});
    run.Run();
    EXPECT_EQ(run.context->failures, 0) << testing::PrintToString(run.told);
    const KnownAccount made = run.machine.Known("Evi");
    EXPECT_EQ(made.fullName, test.fullName) << test.value;
    EXPECT_THAT(made.groups, ElementsAre(test.group)) << test.value;
    EXPECT_FALSE(made.hasPassword);
    EXPECT_THAT(ArrayRows(run.context->createdAccounts), ElementsAre("Evi"));
    EXPECT_NE(Attributes((ProfileOf("Evi") + L"\\AppData\\Roaming\\a").CStr()), INVALID_FILE_ATTRIBUTES);
  }
}

// The second run of the same selection, or a file that would have an account of ours changed.
TEST(RestoreAccounts, ThatExistAreTakenAsTheyAre) {
  RestoreRun run;
  run.machine.Add({.name = "Eve", .fullName = "Ours", .privilege = 1});
  run.files.File("set/Users/Eve/Desktop/a");
  run.document.SetValue(L"Users", L"Eve", L"2|Theirs");
  run.Select(2, {{"Eve", "Eve <create>"}});
  WStringArray allowed;
  allowed.Add(L"Eve");
  run.context->administrators = &allowed;
  std::vector<std::string> calls;
  {
    WatchedAccountCalls watch;
    run.Run();
    calls = watch.made;
  }
  EXPECT_THAT(calls, testing::IsEmpty());
  EXPECT_EQ(run.machine.Known("Eve").fullName, "Ours");
  EXPECT_EQ(run.context->createdAccounts.count, 0u);
  EXPECT_TRUE(run.files.Exists("Users/Eve/Desktop/a"));
}

// A run that was killed right after it had added an account: the next one must not be stuck with it.
TEST(RestoreAccounts, WithoutAProfileGetOne) {
  RestoreRun run;
  run.machine.Add({.name = "Evita", .fullName = "Ours", .profileImagePath = "", .hasHive = false});
  run.files.File("set/Users/Eve/Desktop/a");
  run.Select(2, {{"Eve", "Evita <create>"}});
  run.Run();
  EXPECT_EQ(run.context->failures, 0) << testing::PrintToString(run.told);
  EXPECT_NE(Attributes((ProfileOf("Evita") + L"\\Desktop\\a").CStr()), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(run.machine.Known("Evita").fullName, "Ours");
  EXPECT_EQ(run.context->createdAccounts.count, 0u);
}

// Killed between the account and its group: it would stay one that nobody can log on to, or become an
// administrator that nobody asked for.
TEST(RestoreAccounts, WithoutAGroupAreCompletedAsTheSetDescribesThem) {
  for (const bool isAsked : {false, true}) {
    RestoreRun run;
    run.machine.Add({.name = "Eve", .profileImagePath = "", .hasHive = false, .hasGroup = false});
    run.files.File("set/Users/Eve/Desktop/a");
    run.document.SetValue(L"Users", L"Eve", L"2|Eve Adams");
    run.Select(2, {{"Eve", "Eve <create>"}});
    WStringArray allowed;
    if (isAsked) allowed.Add(L"Eve");
    run.context->administrators = &allowed;
    run.Run();
    EXPECT_EQ(run.context->failures, 0) << testing::PrintToString(run.told);
    EXPECT_EQ(run.machine.Known("Eve").fullName, "Eve Adams");
    EXPECT_THAT(run.machine.Known("Eve").groups, ElementsAre(isAsked ? "Administrators" : "Users"));
    EXPECT_NE(Attributes((ProfileOf("Eve") + L"\\Desktop\\a").CStr()), INVALID_FILE_ATTRIBUTES);
  }
}

// "Made as an administrator" would be said of an account that is in no group.
TEST(RestoreAccounts, TellOfAGroupThatTookNobody) {
  RestoreRun run;
  run.files.File("set/Users/Eve/Desktop/a");
  run.Select(2, {{"Eve", "Eve <create>"}});
  {
    FailingAccountCall failing("NetLocalGroupAddMembers");
    run.Run();
  }
  EXPECT_THAT(run.told, Contains("Error! Could not put user account into its group: Eve"));
  EXPECT_EQ(run.context->failures, 1);
  EXPECT_NE(Attributes((ProfileOf("Eve") + L"\\Desktop\\a").CStr()), INVALID_FILE_ATTRIBUTES);
}

// An account that can't be made: told once, and its data goes nowhere else.
TEST(RestoreAccounts, ThatCannotBeMadeAreTold) {
  const struct {
    const char* target;
    const char* failing;
    const char* line;
  } cases[] = {
      {"Eve <create>", "NetUserAdd", "Error! Could not get profile path for user: Eve"},
      {"This name is far too long <create>", "",
       "Error! Could not create user account: This name is far too long"},
      {"NUL <create>", "", "Error! Could not create user account: NUL"},
      {"..\\Anna <create>", "", "Error! Could not create user account: ..\\Anna"},
      {"Administrators <create>", "", "Error! Could not get profile path for user: Administrators"},
  };
  for (const auto& test : cases) {
    RestoreRun run;
    run.machine.Add({.name = "Anna"});
    run.files.File("set/Users/Eve/Desktop/a");
    run.files.File("set/Users/Anna/Desktop/b");
    run.Select(2, {{"Eve", test.target}, {"Anna", "Anna"}});
    {
      FailingAccountCall failing(test.failing[0] ? test.failing : "NoSuchCall");
      run.Run();
    }
    EXPECT_THAT(run.told, Contains(test.line));
    EXPECT_EQ(run.context->failures, 1) << testing::PrintToString(run.told);
    EXPECT_EQ(run.context->createdAccounts.count, 0u);
    EXPECT_TRUE(run.files.Exists("Users/Anna/Desktop/b"));
    EXPECT_FALSE(run.files.Exists("Users/Anna/Desktop/a"));
  }
}

}  // namespace
