// Tokens, privileges, processes and who acts as whom.
#include "machine/token.h"

#include <gtest/gtest.h>
#include <tlhelp32.h>

#include <thread>

#include "foundation/unique_handle.h"
#include "machine/sid_text.h"
#include "platform/privilege_switch.h"
#include "platform/test_machine.h"

namespace {

using namespace machine;

DWORD FindProcessNamed(const std::string& name) {
  UniqueFile snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  PROCESSENTRY32W entry;
  entry.dwSize = sizeof entry;
  for (BOOL more = Process32FirstW(snapshot.Get(), &entry); more;
       more = Process32NextW(snapshot.Get(), &entry)) {
    if (FoldUtf8(ToUtf8(entry.szExeFile)) == FoldUtf8(name)) return entry.th32ProcessID;
  }
  return 0;
}

// A standard user's program that believed it had the backup privilege would report files as missing.
TEST(Tokens, HoldPrivilegesByTheTypeOfTheAccount) {
  TestMachine place;
  EXPECT_FALSE(HasPrivilege(kBackupPrivilege));  // there, but switched off
  EXPECT_EQ(SetPrivilege(L"SeBackupPrivilege", true), DWORD{ERROR_SUCCESS});
  EXPECT_TRUE(HasPrivilege(kBackupPrivilege));
  EXPECT_TRUE(HasPrivilege(kChangeNotifyPrivilege));
  EXPECT_TRUE(ThreadToken()->IsAdministrator());

  place.RunAs("Bob");
  EXPECT_EQ(SetPrivilege(L"SeBackupPrivilege", true), DWORD{ERROR_NOT_ALL_ASSIGNED});
  EXPECT_FALSE(HasPrivilege(kBackupPrivilege));
  EXPECT_FALSE(ThreadToken()->IsAdministrator());
  EXPECT_TRUE(ThreadToken()->Holds(SidBytes(kEveryoneSid).data()));
  EXPECT_FALSE(ThreadToken()->Holds(SidBytes(kAdministratorsSid).data()));
}

TEST(Processes, OfOthersNeedTheDebugPrivilege) {
  TestMachine place;
  const DWORD winlogon = FindProcessNamed("winlogon.exe");
  const auto open = [](DWORD access, DWORD id) {
    return static_cast<bool>(UniqueHandle(OpenProcess(access, FALSE, id)));
  };
  EXPECT_FALSE(open(PROCESS_QUERY_INFORMATION, winlogon));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_TRUE(open(PROCESS_QUERY_LIMITED_INFORMATION, winlogon));
  EXPECT_TRUE(open(PROCESS_TERMINATE, FindProcessNamed("explorer.exe")));  // Anna's own
  SetPrivilege(L"SeDebugPrivilege", true);
  EXPECT_TRUE(open(PROCESS_QUERY_INFORMATION, winlogon));
  EXPECT_FALSE(open(PROCESS_TERMINATE, 4));
  EXPECT_FALSE(open(SYNCHRONIZE, 0));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
  place.RunAs("Bob");
  EXPECT_FALSE(open(PROCESS_QUERY_LIMITED_INFORMATION, FindProcessNamed("explorer.exe")));
}

// No program of the machine can run here, and none may seem to have been started.
TEST(Processes, CantBeStarted) {
  TestMachine place;
  PutBytes(place.Disk("C:\\Windows\\notepad.exe"), "MZ");
  STARTUPINFOW start = {};
  PROCESS_INFORMATION process = {};
  wchar_t line[] = L"\"C:\\Windows\\notepad.exe\" a.txt";
  EXPECT_FALSE(CreateProcessW(nullptr, line, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_BAD_EXE_FORMAT});
}

// Impersonation that reached another thread would read files as the wrong person.
TEST(Impersonation, BelongsToItsThread) {
  TestMachine place;
  SetPrivilege(L"SeDebugPrivilege", true);
  UniqueHandle process(OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, FindProcessNamed("winlogon.exe")));
  UniqueHandle token, copy;
  ASSERT_TRUE(OpenProcessToken(process.Get(), TOKEN_DUPLICATE | TOKEN_QUERY, token.Receive()));
  ASSERT_TRUE(DuplicateToken(token.Get(), SecurityImpersonation, copy.Receive()));
  ASSERT_TRUE(ImpersonateLoggedOnUser(copy.Get()));
  EXPECT_EQ(TokenUserText(*ThreadToken()), kSystemSid);
  std::string other;
  std::thread([&] { other = TokenUserText(*ThreadToken()); }).join();
  EXPECT_EQ(other, place.Sid("Anna"));
  ASSERT_TRUE(RevertToSelf());
  EXPECT_EQ(TokenUserText(*ThreadToken()), place.Sid("Anna"));
}

}  // namespace
