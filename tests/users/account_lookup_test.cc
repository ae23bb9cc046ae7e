#include "users/account_lookup.h"

#include <gtest/gtest.h>
#include <windows.h>
// The header below needs windows.h before it.
#include <userenv.h>

#include "support/account_place.h"

namespace {

// <profiles folder>\<name> of this system, made for the time of a test.
class ConventionalProfile {
 public:
  explicit ConventionalProfile(const wchar_t* name) {
    wchar_t folder[MAX_PATH];
    DWORD size = MAX_PATH;
    if (!GetProfilesDirectoryW(folder, &size)) ADD_FAILURE() << "no profiles folder";
    madeParent_ = CreateDirectoryW(folder, nullptr);
    parent_ = folder;
    path.Concat(folder, L"\\", name);
    EXPECT_TRUE(CreateDirectoryW(path.CStr(), nullptr)) << Utf8(path);
  }
  ~ConventionalProfile() {
    RemoveDirectoryW(path.CStr());
    if (madeParent_) RemoveDirectoryW(parent_.CStr());
  }
  WString path;

 private:
  WString parent_;
  bool madeParent_;
};

// Would catch data taken from a folder that the account has left, or not found at all.
TEST(AccountLookup, TrustsDatabaseThenProfileListThenConvention) {
  AccountPlace place;
  const std::string kept = Utf8(place.files.Folder("kept"));
  place.Add({.name = "Database", .databaseProfile = kept, .profileImagePath = "Q:\\other"});
  place.Add({.name = "List", .databaseProfile = "Q:\\gone", .profileImagePath = "Q:\\listed"});
  place.Add({.name = "NorvaneTest", .profileImagePath = ""});
  place.Add({.name = "Nowhere", .profileImagePath = ""});
  ConventionalProfile conventional(L"NorvaneTest");

  WString sid, profile;
  EXPECT_TRUE(GetAccountSidAndProfile(L"Database", sid, &profile));
  EXPECT_EQ(Utf8(profile), kept);
  EXPECT_EQ(Utf8(sid), place.Sid("Database"));
  EXPECT_TRUE(GetAccountSidAndProfile(L"List", sid, &profile));
  EXPECT_EQ(Utf8(profile), "Q:\\listed") << "ProfileList's path isn't tested";
  EXPECT_TRUE(GetAccountSidAndProfile(L"NorvaneTest", sid, &profile));
  EXPECT_TRUE(profile.EqualsNoCase(conventional.path)) << Utf8(profile);
  EXPECT_FALSE(GetAccountSidAndProfile(L"Nowhere", sid, &profile));
  EXPECT_TRUE(profile.IsEmpty()) << Utf8(profile);
  EXPECT_TRUE(GetAccountSidAndProfile(L"Nowhere", sid)) << "no profile was asked for";
}

// A group's name is nobody's.
TEST(AccountLookup, LeavesTheProfileAloneWithoutASid) {
  AccountPlace place;
  WString sid, profile(L"before");
  for (const wchar_t* name : {L"Nobody", L"", L"Administrators"}) {
    EXPECT_FALSE(GetAccountSidAndProfile(name, sid, &profile)) << Utf8(name);
    EXPECT_EQ(Utf8(profile), "before");
  }
}

}  // namespace
