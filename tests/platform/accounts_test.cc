// Accounts by name and SID, their database, their profiles and folders.
#include <gtest/gtest.h>
#include <windows.h>
#include <lm.h>
#include <sddl.h>
#include <shlobj.h>
#include <userenv.h>

#include "machine/sid_text.h"
#include "platform/test_machine.h"

namespace {

using namespace machine;

// "S-1-…|DOMAIN|use", or the error.
std::string LookUpName(const std::string& name) {
  BYTE sid[SECURITY_MAX_SID_SIZE];
  wchar_t domain[64];
  DWORD size = sizeof sid, length = 64;
  SID_NAME_USE use;
  if (!LookupAccountNameW(nullptr, AsWide(Wide16(name)), sid, &size, domain, &length, &use)) {
    return "error " + std::to_string(GetLastError());
  }
  return SidText(sid) + "|" + ToUtf8(domain) + "|" + std::to_string(use);
}

TEST(AccountLookup, FindsAccountsAndGroups) {
  TestMachine place;
  const std::string anna = place.Sid("Anna") + "|NORVANE-PC|1";
  const struct {
    const char* name;
    std::string expected;
  } cases[] = {
      {"Anna", anna},
      {"aNNA", anna},
      {".\\Anna", anna},
      {"norvane-pc\\anna", anna},
      {"OTHER\\Anna", "error 1332"},
      {"Nobody", "error 1332"},
      {"", "error 1332"},
      {"Administrators", "S-1-5-32-544|BUILTIN|4"},
      {"system", "S-1-5-18|NT AUTHORITY|5"},
  };
  for (const auto& one : cases) EXPECT_EQ(LookUpName(one.name), one.expected) << one.name;
}

// Callers ask for the size first; a size that is one short would write past their buffer.
TEST(AccountLookup, TellsTheRoomItNeeds) {
  TestMachine place;
  DWORD size = 0, length = 0;
  SID_NAME_USE use;
  EXPECT_FALSE(LookupAccountNameW(nullptr, L"Anna", nullptr, &size, nullptr, &length, &use));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
  EXPECT_EQ(size, 28u);
  EXPECT_EQ(length, 11u);  // "NORVANE-PC" and its terminator
  std::vector<BYTE> sid(size);
  std::vector<wchar_t> domain(length);
  EXPECT_TRUE(LookupAccountNameW(nullptr, L"Anna", sid.data(), &size, domain.data(), &length, &use));
  EXPECT_EQ(length, 10u);
  wchar_t name[8];
  DWORD nameLength = 8;
  length = 11;
  EXPECT_TRUE(LookupAccountSidW(nullptr, sid.data(), name, &nameLength, domain.data(), &length, &use));
  EXPECT_EQ(ToUtf8(name), "Anna");
  EXPECT_EQ(nameLength, 4u);
}

TEST(AccountDatabase, ListsAllAccounts) {
  MachinePlan plan = TwoAccounts();
  plan.accounts[1].home = "\\\\server\\profiles\\bob";
  TestMachine place(plan);
  BYTE* buffer = nullptr;
  DWORD count = 0, total = 0;
  ASSERT_EQ(NetUserEnum(nullptr, 3, 0, &buffer, MAX_PREFERRED_LENGTH, &count, &total, nullptr), NERR_Success);
  ASSERT_EQ(count, 4u);  // with the two built-in ones
  EXPECT_EQ(total, 4u);
  const auto* rows = reinterpret_cast<const USER_INFO_3*>(buffer);
  EXPECT_EQ(ToUtf8(rows[0].usri3_name), "Anna");
  EXPECT_EQ(ToUtf8(rows[0].usri3_full_name), "Anna Berg");
  EXPECT_EQ(ToUtf8(rows[0].usri3_profile), "");
  EXPECT_EQ(rows[0].usri3_priv, DWORD{USER_PRIV_ADMIN});
  EXPECT_EQ(rows[0].usri3_user_id, 1001u);
  EXPECT_EQ(ToUtf8(rows[1].usri3_profile), "\\\\server\\profiles\\bob");
  EXPECT_EQ(rows[3].usri3_flags & UF_ACCOUNTDISABLE, DWORD{UF_ACCOUNTDISABLE});
  EXPECT_EQ(NetApiBufferFree(buffer), NERR_Success);
}

TEST(AccountDatabase, TellsOfOneAccount) {
  MachinePlan plan = TwoAccounts();
  plan.accounts[0].home = "D:\\Profiles\\Anna";
  plan.accounts[0].comment = "Comment ✓";
  TestMachine place(plan);
  BYTE* buffer = nullptr;
  ASSERT_EQ(NetUserGetInfo(nullptr, L"ANNA", 4, &buffer), NERR_Success);
  const auto* four = reinterpret_cast<const USER_INFO_4*>(buffer);
  EXPECT_EQ(SidText(four->usri4_user_sid), place.Sid("Anna"));
  EXPECT_EQ(ToUtf8(four->usri4_profile), "D:\\Profiles\\Anna");
  NetApiBufferFree(buffer);
  ASSERT_EQ(NetUserGetInfo(nullptr, L"anna", 11, &buffer), NERR_Success);
  const auto* eleven = reinterpret_cast<const USER_INFO_11*>(buffer);
  EXPECT_EQ(ToUtf8(eleven->usri11_full_name), "Anna Berg");
  EXPECT_EQ(ToUtf8(eleven->usri11_comment), "Comment ✓");
  EXPECT_EQ(eleven->usri11_priv, DWORD{USER_PRIV_ADMIN});
  NetApiBufferFree(buffer);
  EXPECT_EQ(NetUserGetInfo(nullptr, L"Nobody", 4, &buffer), DWORD{NERR_UserNotFound});
  EXPECT_EQ(buffer, nullptr);
}

std::string FolderOf(int id, HANDLE token = nullptr) {
  wchar_t path[MAX_PATH];
  const HRESULT result = SHGetFolderPathW(nullptr, id, token, SHGFP_TYPE_CURRENT, path);
  return SUCCEEDED(result) ? ToUtf8(path) : "error";
}

// The folder row of a moved Documents folder must lead to where it is now.
TEST(Folders, AreWhereTheHiveSays) {
  MachinePlan plan = TwoAccounts();
  plan.accounts[0].folders["Personal"] = "D:\\Anna's papers";
  TestMachine place(plan);
  const struct {
    int id;
    const char* expected;
  } cases[] = {
      {CSIDL_PERSONAL, "D:\\Anna's papers"},
      {CSIDL_DESKTOPDIRECTORY, "C:\\Users\\Anna\\Desktop"},
      {CSIDL_MYVIDEO, "C:\\Users\\Anna\\Videos"},
      {CSIDL_PROFILE, "C:\\Users\\Anna"},
      {CSIDL_WINDOWS, "C:\\Windows"},
      {CSIDL_COMMON_APPDATA, "C:\\ProgramData"},
      {CSIDL_PROGRAM_FILES, "C:\\Program Files (x86)"},
      {CSIDL_PRINTERS, "error"},
  };
  for (const auto& one : cases) EXPECT_EQ(FolderOf(one.id), one.expected);
  std::filesystem::remove_all(place.Disk("D:\\Anna's papers"));
  EXPECT_EQ(FolderOf(CSIDL_PERSONAL), "error");
  EXPECT_EQ(FolderOf(CSIDL_PERSONAL | CSIDL_FLAG_DONT_VERIFY), "D:\\Anna's papers");
}

TEST(Folders, OfAnOldLayout) {
  MachinePlan plan = TwoAccounts();
  plan.major = 5;
  plan.minor = 1;
  plan.build = 2600;
  TestMachine place(plan);
  EXPECT_EQ(FolderOf(CSIDL_PROFILE), "C:\\Documents and Settings\\Anna");
  EXPECT_EQ(FolderOf(CSIDL_MYMUSIC), "C:\\Documents and Settings\\Anna\\My Documents\\My Music");
}

TEST(Profiles, FolderOfThemAll) {
  TestMachine place;
  wchar_t path[MAX_PATH];
  DWORD size = 2;
  EXPECT_FALSE(GetProfilesDirectoryW(path, &size));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
  EXPECT_EQ(size, 9u);
  ASSERT_TRUE(GetProfilesDirectoryW(path, &size));
  EXPECT_EQ(ToUtf8(path), "C:\\Users");
}

}  // namespace
