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

DWORD ThreadOf(DWORD processId) {
  UniqueFile snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
  THREADENTRY32 entry;
  entry.dwSize = sizeof entry;
  BOOL more = Thread32First(snapshot.Get(), &entry);
  while (more && entry.th32OwnerProcessID != processId) more = Thread32Next(snapshot.Get(), &entry);
  return more ? entry.th32ThreadID : 0;
}

// A standard user's program that believed it had the backup privilege would report files as missing.
TEST(Tokens, HoldPrivilegesByTheTypeOfTheAccount) {
  TestMachine place;
  EXPECT_FALSE(HasPrivilege(kBackupPrivilege));  // there, but switched off
  EXPECT_EQ(SetPrivilege(L"SeBackupPrivilege", true), DWORD{ERROR_SUCCESS});
  EXPECT_TRUE(HasPrivilege(kBackupPrivilege));
  EXPECT_TRUE(ThreadToken()->IsAdministrator());

  place.RunAs("Bob");
  EXPECT_EQ(SetPrivilege(L"SeBackupPrivilege", true), DWORD{ERROR_NOT_ALL_ASSIGNED});
  EXPECT_FALSE(HasPrivilege(kBackupPrivilege));
  EXPECT_FALSE(ThreadToken()->IsAdministrator());
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
  place.RunAs("Bob");
  EXPECT_FALSE(open(PROCESS_QUERY_LIMITED_INFORMATION, FindProcessNamed("explorer.exe")));
}

// The last means against a program that doesn't end would do nothing, or be open to everybody.
TEST(Processes, EndWithTheirThread) {
  TestMachine place;
  const DWORD explorer = FindProcessNamed("explorer.exe");
  place.RunAs("Bob");
  EXPECT_EQ(OpenThread(THREAD_TERMINATE, FALSE, ThreadOf(explorer)), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
  place.RunAs("Anna");
  UniqueHandle process(OpenProcess(SYNCHRONIZE, FALSE, explorer));
  UniqueHandle thread(OpenThread(THREAD_TERMINATE, FALSE, ThreadOf(explorer)));
  EXPECT_EQ(WaitForSingleObject(process.Get(), 0), WAIT_TIMEOUT);
  EXPECT_TRUE(TerminateThread(thread.Get(), 0));
  EXPECT_EQ(WaitForSingleObject(process.Get(), 0), WAIT_OBJECT_0);
  EXPECT_EQ(OpenProcess(SYNCHRONIZE, FALSE, explorer), nullptr);
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
