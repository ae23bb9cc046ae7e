// Accounts of a domain beside those of the machine, which the layer of the other build has none of.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "stand_in/account_stand_in.h"
#include "support/account_calls.h"
#include "support/operation_run.h"
#include "users/account_lookup.h"

namespace {

// A new account gets the data, and not the one of the same name in the domain; nor where none can be made.
TEST(RestoreAccounts, AreNotThoseOfADomain) {
  for (const bool canBeMade : {true, false}) {
    RestoreRun run;
    run.machine.Add({.name = "Bob"});
    const std::string sid = "S-1-5-21-1-2-3-" + std::to_string(GetCurrentProcessId());
    run.machine.ListProfile(sid, run.files.Folder("Users/Eve of the domain"));
    stand_in::TheAccounts().ofDomain = {{.name = "Eve", .sid = sid}};
    run.files.File("set/Users/Eve/Contacts/a");
    run.Select(128, {{"Eve", "Eve <create>"}});
    {
      FailingAccountCall failing(canBeMade ? "NoSuchCall" : "NetUserAdd");
      run.Run();
    }
    EXPECT_EQ(run.context->failures, canBeMade ? 0 : 1) << testing::PrintToString(run.told);
    EXPECT_EQ(run.context->createdAccounts.count, canBeMade ? 1u : 0u);
    EXPECT_EQ(run.files.Exists("Users/Eve/Contacts/a"), canBeMade);
    EXPECT_FALSE(run.files.Exists("Users/Eve of the domain/Contacts"));
  }
}

}  // namespace
