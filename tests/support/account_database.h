// account_database.h
//
// What differs between the systems in making accounts for tests.
#pragma once
#include <string>
#include <vector>

#include "support/account_place.h"

// From here on to the end, the accounts are the test's alone.
void BeginTestAccounts();
void EndTestAccounts();

void AddTestAccount(const TestAccount& account, const std::string& sid);
void SetTestConsoleUser(const std::string& name);

// The SID of the account that sits at the console and that the process runs as.
std::string ConsoleSid();

void WriteTestHive(const WString& file, const std::vector<TestValue>& values);
void LoadHiveAsSystem(const std::string& sid, const WString& file);
void UnloadSystemHives();
