// account_place.h
//
// Accounts with profiles and hives for tests of both builds. On Linux they are those of the machine
// folder that the test program runs on, with real hives; under Wine those of tests/stand_in.
#pragma once
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "support/test_place.h"

inline constexpr char kShellFoldersKey[] =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";
inline constexpr char kUserShellFoldersKey[] =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";

// A value of a hive. The key is below the hive's root; the text of a REG_DWORD is its number.
struct TestValue {
  std::string key, name, text;
  uint32_t type = 1;  // REG_SZ
};

struct TestAccount {
  std::string name;
  std::string fullName = {};
  uint32_t privilege = 1;
  std::string databaseProfile = {};        // the profile path that the account database keeps
  std::string profileImagePath = "<own>";  // ProfileList's; "<own>": the profile folder; empty: no key
  bool hasSid = true;                      // false: the name can't be looked up
  bool hasHive = true;                     // whether there is an NTUSER.DAT
  bool hasGroup = true;                    // the one of its privilege
  bool isLoggedOn = false;                 // the system has loaded the hive
  std::vector<TestValue> hive = {};        // instead of the usual Shell Folders
};

// An account as the database has it, also one that was made during the test.
struct KnownAccount {
  std::string fullName;
  std::vector<std::string> groups;  // in order
  bool hasPassword = false;
};

enum class TestSystem {
  kNew,  // Windows 10
  kOld,  // Windows XP, whose profiles are made by a logon only
};

class AccountPlace {
 public:
  explicit AccountPlace(TestSystem system = TestSystem::kNew);
  ~AccountPlace();
  AccountPlace(const AccountPlace&) = delete;
  AccountPlace& operator=(const AccountPlace&) = delete;

  struct Accounts {  // before the files, which lie on the machine that has these accounts
    explicit Accounts(TestSystem system);
    ~Accounts();
  } accounts;
  TestPlace files;  // profiles lie in it, in the folder "Users"

  // Adds an account, and makes its profile folder and hive. The account is the last of the database. Gives
  // its SID.
  WString Add(const TestAccount& account);

  // Adds an account that sits at the console and that this process runs as. Profile and hive are those
  // that the system gives this process, where it gives any.
  void AddConsoleUser(const TestAccount& account);

  // Puts a profile into ProfileList under a key of this name, which is a SID, or one with ".bak" behind it.
  void ListProfile(const std::string& key, const WString& folder);

  WString Profile(const std::string& name) const;  // of an account that was added here
  KnownAccount Known(const std::string& name) const;
  std::string Sid(const std::string& name) const;
  bool IsHiveLoaded(const std::string& name) const;

  // The usual folders below the account's profile, which exist after this.
  std::vector<TestValue> UsualFolders(const std::string& name);

 private:
  void AddToProfileList(const TestAccount& account, const std::string& sid);

  std::vector<std::pair<std::string, std::string>> sids_;  // names and their SIDs
  std::vector<std::string> profileListKeys_;               // SIDs
};
