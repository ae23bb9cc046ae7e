#include "support/account_place.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>

#include "foundation/unique_handle.h"
#include "support/account_database.h"
#include "users/account_lookup.h"
#include "users/user_hives.h"

namespace {

const wchar_t kProfileList[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\ProfileList\\";

}  // namespace

AccountPlace::Accounts::Accounts(TestSystem system) { BeginTestAccounts(system); }
AccountPlace::Accounts::~Accounts() { EndTestAccounts(); }

AccountPlace::AccountPlace(TestSystem system) : accounts(system) {
  MakeProfilesBy([this](const std::string& name, const std::string& sid) {
    sids_.emplace_back(name, sid);
    AddToProfileList({.name = name}, sid);
    WriteTestHive(Profile(name) + L"\\NTUSER.DAT", UsualFolders(name));
  });
}

AccountPlace::~AccountPlace() {
  UnloadOwnHives();
  UnloadSystemHives();
  for (const std::string& sid : profileListKeys_) {
    RegDeleteKeyExW(HKEY_LOCAL_MACHINE, (kProfileList + Wide(sid)).CStr(), KEY_WOW64_64KEY, 0);
  }
}

WString AccountPlace::Add(const TestAccount& account) {
  // The registry may be one for several test programs that run at the same time.
  const std::string machine = "S-1-5-21-1004336348-1177238915-" + std::to_string(GetCurrentProcessId());
  const std::string sid = machine + "-" + std::to_string(2001 + sids_.size());
  sids_.emplace_back(account.name, sid);
  AddTestAccount(account, account.hasSid ? sid : "");
  files.Folder("Users/" + account.name);
  if (!account.profileImagePath.empty()) AddToProfileList(account, sid);
  if (account.hasHive) {
    const WString file = Profile(account.name) + L"\\NTUSER.DAT";
    WriteTestHive(file, account.hive.empty() ? UsualFolders(account.name) : account.hive);
    if (account.isLoggedOn) LoadHiveAsSystem(sid, file);
  }
  return Wide(sid);
}

void AccountPlace::AddConsoleUser(const TestAccount& account) {
  sids_.emplace_back(account.name, ConsoleSid());
  AddTestAccount(account, ConsoleSid());
  WString profile;
  if (!GetProfilePathFromSid(Wide(ConsoleSid()).CStr(), &profile)) {
    AddToProfileList(account, ConsoleSid());
    WriteTestHive(Profile(account.name) + L"\\NTUSER.DAT", UsualFolders(account.name));
  }
  // Last, since this process has only the rights of that account then.
  SetTestConsoleUser(account.name);
}

void AccountPlace::AddToProfileList(const TestAccount& account, const std::string& sid) {
  const bool own = account.profileImagePath == "<own>";
  const WString path = own ? Profile(account.name) : Wide(account.profileImagePath);
  profileListKeys_.push_back(sid);
  UniqueKey key;
  LSTATUS status = RegCreateKeyExW(HKEY_LOCAL_MACHINE, (kProfileList + Wide(sid)).CStr(), 0, nullptr, 0,
                                   KEY_ALL_ACCESS | KEY_WOW64_64KEY, nullptr, key.Receive(), nullptr);
  if (status == ERROR_SUCCESS) {
    status = RegSetValueExW(key.Get(), L"ProfileImagePath", 0, REG_EXPAND_SZ,
                            reinterpret_cast<const BYTE*>(path.CStr()),
                            static_cast<DWORD>(2 * (path.Length() + 1)));
  }
  if (status != ERROR_SUCCESS) ADD_FAILURE() << "no ProfileList key for " << account.name << ": " << status;
}

void AccountPlace::ListProfile(const std::string& key, const WString& folder) {
  AddToProfileList({.name = key, .profileImagePath = Utf8(folder)}, key);
}

WString AccountPlace::Profile(const std::string& name) const { return files / ("Users/" + name); }

std::string AccountPlace::Sid(const std::string& name) const {
  for (const auto& [itsName, sid] : sids_) {
    if (itsName == name) return sid;
  }
  WString sid = Wide(name);  // of one that was made meanwhile
  if (!AccountNameToSid(sid)) ADD_FAILURE() << "no account " << name;
  return Utf8(sid);
}

KnownAccount AccountPlace::Known(const std::string& name) const {
  KnownAccount account;
  if (!LookAtAccount(name, account)) ADD_FAILURE() << "no account " << name;
  std::sort(account.groups.begin(), account.groups.end());
  return account;
}

bool AccountPlace::IsHiveLoaded(const std::string& name) const {
  UniqueKey key;
  return RegOpenKeyExW(HKEY_USERS, Wide(Sid(name)).CStr(), 0, KEY_READ, key.Receive()) == ERROR_SUCCESS;
}

std::vector<TestValue> AccountPlace::UsualFolders(const std::string& name) {
  std::vector<TestValue> values;
  const std::pair<const char*, const char*> folders[] = {
      {"AppData", "AppData/Roaming"},
      {"Local AppData", "AppData/Local"},
      {"Desktop", "Desktop"},
      {"Personal", "Documents"},
      {"{374DE290-123F-4565-9164-39C4925E467B}", "Downloads"},
      {"My Music", "Music"},
      {"My Pictures", "Pictures"},
      {"My Video", "Videos"},
  };
  for (const auto& [logicalName, relative] : folders) {
    const WString folder = files.Folder("Users/" + name + "/" + relative);
    values.push_back({kShellFoldersKey, logicalName, Utf8(folder)});
  }
  return values;
}
