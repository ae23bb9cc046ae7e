#include "support/account_database.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <windows.h>

#include <filesystem>
#include <set>

#include "foundation/privileges.h"
#include "foundation/unique_handle.h"
#include "machine/create_machine.h"
#include "machine/hive.h"
#include "machine/machine.h"
#include "support/host_path.h"

namespace {

// The machine of the test program, while a test has one of its own.
machine::Machine& MachineBefore() {
  static machine::Machine before;
  return before;
}

std::set<std::string>& SystemHives() {
  static std::set<std::string> sids;
  return sids;
}

// The process gets a new token with each machine.
void Use(const machine::Machine& next) {
  machine::UseMachine(next);
  delete[] EnableProcessPrivileges();
}

// What a logon makes below the hive, and other loads of it don't.
LSTATUS MakeEnvironment(const std::string& sid) {
  UniqueKey key;
  return RegCreateKeyExW(HKEY_USERS, (Wide(sid) + L"\\Volatile Environment").CStr(), 0, nullptr, 0, KEY_WRITE,
                         nullptr, key.Receive(), nullptr);
}

}  // namespace

void BeginTestAccounts(TestSystem system) {
  MachineBefore() = machine::ThisMachine();
  std::string folder = (std::filesystem::temp_directory_path() / "norvane-accounts.XXXXXX").string();
  std::string error;
  machine::Machine made;
  machine::MachinePlan plan;
  if (system == TestSystem::kOld) {
    plan.major = 5;
    plan.minor = 1;
    plan.build = 2600;
  }
  if (!mkdtemp(folder.data()) || !machine::CreateMachine(folder, plan, &error) ||
      !machine::Machine::Open(folder, made, &error)) {
    ADD_FAILURE() << "no machine in " << folder << ": " << error;
    return;
  }
  made.accounts.clear();
  if (!made.SaveAccounts(&error)) ADD_FAILURE() << error;
  Use(made);
}

void EndTestAccounts() {
  const std::string folder = machine::ThisMachine().folder;
  machine::UseMachine(MachineBefore());
  if (folder == MachineBefore().folder) return;
  std::error_code error;
  std::filesystem::remove_all(folder, error);
  if (error) ADD_FAILURE() << "left behind: " << folder << ": " << error.message();
}

void AddTestAccount(const TestAccount& account, const std::string& sid) {
  machine::Account entry;
  entry.name = account.name;
  entry.sid = sid;
  entry.fullName = account.fullName;
  entry.type = static_cast<machine::AccountType>(account.privilege);
  entry.home = account.databaseProfile;
  if (account.hasGroup) entry.groups = {TestGroup(account)};
  machine::ThisMachine().accounts.push_back(entry);
  std::string error;
  if (!machine::ThisMachine().SaveAccounts(&error)) ADD_FAILURE() << error;
}

// The machine makes them itself.
void MakeProfilesBy(const std::function<void(const std::string&, const std::string&)>&) {}

bool LookAtAccount(const std::string& name, KnownAccount& account) {
  const machine::Account* found = machine::ThisMachine().FindAccount(name);
  if (!found) return false;
  account.fullName = found->fullName;
  account.hasPassword = !found->passwordDigest.empty();
  account.groups = found->groups;
  return true;
}

void SetTestConsoleUser(const std::string& name) {
  machine::Machine changed = machine::ThisMachine();
  changed.settings.consoleAccount = name;
  Use(changed);
}

std::string ConsoleSid() { return "S-1-5-21-1004336348-1177238915-682003330-1500"; }

void WriteTestHive(const WString& file, const std::vector<TestValue>& values) {
  machine::HivePlan plan;
  for (const TestValue& value : values) {
    machine::HivePlan& key = plan.Key(value.key);
    if (value.type == REG_DWORD) {
      key.Number(value.name, static_cast<uint32_t>(std::stoul(value.text)));
    } else {
      key.Text(value.name, value.text, value.type);
    }
  }
  const DWORD error = machine::Hive::Make(HostPath(file), plan);
  if (error != ERROR_SUCCESS) ADD_FAILURE() << "no hive at " << Utf8(file) << ": " << error;
}

void LoadHiveAsSystem(const std::string& sid, const WString& file) {
  LSTATUS error = RegLoadKeyW(HKEY_USERS, Wide(sid).CStr(), file.CStr());
  if (error == ERROR_SUCCESS) error = MakeEnvironment(sid);
  if (error != ERROR_SUCCESS) ADD_FAILURE() << "no hive of " << sid << ": " << error;
  SystemHives().insert(sid);
}

void UnloadSystemHives() {
  for (const std::string& sid : SystemHives()) RegUnLoadKeyW(HKEY_USERS, Wide(sid).CStr());
  SystemHives().clear();
}
