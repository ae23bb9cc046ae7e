// Machines on which somebody else than this process's account sits at the console.
#include <gtest/gtest.h>

#include "foundation/privileges.h"
#include "foundation/unique_handle.h"
#include "machine/machine.h"
#include "support/account_place.h"
#include "users/console_user.h"

namespace {

// Started with "run as", the program would take the administrator for the person whose data it is about.
TEST(ConsoleUser, IsFoundByTheProcessesOfItsSession) {
  for (const uint32_t session : {1u, 2u}) {
    AccountPlace place;
    place.Add({.name = "Admin", .privilege = 2});
    place.AddConsoleUser({.name = "Anna"});
    machine::Machine changed = machine::ThisMachine();
    changed.settings.runAs = "Admin";
    changed.settings.processes.push_back({"C:\\Windows\\System32\\svchost.exe", "SYSTEM", 1});
    changed.settings.processes.push_back({"C:\\Windows\\explorer.exe", "Anna", session});
    machine::UseMachine(changed);
    // As the program does at its start: an administrator alone may not look at others' processes.
    delete[] EnableProcessPrivileges();

    WString name, profile(L"before"), sid;
    const UniqueHandle token(GetConsoleUser(name, &profile, &sid));
    ASSERT_EQ(static_cast<bool>(token), session == 1) << session;
    EXPECT_EQ(Utf8(profile), token ? Utf8(place.Profile("Anna")) : "before");
    if (!token) continue;
    EXPECT_EQ(Utf8(name), "Anna");
    EXPECT_EQ(Utf8(sid), place.Sid("Anna"));
  }
}

}  // namespace
