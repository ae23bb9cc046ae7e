// Access lists: who is let in, by which right.
#include <gtest/gtest.h>
#include <windows.h>

#include <shlwapi.h>

#include "machine/security_store.h"
#include "platform/disk_side.h"
#include "platform/privilege_switch.h"

namespace {

DWORD AccessError(const WString& path, DWORD access, DWORD flags = 0) {
  return ErrorOf(Open(path, access, 7, OPEN_EXISTING, flags));
}

struct Entry {
  bool allows;
  uint8_t flags;
  uint32_t mask;
  WELL_KNOWN_SID_TYPE sid;
};

std::vector<uint8_t> Sid(WELL_KNOWN_SID_TYPE kind) {
  std::vector<uint8_t> sid(SECURITY_MAX_SID_SIZE);
  DWORD size = SECURITY_MAX_SID_SIZE;
  EXPECT_TRUE(CreateWellKnownSid(kind, nullptr, sid.data(), &size));
  sid.resize(size);
  return sid;
}

// Straight onto the disk, whatever the rights are.
void Store(const WString& path, const std::vector<Entry>& entries) {
  alignas(ACL) uint8_t space[512] = {};
  auto* list = reinterpret_cast<ACL*>(space);
  EXPECT_TRUE(InitializeAcl(list, sizeof space, ACL_REVISION));
  for (const Entry& entry : entries) {
    const auto add = entry.allows ? AddAccessAllowedAceEx : AddAccessDeniedAceEx;
    EXPECT_TRUE(add(list, ACL_REVISION, entry.flags, entry.mask, Sid(entry.sid).data()));
  }
  std::vector<uint8_t> owner = Sid(WinLocalSystemSid);
  machine::SecurityParts parts;
  parts.owner = owner.data();
  parts.hasList = true;
  parts.list = list;
  EXPECT_TRUE(machine::WriteSecurity(AT_FDCWD, OnDisk(path).c_str(), machine::MakeSecurity(parts)));
}

constexpr Entry kDenyAll = {false, 0, GENERIC_ALL, WinWorldSid};
constexpr Entry kAllowAll = {true, 0, GENERIC_ALL, WinWorldSid};
constexpr DWORD kBackup = FILE_FLAG_BACKUP_SEMANTICS;

class FileSecurity : public testing::Test {
 protected:
  void SetUp() override { Privileges(false); }
  void TearDown() override { Privileges(false); }
  static void Privileges(bool isEnabled) {
    for (const wchar_t* name : {L"SeBackupPrivilege", L"SeRestorePrivilege", L"SeTakeOwnershipPrivilege"}) {
      SetPrivilege(name, isEnabled);
    }
  }
  TestPlace place;
};

// Each row: what the list grants decides, an entry in front wins over one behind.
TEST_F(FileSecurity, TheListDecides) {
  const WString path = place.File("a.txt");
  const struct {
    std::vector<Entry> entries;
    DWORD access, error;
  } cases[] = {
      {{}, GENERIC_READ, ERROR_ACCESS_DENIED},  // an empty list lets nobody in
      {{kAllowAll}, GENERIC_READ | GENERIC_WRITE, 0},
      {{kDenyAll, kAllowAll}, GENERIC_READ, ERROR_ACCESS_DENIED},
      {{kAllowAll, kDenyAll}, GENERIC_READ, 0},
      {{{true, 0, GENERIC_READ, WinBuiltinAdministratorsSid}}, GENERIC_READ, 0},
      {{{true, 0, GENERIC_READ, WinBuiltinAdministratorsSid}}, GENERIC_WRITE, ERROR_ACCESS_DENIED},
      {{{true, 0, GENERIC_ALL, WinBuiltinGuestsSid}}, GENERIC_READ, ERROR_ACCESS_DENIED},
      {{{true, INHERIT_ONLY_ACE | OBJECT_INHERIT_ACE, GENERIC_ALL, WinWorldSid}},
       GENERIC_READ,
       ERROR_ACCESS_DENIED},
      {{{false, 0, FILE_WRITE_DATA, WinWorldSid}, kAllowAll}, GENERIC_READ, 0},
      {{{false, 0, FILE_WRITE_DATA, WinWorldSid}, kAllowAll}, GENERIC_WRITE, ERROR_ACCESS_DENIED},
  };
  for (const auto& c : cases) {
    Store(path, c.entries);
    EXPECT_EQ(AccessError(path, c.access), c.error) << &c - cases;
  }
}

// A backup reads what its account may not read, but only by the flag and the privilege together.
TEST_F(FileSecurity, BackupAndRestorePassTheList) {
  const WString path = place.File("a.txt", "secret"), folder = place / "f";
  place.File("f/inner.txt");
  Store(path, {kDenyAll});
  Store(folder, {kDenyAll});
  WIN32_FIND_DATAW data;
  EXPECT_EQ(AccessError(path, GENERIC_READ, kBackup), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_FALSE(UniqueFind(FindFirstFileW((folder + L"\\*").CStr(), &data)));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
  SetPrivilege(L"SeBackupPrivilege", true);
  EXPECT_EQ(AccessError(path, GENERIC_READ), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(AccessError(path, GENERIC_READ, kBackup), 0u);
  EXPECT_EQ(AccessError(path, GENERIC_WRITE, kBackup), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_TRUE(UniqueFind(FindFirstFileW((folder + L"\\*").CStr(), &data)));
  SetPrivilege(L"SeRestorePrivilege", true);
  EXPECT_EQ(AccessError(path, GENERIC_WRITE, kBackup), 0u);
}

// The attributes are asked for by a call that takes no privilege, and shown to who may list the folder.
TEST_F(FileSecurity, AttributesAreToldByTheFileOrItsFolder) {
  const WString path = place.File("f/a.txt"), folder = place / "f";
  WIN32_FIND_DATAW data;
  const auto isTold = [&] {
    const bool isIt = Attributes(path.CStr()) != INVALID_FILE_ATTRIBUTES;
    EXPECT_EQ(isIt, PathFileExistsW(path.CStr()) != 0);
    return isIt;
  };
  Store(path, {kDenyAll});
  EXPECT_TRUE(isTold());
  Store(folder, {{false, 0, FILE_LIST_DIRECTORY, WinWorldSid}, kAllowAll});
  Store(path, {{true, 0, FILE_READ_ATTRIBUTES, WinWorldSid}});
  EXPECT_TRUE(isTold());
  Store(path, {kDenyAll});
  EXPECT_FALSE(isTold());
  EXPECT_FALSE(UniqueFind(FindFirstFileW(path.CStr(), &data)));
  SetPrivilege(L"SeBackupPrivilege", true);
  EXPECT_FALSE(isTold());
  EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_TRUE(UniqueFind(FindFirstFileW(path.CStr(), &data)));
}

TEST_F(FileSecurity, DeletingGoesByTheFileOrItsFolder) {
  const WString path = place.File("f/a.txt"), folder = place / "f";
  Store(path, {kDenyAll});
  Store(folder, {{false, 0, FILE_DELETE_CHILD, WinWorldSid}, kAllowAll});
  EXPECT_EQ(ErrorOf(DeleteFileW(path.CStr())), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(ErrorOf(MoveFileExW(path.CStr(), (place / "b.txt").CStr(), 0)), DWORD{ERROR_ACCESS_DENIED});
  Store(path, {{true, 0, DELETE, WinWorldSid}});
  EXPECT_TRUE(MoveFileExW(path.CStr(), (place / "f/b.txt").CStr(), 0));
  Store(place / "f/b.txt", {kDenyAll});
  Store(folder, {{false, 0, FILE_ADD_FILE | FILE_ADD_SUBDIRECTORY, WinWorldSid}, kAllowAll});
  EXPECT_EQ(OpenError(place / "f/new", CREATE_NEW), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(ErrorOf(CreateDirectoryW((place / "f/d").CStr(), nullptr)), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_TRUE(DeleteFileW((place / "f/b.txt").CStr()));  // its folder grants it
}

// What is made in a folder that only its owner may read must not lie open.
TEST_F(FileSecurity, NewFilesTakeOverWhatTheirFolderHandsDown) {
  const WString folder = place.Folder("f");
  Store(folder, {kAllowAll,
                 {false, OBJECT_INHERIT_ACE, FILE_WRITE_DATA, WinWorldSid},
                 {true, OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE, GENERIC_ALL, WinWorldSid}});
  EXPECT_EQ(OpenError(place / "f/a.txt", CREATE_NEW), 0u);  // its maker may
  EXPECT_EQ(AccessError(place / "f/a.txt", GENERIC_WRITE), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(AccessError(place / "f/a.txt", GENERIC_READ), 0u);
  EXPECT_TRUE(CreateDirectoryW((place / "f/sub").CStr(), nullptr));
  EXPECT_EQ(OpenError(place / "f/sub/b.txt", CREATE_NEW), 0u);
  EXPECT_EQ(AccessError(place / "f/sub/b.txt", GENERIC_WRITE), DWORD{ERROR_ACCESS_DENIED});
}

// Bytes that are no descriptor let nobody in, rather than everybody, and nothing is read beyond their end.
TEST_F(FileSecurity, ADamagedDescriptorLetsNobodyIn) {
  const WString path = place.File("a.txt");
  Store(path, {kAllowAll});
  machine::SecurityBytes whole;
  ASSERT_TRUE(machine::ReadSecurity(AT_FDCWD, OnDisk(path).c_str(), whole));
  for (size_t i = 0; i < whole.size(); ++i) {
    machine::SecurityBytes damaged = whole;
    damaged[i] = 0xFF;
    machine::WriteSecurity(AT_FDCWD, OnDisk(path).c_str(), damaged);
    AccessError(path, GENERIC_READ);
  }
  const machine::SecurityBytes cut(whole.begin(), whole.begin() + 30);
  machine::WriteSecurity(AT_FDCWD, OnDisk(path).c_str(), cut);
  EXPECT_EQ(AccessError(path, GENERIC_READ), DWORD{ERROR_ACCESS_DENIED});
}

}  // namespace
