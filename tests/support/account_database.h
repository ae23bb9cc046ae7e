// account_database.h
//
// What differs between the systems in making accounts for tests.
#pragma once
#include <functional>
#include <string>
#include <vector>

#include "support/account_place.h"

// From here on to the end, the accounts are the test's alone.
void BeginTestAccounts(TestSystem system);
void EndTestAccounts();

// The name of the group that makes the account's type.
inline const char* TestGroup(const TestAccount& account) {
  const char* const groups[] = {"Guests", "Users", "Administrators"};
  return groups[account.privilege];
}

void AddTestAccount(const TestAccount& account, const std::string& sid);
void SetTestConsoleUser(const std::string& name);

// The SID of the account that sits at the console and that the process runs as.
std::string ConsoleSid();

// Has profiles of accounts that the system makes put into the test's place, where there is no system to do
// it.
void MakeProfilesBy(const std::function<void(const std::string& name, const std::string& sid)>& make);

// What the account database has of an account. False if there is no such account.
bool LookAtAccount(const std::string& name, KnownAccount& account);

void WriteTestHive(const WString& file, const std::vector<TestValue>& values);
void LoadHiveAsSystem(const std::string& sid, const WString& file);
void UnloadSystemHives();
