#include "operations/protected_places.h"

#include <gtest/gtest.h>
#include <userenv.h>
#include <windows.h>

#include "support/account_place.h"

namespace {

std::string Named(PlaceProtection protection) {
  const char* names[] = {"free", "windows", "programs", "profiles", "root", "foreign", "no path"};
  return names[static_cast<int>(protection)];
}

std::string SystemDrive() {
  wchar_t path[MAX_PATH] = {};
  GetSystemWindowsDirectoryW(path, MAX_PATH);
  return Utf8(path).substr(0, 2);
}

std::string ProfilesFolder() {
  wchar_t path[MAX_PATH] = {};
  DWORD size = MAX_PATH;
  EXPECT_TRUE(GetProfilesDirectoryW(path, &size));
  return Utf8(path);
}

class ProtectedPlacesTest : public testing::Test {
 protected:
  AccountPlace machine_;
  std::unique_ptr<ProtectedPlaces> places_;

  void Make() { places_ = std::make_unique<ProtectedPlaces>(*LoadUserTable()); }
  std::string Of(const std::string& path) const { return Named(places_->ProtectionOf(Wide(path).CStr())); }
};

// A path of a stranger's hive or info file by which an administrator's restore would write over the system.
TEST_F(ProtectedPlacesTest, AreProtectedByWhateverSpelling) {
  machine_.Add({.name = "Anna"});
  Make();
  const std::string drive = SystemDrive();
  const std::string share = "\\\\localhost\\" + drive.substr(0, 1) + "$";
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"root", {drive + "\\", share}},
      {"windows",
       {drive + "\\Windows", drive + "\\windows\\SYSTEM32\\x", drive + "\\Windows\\",
        drive + "\\Windows\\Temp\\new\\deep", share + "\\Windows\\x", "\\\\127.0.0.1\\Admin$\\System32"}},
      {"programs",
       {drive + "\\Program Files", drive + "\\Program Files (x86)\\x", drive + "\\PROGRAM FILES\\x",
        drive + "\\ProgramData\\x"}},
      {"profiles", {ProfilesFolder(), ProfilesFolder() + "\\"}},
      {"free",
       {drive + "\\Windows2", drive + "\\Data", drive + "\\Data\\", "X:\\Data", "X:\\",
        "\\\\server\\share\\x"}},
      {"no path",
       {"", drive, drive + "Windows", drive + "\\Data\\..\\Windows", drive + "/Windows",
        "\\\\?\\" + drive + "\\Windows", "\\\\.\\" + drive + "\\Windows", drive + "\\Windows.",
        drive + "\\Windows::$DATA", "Documents"}},
  };
  for (const auto& [protection, paths] : cases) {
    for (const std::string& path : paths) EXPECT_EQ(Of(path), protection) << path;
  }
}

// A hive that sends the data of one account into the profile of another.
TEST_F(ProtectedPlacesTest, ProfilesAreProtectedUnlessTheyAreTargets) {
  machine_.Add({.name = "Anna"});
  machine_.Add({.name = "Bob"});
  machine_.Add({.name = "Bobby"});
  Make();
  const std::string anna = Utf8(machine_.Profile("Anna")), bob = Utf8(machine_.Profile("Bob"));
  EXPECT_EQ(Of(bob + "\\Documents"), "foreign");
  EXPECT_EQ(Of(bob), "foreign");
  places_->AddTargetProfile(Wide(bob).CStr());
  EXPECT_EQ(Of(bob + "\\Documents\\new"), "free");
  EXPECT_EQ(Of(bob), "free");
  EXPECT_EQ(Of(bob + "by\\Documents"), "foreign") << "Bob's profile doesn't hold Bobby's";
  EXPECT_EQ(Of(anna + "\\x"), "foreign");
}

// The profiles of accounts that aren't listed, such as those of a domain, and the pattern of new ones.
TEST_F(ProtectedPlacesTest, FoldersBesideTheProfilesCountAsProfiles) {
  const WString folder = Wide(ProfilesFolder() + "\\norvane-test-DOMAIN");
  const WString open = Wide(ProfilesFolder() + "\\Public");
  CreateDirectoryW(folder.CStr(), nullptr);
  const bool isMade = CreateDirectoryW(open.CStr(), nullptr) != 0;
  Make();
  EXPECT_EQ(Of(Utf8(folder) + "\\Documents"), "foreign");
  EXPECT_EQ(Of(Utf8(open) + "\\Documents"), "free") << "what is public is there for everybody";
  RemoveDirectoryW(folder.CStr());
  if (isMade) RemoveDirectoryW(open.CStr());
}

}  // namespace
