// Machines on which somebody else than this process's account sits at the console.
#include <gtest/gtest.h>

#include "foundation/privileges.h"
#include "foundation/unique_handle.h"
#include "machine/machine.h"
#include "support/account_place.h"
#include "users/console_user.h"

namespace {

// Gives the machine of `place` a process of an account in a session, and another account to run as.
void AddProcess(const std::string& account, uint32_t session) {
  machine::Machine changed = machine::ThisMachine();
  changed.settings.runAs = "Admin";
  changed.settings.processes.push_back({"C:\\Windows\\System32\\svchost.exe", "SYSTEM", 1});
  changed.settings.processes.push_back({"C:\\Windows\\explorer.exe", account, session});
  machine::UseMachine(changed);
  // As the program does at its start: an administrator alone may not look at others' processes.
  delete[] EnableProcessPrivileges();
}

// Started with "run as", the program would take the administrator for the person whose data it is about.
TEST(ConsoleUser, IsFoundByTheProcessesOfItsSession) {
  AccountPlace place;
  place.Add({.name = "Admin", .privilege = 2});
  place.AddConsoleUser({.name = "Anna"});
  AddProcess("Anna", 1);
  WString name, profile, sid;
  UniqueHandle token(GetConsoleUser(name, &profile, &sid));
  ASSERT_TRUE(token);
  EXPECT_EQ(Utf8(name), "Anna");
  EXPECT_EQ(Utf8(sid), place.Sid("Anna"));
  EXPECT_EQ(Utf8(profile), Utf8(place.Profile("Anna")));
}

TEST(ConsoleUser, IsNobodyWithoutAProcessInTheSession) {
  AccountPlace place;
  place.Add({.name = "Admin", .privilege = 2});
  place.AddConsoleUser({.name = "Anna"});
  AddProcess("Anna", 2);
  WString name, profile(L"before");
  EXPECT_EQ(GetConsoleUser(name, &profile), nullptr);
  EXPECT_EQ(Utf8(profile), "before");
}

}  // namespace
