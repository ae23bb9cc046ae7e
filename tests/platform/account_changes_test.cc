// New accounts, their groups, passwords and profiles, as the calls make them in the machine folder.
#include <gtest/gtest.h>
#include <windows.h>
#include <lm.h>
#include <sys/wait.h>
#include <unistd.h>
#include <userenv.h>

#include <atomic>
#include <set>
#include <thread>

#include "foundation/unique_handle.h"
#include "machine/hive.h"
#include "machine/profile_list.h"
#include "platform/test_machine.h"
#include "userenv/profile_making.h"

// Declared in not every SDK.
extern "C" NET_API_STATUS WINAPI NetUserSetInfo(LPCWSTR, LPCWSTR, DWORD, LPBYTE, LPDWORD);

namespace {

using namespace machine;

DWORD Add(const std::string& name, const wchar_t* password = nullptr) {
  const std::u16string wide = Wide16(name);
  USER_INFO_1 info = {};
  info.usri1_name = const_cast<wchar_t*>(AsWide(wide));
  info.usri1_password = const_cast<wchar_t*>(password);
  info.usri1_priv = USER_PRIV_USER;
  info.usri1_flags = UF_SCRIPT | UF_DONT_EXPIRE_PASSWD;
  return NetUserAdd(nullptr, 1, reinterpret_cast<BYTE*>(&info), nullptr);
}

DWORD SetText(const wchar_t* name, DWORD level, const wchar_t* text) {
  return NetUserSetInfo(nullptr, name, level, reinterpret_cast<BYTE*>(&text), nullptr);
}

// What is on the disk, whatever the process remembers.
Machine OnDisk(const TestMachine& place) {
  Machine machine;
  std::string error;
  EXPECT_TRUE(Machine::Open(place.Folder(), machine, &error)) << error;
  return machine;
}

HRESULT MakeProfileOf(const TestMachine& place, const std::string& name, std::string& path) {
  wchar_t buffer[MAX_PATH] = {};
  const HRESULT result =
      CreateProfile(AsWide(Wide16(place.Sid(name))), AsWide(Wide16(name)), buffer, MAX_PATH);
  path = ToUtf8(buffer);
  return result;
}

std::string ShellFolder(const std::string& hiveFile, const char* name) {
  std::shared_ptr<Hive> hive;
  std::string text;
  if (Hive::Open(hiveFile, false, hive) != ERROR_SUCCESS) return "no hive";
  hive->ReadText("Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders", name, text);
  return text;
}

// A name that Windows refuses must be refused here, too, or a restore that works here fails there.
TEST(NewAccounts, RefuseNamesThatWindowsRefuses) {
  TestMachine place;
  const size_t before = OnDisk(place).accounts.size();
  for (const char* name : {"", "...", "  ", "Dot.", "123456789012345678901", "a\tb"})
    EXPECT_EQ(Add(name), DWORD{NERR_BadUsername}) << name;
  for (const char c : std::string("\"/\\[]:;|=,+*?<>@"))
    EXPECT_EQ(Add(std::string("a") + c), DWORD{NERR_BadUsername}) << c;
  EXPECT_EQ(Add("anna"), DWORD{NERR_UserExists});
  for (const char* name : {"administrators", "SYSTEM"}) EXPECT_EQ(Add(name), DWORD{NERR_GroupExists}) << name;
  EXPECT_EQ(OnDisk(place).accounts.size(), before);
  for (const char* name : {"12345678901234567890", "Zoë Ångström", "日本語", "x.y z"})
    EXPECT_EQ(Add(name), 0u) << name;
  EXPECT_EQ(OnDisk(place).FindAccount("zoë ångström")->sid, place.Sid("Zoë Ångström"));
}

TEST(NewAccounts, GetASidOfTheMachineThatNoOtherHas) {
  TestMachine place;
  ASSERT_EQ(Add("Eve"), 0u);
  ASSERT_EQ(Add("Max"), 0u);
  const std::string anna = place.Sid("Anna");
  const std::string authority = anna.substr(0, anna.rfind('-') + 1);
  EXPECT_EQ(place.Sid("Eve"), authority + "1003");
  place.Reopen();
  EXPECT_EQ(place.Sid("Max"), authority + "1004");
  EXPECT_EQ(ThisMachine().FindAccount("Eve")->flags, DWORD{UF_NORMAL_ACCOUNT | UF_DONT_EXPIRE_PASSWD});
}

TEST(NewAccounts, NeedAnAdministratorAndADriveThatIsWritten) {
  TestMachine place;
  place.RunAs("Bob");
  EXPECT_EQ(Add("Eve"), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(SetText(L"Anna", 1003, L"x"), DWORD{ERROR_ACCESS_DENIED});
  std::string path;
  EXPECT_EQ(MakeProfileOf(place, "Anna", path), E_ACCESSDENIED);
  place.RunAs("Anna");
  // A dead disk that is attached: its Windows would never know the account.
  for (const bool isReadOnly : {true, false}) {
    Machine attached = OnDisk(place);
    attached.settings.drives['C'] = place.Folder() + "/C";
    if (isReadOnly) attached.settings.readOnlyDrives = "C";
    UseMachine(attached);
    EXPECT_EQ(Add("Eve"), DWORD{ERROR_WRITE_PROTECT});
  }
  EXPECT_EQ(OnDisk(place).FindAccount("Eve"), nullptr);
}

TEST(NewAccounts, LogOnWithTheirPasswordOnly) {
  TestMachine place;
  ASSERT_EQ(Add("Eve", L"Secret ✓"), 0u);
  const auto logOn = [](const wchar_t* name, const wchar_t* password) -> DWORD {
    UniqueHandle token;
    return LogonUserW(name, nullptr, password, 2, 0, token.Receive()) ? ERROR_SUCCESS : GetLastError();
  };
  EXPECT_EQ(logOn(L"eve", L"Secret ✓"), 0u);
  EXPECT_EQ(logOn(L"Eve", L"secret ✓"), DWORD{ERROR_LOGON_FAILURE});
  EXPECT_EQ(logOn(L"Eve", L""), DWORD{ERROR_LOGON_FAILURE});
  EXPECT_EQ(logOn(L"Nobody", L"x"), DWORD{ERROR_LOGON_FAILURE});
  EXPECT_EQ(BytesOf(place.Folder() + "/accounts.ini").find("Secret"), std::string::npos);
  EXPECT_EQ(SetText(L"Eve", 1003, L""), 0u);
  EXPECT_EQ(logOn(L"Eve", L""), DWORD{ERROR_ACCOUNT_RESTRICTION});
  EXPECT_EQ(SetText(L"Eve", 1011, L"Eve Stone"), 0u);
  EXPECT_EQ(SetText(L"Nobody", 1011, L"x"), DWORD{NERR_UserNotFound});
  EXPECT_EQ(OnDisk(place).FindAccount("Eve")->fullName, "Eve Stone");
}

// Each of two programs reads the file, adds its own account and writes it: without a lock, one is lost.
TEST(NewAccounts, OfTwoProgramsAreBothKept) {
  constexpr int kPrograms = 4, kEach = 12;
  TestMachine place;
  for (int program = 0; program < kPrograms; ++program) {
    if (fork() != 0) continue;
    int failures = 0;
    for (int i = 0; i < kEach; ++i) {
      failures += Add("P" + std::to_string(program) + "-" + std::to_string(i)) != 0;
    }
    _exit(failures);
  }
  for (int status = 0; wait(&status) > 0;) EXPECT_EQ(status, 0);
  std::set<std::string> sids;
  const Machine machine = OnDisk(place);
  for (const Account& account : machine.accounts) sids.insert(account.sid);
  EXPECT_EQ(machine.accounts.size(), 4u + kPrograms * kEach);
  EXPECT_EQ(sids.size(), machine.accounts.size());
  // This program has learnt of none of them yet, and mustn't drop them.
  EXPECT_EQ(Add("P0-0"), DWORD{NERR_UserExists});
  EXPECT_EQ(Add("Last"), 0u);
  EXPECT_EQ(OnDisk(place).accounts.size(), machine.accounts.size() + 1);
}

// A worker makes an account while another thread looks at them: it must not look at memory that is gone.
TEST(NewAccounts, MayBeLookedAtMeanwhile) {
  TestMachine place;
  std::atomic<bool> isDone = false;
  std::thread looker([&] {
    while (!isDone) {
      BYTE* buffer = nullptr;
      DWORD count = 0, total = 0;
      NetUserEnum(nullptr, 3, 0, &buffer, MAX_PREFERRED_LENGTH, &count, &total, nullptr);
      NetApiBufferFree(buffer);
      BYTE sid[SECURITY_MAX_SID_SIZE];
      wchar_t domain[64];
      DWORD size = sizeof sid, length = 64;
      SID_NAME_USE use;
      LookupAccountNameW(nullptr, L"Guest", sid, &size, domain, &length, &use);
    }
  });
  for (int i = 0; i < 60; ++i) EXPECT_EQ(Add("Eve" + std::to_string(i)), 0u);
  isDone = true;
  looker.join();
}

// The account's folders, as its hive names them, must be its own and not the default profile's.
TEST(NewProfiles, AreMadeFromTheDefaultOne) {
  TestMachine place;
  PutBytes(place.Disk("C:\\Users\\Default\\Documents\\Welcome.txt"), "hello");
  ASSERT_EQ(Add("Eve"), 0u);
  std::string path;
  ASSERT_EQ(MakeProfileOf(place, "Eve", path), S_OK);
  EXPECT_EQ(path, "C:\\Users\\Eve");
  EXPECT_EQ(BytesOf(place.Disk(path + "\\Documents\\Welcome.txt")), "hello");
  EXPECT_TRUE(GetFileAttributesW(L"C:\\Users\\Eve\\AppData") & FILE_ATTRIBUTE_HIDDEN);
  EXPECT_TRUE(GetFileAttributesW(L"C:\\Users\\Eve\\NTUSER.DAT") & FILE_ATTRIBUTE_HIDDEN);
  EXPECT_FALSE(GetFileAttributesW(L"C:\\Users\\Eve") & FILE_ATTRIBUTE_HIDDEN) << "as the default one is";
  const std::string hive = place.Disk(path + "\\NTUSER.DAT");
  EXPECT_EQ(ShellFolder(hive, "Personal"), "C:\\Users\\Eve\\Documents");
  EXPECT_EQ(ShellFolder(place.Disk("C:\\Users\\Default\\NTUSER.DAT"), "Personal"),
            "C:\\Users\\Default\\Documents");
  place.Reopen();
  EXPECT_EQ(ProfileOf(place.Sid("Eve")), "C:\\Users\\Eve");
  EXPECT_EQ(MakeProfileOf(place, "Eve", path), HRESULT_FROM_WIN32(ERROR_ALREADY_EXISTS));
}

// Another account's files must not become readable by way of a folder with the right name.
TEST(NewProfiles, TakeNoFolderThatIsThere) {
  TestMachine place;
  const char* const names[] = {"eve", "Eve.NORVANE-PC", "Eve.NORVANE-PC.000"};
  for (const std::string name : names) std::filesystem::create_directory(place.Disk("C:\\Users\\" + name));
  ASSERT_EQ(Add("Eve"), 0u);
  std::string path;
  ASSERT_EQ(MakeProfileOf(place, "Eve", path), S_OK);
  EXPECT_EQ(path, "C:\\Users\\Eve.NORVANE-PC.001");
  for (const std::string name : names)
    EXPECT_TRUE(std::filesystem::is_empty(place.Disk("C:\\Users\\" + name))) << name;
}

TEST(NewProfiles, AreForTheirAccountAndAdministrators) {
  TestMachine place;
  ASSERT_EQ(Add("Eve"), 0u);
  std::string path;
  ASSERT_EQ(MakeProfileOf(place, "Eve", path), S_OK);
  for (const auto& [account, mayWrite] : {std::pair{"Eve", true}, {"Bob", false}, {"Anna", true}}) {
    place.RunAs(account);
    UniqueFile file(CreateFileW(L"C:\\Users\\Eve\\Documents\\a.txt", GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                0, nullptr));
    EXPECT_EQ(static_cast<bool>(file), mayWrite) << account;
  }
}

}  // namespace
