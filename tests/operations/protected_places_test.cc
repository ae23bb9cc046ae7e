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
  struct {
    std::string path;
    const char* protection;
  } cases[] = {
      {drive + "\\", "root"},
      {drive + "\\Windows", "windows"},
      {drive + "\\windows\\SYSTEM32\\x", "windows"},
      {drive + "\\Windows\\", "windows"},
      {drive + "\\Windows\\Temp\\new\\deep", "windows"},
      {drive + "\\Windows2", "free"},
      {drive + "\\Program Files", "programs"},
      {drive + "\\Program Files (x86)\\x", "programs"},
      {drive + "\\PROGRAM FILES\\x", "programs"},
      {drive + "\\ProgramData\\x", "programs"},
      {ProfilesFolder(), "profiles"},
      {ProfilesFolder() + "\\", "profiles"},
      {drive + "\\Data", "free"},
      {drive + "\\Data\\", "free"},
      {"X:\\Data", "free"},
      {"X:\\", "free"},
      {"\\\\server\\share\\x", "free"},
      {"\\\\localhost\\" + drive.substr(0, 1) + "$\\Windows\\x", "windows"},
      {"\\\\localhost\\" + drive.substr(0, 1) + "$", "root"},
      {"\\\\127.0.0.1\\Admin$\\System32", "windows"},
      {"", "no path"},
      {drive, "no path"},
      {drive + "Windows", "no path"},
      {drive + "\\Data\\..\\Windows", "no path"},
      {drive + "/Windows", "no path"},
      {"\\\\?\\" + drive + "\\Windows", "no path"},
      {"\\\\.\\" + drive + "\\Windows", "no path"},
      {drive + "\\Windows.", "no path"},
      {drive + "\\Windows::$DATA", "no path"},
      {"Documents", "no path"},
  };
  for (const auto& test : cases) EXPECT_EQ(Of(test.path), test.protection) << test.path;
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

TEST_F(ProtectedPlacesTest, EachHasItsReason) {
  for (int i = 1; i < 7; i++) EXPECT_NE(ProtectionText(static_cast<PlaceProtection>(i))[0], 0) << i;
}

}  // namespace
