// SIDs, accounts by name, and their folders.
#include <gtest/gtest.h>
#include <windows.h>
#include <sddl.h>
#include <shlobj.h>

#include "machine/sid_text.h"
#include "platform/test_machine.h"

namespace {

using namespace machine;

TEST(Sid, TextComesBack) {
  for (const char* text : {"S-1-5-18", "S-1-1-0", "S-1-5-21-1-4294967295-3-1001", "S-1-12-1-5",
                           "S-1-0x010000000000-7", "S-1-5-1-2-3-4-5-6-7-8-9-10-11-12-13-14-15"}) {
    PSID sid = nullptr;
    ASSERT_TRUE(ConvertStringSidToSidW(AsWide(Wide16(text)), &sid)) << text;
    wchar_t* back = nullptr;
    EXPECT_TRUE(IsValidSid(sid));
    EXPECT_TRUE(ConvertSidToStringSidW(sid, &back));
    EXPECT_EQ(ToUtf8(back), text);
    LocalFree(back);
    LocalFree(sid);
  }
  for (const char* text : {"", "S-1-5", "S-2-5-18", "S-1-5-", "S-1-5-x", "S-1-5-4294967296", "Anna",
                           "S-1-5-1-2-3-4-5-6-7-8-9-10-11-12-13-14-15-16"}) {
    PSID sid = nullptr;
    EXPECT_FALSE(ConvertStringSidToSidW(AsWide(Wide16(text)), &sid)) << text;
  }
}

// A SID of a damaged hive that counts more parts than its bytes hold.
TEST(Sid, IsNotReadBeyondItsBytes) {
  const std::string whole = SidBytes("S-1-5-21-1-2-3-1001");
  for (size_t length = 0; length < whole.size(); ++length) {
    EXPECT_EQ(SidText(std::string_view(whole).substr(0, length)), "") << length;
  }
  EXPECT_EQ(SidText(std::string_view(whole)), "S-1-5-21-1-2-3-1001");
}

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
  // The layout of the years before.
  plan.major = 5;
  TestMachine old(plan);
  EXPECT_EQ(FolderOf(CSIDL_PROFILE), "C:\\Documents and Settings\\Anna");
  EXPECT_EQ(FolderOf(CSIDL_MYMUSIC), "C:\\Documents and Settings\\Anna\\My Documents\\My Music");
}

}  // namespace
