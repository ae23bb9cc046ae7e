// The processes and rights of a machine folder: under Wine there is no other account's process, and no key
// that is denied.
#include <gtest/gtest.h>

#include <memory>

#include "foundation/acl_buffer.h"
#include "foundation/privileges.h"
#include "foundation/processes.h"
#include "foundation/registry.h"
#include "foundation/unique_handle.h"
#include "machine/machine.h"
#include "support/registry_place.h"
#include "support/test_place.h"

namespace {

class MachineProcesses : public testing::Test {
 protected:
  MachineProcesses() {
    machine::Machine machine = machine::ThisMachine();
    machine.settings.processes = {{"C:\\Windows\\System32\\winlogon.exe", "SYSTEM", 0},
                                  {"C:\\Program Files\\Editor\\editor.exe", "Anna", 1}};
    machine::UseMachine(machine);
  }

  static uint32_t Find(const wchar_t* fileName) {
    wchar_t path[kImagePathCapacity];
    for (uint32_t id = 8; id < 4000; id += 4) {
      if (GetProcessImagePath(id, path) && WString(path).LastComponent() == fileName) return id;
    }
    return 0;
  }

  RegistryPlace place_;
};

TEST_F(MachineProcesses, ThreadActsAsTheSystemUntilItReverts) {
  const std::unique_ptr<uint8_t[]> privileges(EnableProcessPrivileges());
  const WString path = L"C:\\for the system.txt";
  WriteBytes(path.CStr(), "x");
  BYTE system[SECURITY_MAX_SID_SIZE];
  DWORD size = sizeof(system);
  ASSERT_TRUE(CreateWellKnownSid(WinLocalSystemSid, nullptr, system, &size));
  AclBuffer list;
  ASSERT_TRUE(list.Prepare());
  list.AddAllowAll(system, 0);
  ASSERT_TRUE(list.ApplyToPath(path.CStr(), kAclProtected, nullptr));
  const auto mayRead = [&] {
    return static_cast<bool>(
        UniqueFile(CreateFileW(path.CStr(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr)));
  };
  EXPECT_FALSE(mayRead());
  EXPECT_EQ(ImpersonateProcess(L"no such program.exe"), nullptr);
  const UniqueHandle token(ImpersonateProcess(L"WinLogon.exe"));
  ASSERT_TRUE(token);
  EXPECT_TRUE(mayRead());
  EXPECT_TRUE(RevertToSelf());
  EXPECT_FALSE(mayRead());
}

// A key that can't be read is there all the same.
TEST_F(MachineProcesses, KeyThatIsDeniedCountsAsPresent) {
  machine::Machine machine = machine::ThisMachine();
  machine::Account bob;
  bob.name = machine.settings.runAs = "Bob";
  bob.sid = "S-1-5-21-1-2-3-1002";
  machine.accounts.push_back(bob);
  machine::UseMachine(machine);
  const WString others = L"HKU\\" + Wide(machine.FindAccount("Anna")->sid) + L"\\Software";
  EXPECT_EQ(OpenKey(others.CStr(), KEY_READ), nullptr);
  EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_TRUE(KeyExists(others.CStr()));
  EXPECT_FALSE(KeyExists(L"HKU\\S-1-5-21-1-2-3-1003"));
}

TEST_F(MachineProcesses, IsTerminatedAloneAndForGood) {
  const uint32_t editor = Find(L"editor.exe");
  const uint32_t other = Find(L"winlogon.exe");
  EXPECT_TRUE(IsProcessAlive(editor));
  TerminateProcessHard(editor);
  EXPECT_FALSE(IsProcessAlive(editor));
  EXPECT_TRUE(IsProcessAlive(other));
}

}  // namespace
