#include "users/user_folders.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "support/account_place.h"
#include "users/user_hives.h"

namespace {

constexpr uint32_t kExpand = REG_EXPAND_SZ;

struct FolderCase {
  const char* why;
  std::vector<TestValue> hive;
  const char* expected;  // "<none>": not found; "<profile>" stands for the given or listed profile
};

// Each case is an account of its own, asked for with a profile that is given and without one.
void ExpectFolders(const wchar_t* logicalName, const std::vector<FolderCase>& cases) {
  AccountPlace place;
  int number = 0;
  for (const FolderCase& test : cases) {
    SCOPED_TRACE(test.why);
    const std::string name = "User" + std::to_string(++number);
    const WString sid = place.Add({.name = name, .hive = test.hive});
    for (const WString& given : {WString(L"Q:\\Given"), WString()}) {
      const WString profile = given.IsEmpty() ? place.Profile(name) : given;
      WString expected = Wide(test.expected);
      expected.Replace(L"<profile>", profile.CStr());
      WString folder(L"before");
      const bool found =
          GetUserFolder(sid.CStr(), logicalName, folder, given.IsEmpty() ? nullptr : given.CStr());
      EXPECT_EQ(found, std::string(test.expected) != "<none>");
      EXPECT_EQ(Utf8(folder), found ? Utf8(expected) : "");
    }
  }
}

// Would catch a backup of a folder that isn't the account's: another account's, or one left long ago.
TEST(UserFolders, ComeFromTheAccountsOwnSettings) {
  const std::vector<FolderCase> cases = {
      {"Shell Folders comes first",
       {{kShellFoldersKey, "Personal", "D:\\Docs"}, {kUserShellFoldersKey, "Personal", "D:\\Other"}},
       "D:\\Docs"},
      {"User Shell Folders where Shell Folders lacks the value",
       {{kShellFoldersKey, "Desktop", "D:\\x"},
        {kUserShellFoldersKey, "Personal", "%USERPROFILE%\\Documents", kExpand}},
       "<profile>\\Documents"},
      {"an empty text counts as read",
       {{kShellFoldersKey, "Personal", ""}, {kUserShellFoldersKey, "Personal", "D:\\Other"}},
       ""},
      {"without Shell Folders the other key isn't asked",
       {{kUserShellFoldersKey, "Personal", "D:\\Other"}},
       "<none>"},
      {"the variable in any case", {{kShellFoldersKey, "Personal", "%userprofile%\\x"}}, "<profile>\\x"},
      {"the variable elsewhere is this process's",
       {{kShellFoldersKey, "Personal", "D:\\%SystemDrive%\\x"}},
       "D:\\C:\\x"},
      {"an unknown variable stays",
       {{kShellFoldersKey, "Personal", "%NoSuchVariable%\\x"}},
       "%NoSuchVariable%\\x"},
      {"no value", {{kShellFoldersKey, "Desktop", "D:\\x"}}, "<none>"},
  };
  ExpectFolders(kFolderDocuments, cases);
}

TEST(UserFolders, TemporaryFolderIsTmpThenTemp) {
  const std::string environment = "Environment";
  const std::vector<FolderCase> cases = {
      {"both", {{environment, "TMP", "D:\\a"}, {environment, "TEMP", "D:\\b"}}, "D:\\a"},
      {"an empty one counts as missing", {{environment, "TMP", ""}, {environment, "TEMP", "D:\\b"}}, "D:\\b"},
      {"the other alone", {{environment, "TEMP", "%USERPROFILE%\\T", kExpand}}, "<profile>\\T"},
      {"none", {{environment, "Path", "D:\\b"}}, "<none>"},
  };
  ExpectFolders(L"TEMP", cases);
}

// A leading %USERPROFILE% that is expanded by the system would be the profile of whoever runs this, and a
// folder that is guessed where the hive is missing needn't be the account's.
TEST(UserFolders, ArentGuessedWithoutAProfileOrAHive) {
  AccountPlace place;
  const WString anna = place.Add({.name = "Anna",
                                  .profileImagePath = "",
                                  .isLoggedOn = true,
                                  .hive = {{kShellFoldersKey, "Desktop", "%USERPROFILE%\\Desktop"}}});
  const WString eve = place.Add({.name = "Eve", .hasHive = false});
  WString folder(L"before");
  EXPECT_FALSE(GetUserFolder(anna.CStr(), kFolderDesktop, folder));
  EXPECT_TRUE(folder.IsEmpty());
  EXPECT_FALSE(GetUserFolder(eve.CStr(), kFolderDesktop, folder, place.Profile("Eve").CStr()));
}

}  // namespace
