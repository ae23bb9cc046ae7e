// Folders on systems before Windows Vista.
#include <gtest/gtest.h>

#include "machine/machine.h"
#include "support/account_place.h"
#include "users/user_folders.h"

namespace {

TEST(UserFolders, AreThoseOfTheOldLayoutBeforeVista) {
  AccountPlace place;
  const WString sid = place.Add({.name = "Anna", .hive = {{kShellFoldersKey, "Personal", "D:\\Docs"}}});
  const WString noHive = place.Add({.name = "NoHive", .hasHive = false});
  machine::ThisMachine().settings.major = 5;
  machine::ThisMachine().settings.minor = 1;

  WString folder;
  EXPECT_TRUE(GetUserFolder(sid.CStr(), L"local appdata", folder, L"Q:\\Anna"));
  EXPECT_EQ(Utf8(folder), "Q:\\Anna\\Local Settings\\Application Data");
  EXPECT_FALSE(place.IsHiveLoaded("Anna")) << "the registry isn't needed for it";
  EXPECT_TRUE(GetUserFolder(sid.CStr(), kFolderLocalAppData, folder));
  EXPECT_EQ(Utf8(folder), Utf8(place.Profile("Anna")) + "\\Local Settings\\Application Data");
  EXPECT_TRUE(GetUserFolder(sid.CStr(), kFolderDownloads, folder));
  EXPECT_EQ(Utf8(folder), "D:\\Docs\\Downloads");
  EXPECT_FALSE(GetUserFolder(noHive.CStr(), kFolderDownloads, folder));
  EXPECT_TRUE(folder.IsEmpty());
}

}  // namespace
