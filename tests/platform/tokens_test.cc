// Tokens, privileges, processes and who acts as whom.
#include "machine/token.h"

#include <gtest/gtest.h>
#include <psapi.h>
#include <sddl.h>
#include <tlhelp32.h>
#include <wtsapi32.h>

#include <thread>

#include "machine/sid_text.h"
#include "platform/privilege_switch.h"
#include "platform/test_machine.h"

namespace {

using namespace machine;

struct OwnedHandle {
  HANDLE value = nullptr;
  ~OwnedHandle() {
    if (value) CloseHandle(value);
  }
};

std::string UserOf(HANDLE token) {
  alignas(TOKEN_USER) BYTE buffer[256];
  DWORD size = 0;
  if (!GetTokenInformation(token, TokenUser, buffer, sizeof buffer, &size)) return "<none>";
  return SidText(reinterpret_cast<TOKEN_USER*>(buffer)->User.Sid);
}

DWORD FindProcessNamed(const std::string& name) {
  OwnedHandle snapshot{CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0)};
  PROCESSENTRY32W entry;
  entry.dwSize = sizeof entry;
  for (BOOL more = Process32FirstW(snapshot.value, &entry); more;
       more = Process32NextW(snapshot.value, &entry)) {
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

// Whoever puts the old state back must get exactly what was switched.
TEST(Tokens, TellThePreviousState) {
  TestMachine place;
  OwnedHandle token;
  ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, &token.value));
  struct {
    DWORD count = 2;
    LUID_AND_ATTRIBUTES rows[2] = {};
  } wanted, previous;
  ASSERT_TRUE(LookupPrivilegeValueW(nullptr, L"sebackupprivilege", &wanted.rows[0].Luid));
  ASSERT_TRUE(LookupPrivilegeValueW(nullptr, L"SeChangeNotifyPrivilege", &wanted.rows[1].Luid));
  for (auto& row : wanted.rows) row.Attributes = SE_PRIVILEGE_ENABLED;
  auto* state = reinterpret_cast<TOKEN_PRIVILEGES*>(&wanted);
  auto* before = reinterpret_cast<TOKEN_PRIVILEGES*>(&previous);
  DWORD size = 0;
  EXPECT_FALSE(AdjustTokenPrivileges(token.value, FALSE, state, 4, before, &size));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
  EXPECT_FALSE(HasPrivilege(kBackupPrivilege));
  ASSERT_TRUE(AdjustTokenPrivileges(token.value, FALSE, state, sizeof previous, before, &size));
  ASSERT_EQ(previous.count, 1u);  // the other one was on already
  EXPECT_EQ(previous.rows[0].Luid.LowPart, kBackupPrivilege);
  EXPECT_EQ(previous.rows[0].Attributes, 0u);
  ASSERT_TRUE(AdjustTokenPrivileges(token.value, FALSE, before, 0, nullptr, nullptr));
  EXPECT_FALSE(HasPrivilege(kBackupPrivilege));
  LUID luid;
  EXPECT_FALSE(LookupPrivilegeValueW(nullptr, L"SeNoSuchPrivilege", &luid));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_SUCH_PRIVILEGE});
}

TEST(Processes, AreThoseOfTheMachineAndThisOne) {
  TestMachine place;
  DWORD ids[64], used = 0;
  ASSERT_TRUE(K32EnumProcesses(ids, sizeof ids, &used));
  EXPECT_EQ(used / sizeof(DWORD), 6u);  // System, three of the system, explorer, this one
  DWORD session = 77;
  EXPECT_TRUE(ProcessIdToSessionId(GetCurrentProcessId(), &session));
  EXPECT_EQ(session, WTSGetActiveConsoleSessionId());
  EXPECT_TRUE(ProcessIdToSessionId(FindProcessNamed("SERVICES.EXE"), &session));
  EXPECT_EQ(session, 0u);
  EXPECT_FALSE(ProcessIdToSessionId(99999999, &session));

  SetPrivilege(L"SeDebugPrivilege", true);
  OwnedHandle explorer{OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, FindProcessNamed("explorer.exe"))};
  OwnedHandle token;
  ASSERT_TRUE(OpenProcessToken(explorer.value, TOKEN_QUERY, &token.value));
  EXPECT_EQ(UserOf(token.value), place.Sid("Anna"));
  wchar_t path[MAX_PATH];
  DWORD size = MAX_PATH;
  ASSERT_TRUE(QueryFullProcessImageNameW(explorer.value, 0, path, &size));
  EXPECT_EQ(ToUtf8(path), "C:\\Windows\\explorer.exe");
  EXPECT_EQ(size, 23u);
  EXPECT_EQ(K32GetModuleFileNameExW(explorer.value, nullptr, path, MAX_PATH), 23u);
}

TEST(Processes, OfOthersNeedTheDebugPrivilege) {
  TestMachine place;
  const DWORD winlogon = FindProcessNamed("winlogon.exe");
  const auto open = [](DWORD access, DWORD id) {
    OwnedHandle process{OpenProcess(access, FALSE, id)};
    return process.value != nullptr;
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

TEST(Processes, EndWhenTheyAreTerminated) {
  TestMachine place;
  const DWORD id = FindProcessNamed("explorer.exe");
  OwnedHandle process{OpenProcess(PROCESS_TERMINATE | SYNCHRONIZE, FALSE, id)};
  EXPECT_EQ(WaitForSingleObject(process.value, 0), DWORD{WAIT_TIMEOUT});
  EXPECT_TRUE(TerminateProcess(process.value, 5));
  EXPECT_EQ(WaitForSingleObject(process.value, 0), DWORD{WAIT_OBJECT_0});
  DWORD code = 0;
  EXPECT_TRUE(GetExitCodeProcess(process.value, &code));
  EXPECT_EQ(code, 5u);
  EXPECT_EQ(FindProcessNamed("explorer.exe"), 0u);
  EXPECT_EQ(OpenProcess(SYNCHRONIZE, FALSE, id), nullptr);
}

// No program of the machine can run here, and none may seem to have been started.
TEST(Processes, CantBeStarted) {
  TestMachine place;
  PutBytes(place.Disk("C:\\Windows\\notepad.exe"), "MZ");
  STARTUPINFOW start = {};
  PROCESS_INFORMATION process = {};
  wchar_t line[] = L"\"C:\\Windows\\notepad.exe\" a.txt", missing[] = L"C:\\None\\x.exe a";
  EXPECT_FALSE(CreateProcessW(nullptr, line, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_BAD_EXE_FORMAT});
  EXPECT_FALSE(
      CreateProcessW(nullptr, missing, nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start, &process));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

// Impersonation that reached another thread would read files as the wrong person.
TEST(Impersonation, BelongsToItsThread) {
  TestMachine place;
  SetPrivilege(L"SeDebugPrivilege", true);
  OwnedHandle process{OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, FindProcessNamed("winlogon.exe"))};
  OwnedHandle token, copy;
  ASSERT_TRUE(OpenProcessToken(process.value, TOKEN_DUPLICATE | TOKEN_QUERY, &token.value));
  ASSERT_TRUE(DuplicateToken(token.value, SecurityImpersonation, &copy.value));
  ASSERT_TRUE(ImpersonateLoggedOnUser(copy.value));
  EXPECT_EQ(TokenUserText(*ThreadToken()), kSystemSid);
  std::string other;
  std::thread([&] { other = TokenUserText(*ThreadToken()); }).join();
  EXPECT_EQ(other, place.Sid("Anna"));
  ASSERT_TRUE(RevertToSelf());
  EXPECT_EQ(TokenUserText(*ThreadToken()), place.Sid("Anna"));
}

TEST(Sessions, ConsoleUserIsThatOfTheMachine) {
  TestMachine place;
  const auto name = [] {
    wchar_t* text = nullptr;
    DWORD size = 0;
    EXPECT_TRUE(WTSQuerySessionInformationW(WTS_CURRENT_SERVER_HANDLE, WTSGetActiveConsoleSessionId(),
                                            WTSUserName, &text, &size));
    std::string result = ToUtf8(text) + "|" + std::to_string(size);
    WTSFreeMemory(text);
    return result;
  };
  EXPECT_EQ(name(), "Anna|10");
  Machine changed = ThisMachine();
  changed.settings.consoleAccount = "";
  UseMachine(changed);
  EXPECT_EQ(name(), "|2");  // the logon screen
  DWORD session = 77;
  ProcessIdToSessionId(GetCurrentProcessId(), &session);
  EXPECT_EQ(session, 0u);
  EXPECT_EQ(TokenUserText(*ProcessToken()), kSystemSid);
}

}  // namespace
