#include "support/account_database.h"

#include <gtest/gtest.h>
#include <sddl.h>

#include "foundation/unique_handle.h"
#include "stand_in/account_stand_in.h"

namespace {

// What a logon makes below the hive, and other loads of it don't.
LSTATUS MakeEnvironment(const std::string& sid) {
  UniqueKey key;
  return RegCreateKeyExW(HKEY_USERS, (Wide(sid) + L"\\Volatile Environment").CStr(), 0, nullptr,
                         REG_OPTION_VOLATILE, KEY_WRITE, nullptr, key.Receive(), nullptr);
}

}  // namespace

void BeginTestAccounts(TestSystem system) {
  stand_in::TheAccounts() = stand_in::Accounts();
  stand_in::TheAccounts().hasCreateProfile = system == TestSystem::kNew;
  stand_in::TheAccounts().isActive = true;
}

void EndTestAccounts() { stand_in::TheAccounts() = stand_in::Accounts(); }

void AddTestAccount(const TestAccount& account, const std::string& sid) {
  stand_in::Account entry;
  entry.name = account.name;
  entry.sid = sid;
  entry.fullName = account.fullName;
  entry.profile = account.databaseProfile;
  entry.privilege = account.privilege;
  if (account.hasGroup) entry.groups = {TestGroup(account)};
  stand_in::TheAccounts().list.push_back(entry);
}

void MakeProfilesBy(const std::function<void(const std::string& name, const std::string& sid)>& make) {
  stand_in::TheAccounts().makeProfile = make;
}

bool LookAtAccount(const std::string& name, KnownAccount& account) {
  const stand_in::Account* found = stand_in::FindAccount(Wide(name).CStr());
  if (!found) return false;
  account.fullName = found->fullName;
  account.hasPassword = !found->password.empty();
  account.groups = found->groups;
  return true;
}

void SetTestConsoleUser(const std::string& name) { stand_in::TheAccounts().consoleUser = name; }

std::string ConsoleSid() {
  UniqueHandle token;
  alignas(TOKEN_USER) BYTE user[1024];
  DWORD size = 0;
  LPWSTR text = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Receive()) ||
      !GetTokenInformation(token.Get(), TokenUser, user, sizeof user, &size) ||
      !ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(user)->User.Sid, &text)) {
    ADD_FAILURE() << "no SID of this process";
    return {};
  }
  UniqueLocalMemory owner(text);
  return Utf8(text);
}

void WriteTestHive(const WString& file, const std::vector<TestValue>& values) {
  std::vector<stand_in::HiveText> texts;
  for (const TestValue& value : values) texts.push_back({value.key, value.name, value.text, value.type});
  WriteBytes(file.CStr(), stand_in::HiveFileText(texts));
}

void LoadHiveAsSystem(const std::string& sid, const WString& file) {
  LSTATUS status = stand_in::LoadAsSystem(Wide(sid).CStr(), file.CStr());
  if (status == ERROR_SUCCESS) status = MakeEnvironment(sid);
  if (status != ERROR_SUCCESS) ADD_FAILURE() << "no hive of " << sid << ": " << status;
}

void UnloadSystemHives() { stand_in::UnloadAllHives(); }
