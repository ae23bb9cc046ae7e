#include "users/user_folders.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "support/account_place.h"
#include "users/user_hives.h"

namespace {

constexpr uint32_t kText = REG_SZ, kExpand = REG_EXPAND_SZ;

struct FolderCase {
  const char* why;
  std::vector<TestValue> hive;
  const char* expected;  // "<none>": not found; "<profile>" stands for the given or listed profile
};

const FolderCase kCases[] = {
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

// Would catch a backup of a folder that isn't the account's: another account's, or one left long ago.
TEST(UserFolders, ComeFromTheAccountsOwnSettings) {
  AccountPlace place;
  int number = 0;
  for (const FolderCase& test : kCases) {
    SCOPED_TRACE(test.why);
    const std::string name = "User" + std::to_string(++number);
    place.Add({.name = name, .hive = test.hive});
    const WString sid = Wide(place.Sid(name));
    for (const WString& given : {WString(L"Q:\\Given"), WString()}) {
      const WString profile = given.IsEmpty() ? place.Profile(name) : given;
      WString expected = Wide(test.expected);
      expected.Replace(L"<profile>", profile.CStr());
      WString folder(L"before");
      const bool found =
          GetUserFolder(sid.CStr(), kFolderDocuments, folder, given.IsEmpty() ? nullptr : given.CStr());
      EXPECT_EQ(found, std::string(test.expected) != "<none>");
      EXPECT_EQ(Utf8(folder), found ? Utf8(expected) : "");
    }
  }
}

TEST(UserFolders, TemporaryFolderIsTmpThenTemp) {
  AccountPlace place;
  place.Add({.name = "Tmp", .hive = {{"Environment", "TMP", "D:\\a"}, {"Environment", "TEMP", "D:\\b"}}});
  place.Add({.name = "Empty", .hive = {{"Environment", "TMP", ""}, {"Environment", "TEMP", "D:\\b"}}});
  place.Add({.name = "Temp", .hive = {{"Environment", "TEMP", "%USERPROFILE%\\T", kExpand}}});
  place.Add({.name = "None", .hive = {{"Environment", "Path", "D:\\b"}}});
  WString folder;
  EXPECT_TRUE(GetUserFolder(Wide(place.Sid("Tmp")).CStr(), L"TEMP", folder));
  EXPECT_EQ(Utf8(folder), "D:\\a");
  EXPECT_TRUE(GetUserFolder(Wide(place.Sid("Empty")).CStr(), kFolderTemp, folder));
  EXPECT_EQ(Utf8(folder), "D:\\b");
  EXPECT_TRUE(GetUserFolder(Wide(place.Sid("Temp")).CStr(), kFolderTemp, folder));
  EXPECT_EQ(Utf8(folder), Utf8(place.Profile("Temp")) + "\\T");
  EXPECT_FALSE(GetUserFolder(Wide(place.Sid("None")).CStr(), kFolderTemp, folder));
}

// A leading %USERPROFILE% that is expanded by the system would be the profile of whoever runs this.
TEST(UserFolders, NeedAProfileForItsVariable) {
  AccountPlace place;
  place.Add({.name = "Anna",
             .profileImagePath = "",
             .isLoggedOn = true,
             .hive = {{kShellFoldersKey, "Desktop", "%USERPROFILE%\\Desktop", kText}}});
  WString folder(L"before");
  EXPECT_FALSE(GetUserFolder(Wide(place.Sid("Anna")).CStr(), kFolderDesktop, folder));
  EXPECT_TRUE(folder.IsEmpty());
}

TEST(UserFolders, ArentGuessedWithoutAHive) {
  AccountPlace place;
  place.Add({.name = "Eve", .hasHive = false});
  WString folder;
  const WString profile = place.Profile("Eve");
  EXPECT_FALSE(GetUserFolder(Wide(place.Sid("Eve")).CStr(), kFolderDesktop, folder, profile.CStr()));
}

}  // namespace
