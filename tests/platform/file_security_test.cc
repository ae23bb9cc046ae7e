// Access lists: who is let in, by which right, and how a file is taken over.
#include <gtest/gtest.h>
#include <windows.h>

#include <shlwapi.h>

#include "foundation/unique_handle.h"
#include "machine/security_store.h"
#include "machine/token.h"
#include "platform/disk_side.h"
#include "platform/machine_settings.h"
#include "platform/privilege_switch.h"

namespace {

UniqueFile Open(const WString& path, DWORD access, DWORD flags = 0, DWORD disposition = OPEN_EXISTING) {
  return UniqueFile(CreateFileW(path.CStr(), access, 7, nullptr, disposition, flags, nullptr));
}
DWORD OpenError(const WString& path, DWORD access, DWORD flags = 0, DWORD disposition = OPEN_EXISTING) {
  return Open(path, access, flags, disposition) ? ERROR_SUCCESS : GetLastError();
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

std::vector<uint8_t> List(const std::vector<Entry>& entries) {
  std::vector<uint8_t> list(sizeof(ACL));
  for (const Entry& entry : entries) {
    const std::vector<uint8_t> sid = Sid(entry.sid);
    const WORD size = static_cast<WORD>(8 + sid.size());
    const uint8_t head[8] = {static_cast<uint8_t>(entry.allows ? 0 : 1), entry.flags,
                             static_cast<uint8_t>(size), 0};
    list.insert(list.end(), head, head + 4);
    auto* mask = reinterpret_cast<const uint8_t*>(&entry.mask);
    list.insert(list.end(), mask, mask + 4);
    list.insert(list.end(), sid.begin(), sid.end());
  }
  ACL header = {ACL_REVISION, 0, static_cast<WORD>(list.size()), static_cast<WORD>(entries.size()), 0};
  memcpy(list.data(), &header, sizeof header);
  return list;
}

// Straight onto the disk, whatever the rights are.
void Store(const WString& path, const std::vector<Entry>& entries,
           WELL_KNOWN_SID_TYPE owner = WinLocalSystemSid) {
  std::vector<uint8_t> list = List(entries), sid = Sid(owner);
  machine::SecurityParts parts;
  parts.owner = sid.data();
  parts.hasList = true;
  parts.list = reinterpret_cast<ACL*>(list.data());
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
    EXPECT_EQ(OpenError(path, c.access), c.error) << &c - cases;
  }
}

// A backup reads what its account may not read, but only by the flag and the privilege together.
TEST_F(FileSecurity, BackupAndRestorePassTheList) {
  const WString path = place.File("a.txt", "secret"), folder = place / "f";
  place.File("f/inner.txt");
  Store(path, {kDenyAll});
  Store(folder, {kDenyAll});
  WIN32_FIND_DATAW data;
  EXPECT_EQ(OpenError(path, GENERIC_READ, kBackup), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_FALSE(UniqueFind(FindFirstFileW((folder + L"\\*").CStr(), &data)));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_ACCESS_DENIED});
  SetPrivilege(L"SeBackupPrivilege", true);
  EXPECT_EQ(OpenError(path, GENERIC_READ), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(OpenError(path, GENERIC_READ, kBackup), 0u);
  EXPECT_EQ(OpenError(path, GENERIC_WRITE, kBackup), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_TRUE(UniqueFind(FindFirstFileW((folder + L"\\*").CStr(), &data)));
  SetPrivilege(L"SeRestorePrivilege", true);
  EXPECT_EQ(OpenError(path, GENERIC_WRITE, kBackup), 0u);
}

// The attributes are asked for by a call that takes no privilege, and shown to who may list the folder.
TEST_F(FileSecurity, AttributesAreToldByTheFileOrItsFolder) {
  const WString path = place.File("f/a.txt"), folder = place / "f";
  WIN32_FILE_ATTRIBUTE_DATA all;
  WIN32_FIND_DATAW data;
  const auto isTold = [&] {
    const bool isIt = Attributes(path.CStr()) != INVALID_FILE_ATTRIBUTES;
    EXPECT_EQ(isIt, GetFileAttributesExW(path.CStr(), GetFileExInfoStandard, &all) != 0);
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
  EXPECT_EQ(OpenError(place / "f/new", GENERIC_WRITE, 0, CREATE_NEW), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(ErrorOf(CreateDirectoryW((place / "f/d").CStr(), nullptr)), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_TRUE(DeleteFileW((place / "f/b.txt").CStr()));  // its folder grants it
}

// The road of a stubborn file: take the ownership, then change the list, then delete.
TEST_F(FileSecurity, AFileCanBeTakenOver) {
  const WString path = place.File("a.txt");
  // An open asks for SYNCHRONIZE in any case; without it only the restore privilege leads in.
  Store(path, {{true, 0, SYNCHRONIZE, WinWorldSid}});
  EXPECT_EQ(OpenError(path, WRITE_OWNER), DWORD{ERROR_ACCESS_DENIED});
  SetPrivilege(L"SeTakeOwnershipPrivilege", true);
  UniqueFile file = Open(path, WRITE_OWNER);
  ASSERT_TRUE(file);
  SECURITY_DESCRIPTOR descriptor;
  std::vector<uint8_t> system = Sid(WinLocalSystemSid), administrators = Sid(WinBuiltinAdministratorsSid);
  InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
  SetSecurityDescriptorOwner(&descriptor, system.data(), FALSE);
  EXPECT_EQ(ErrorOf(SetKernelObjectSecurity(file.Get(), OWNER_SECURITY_INFORMATION, &descriptor)),
            DWORD{ERROR_INVALID_OWNER});  // only to oneself
  SetSecurityDescriptorOwner(&descriptor, administrators.data(), FALSE);
  EXPECT_TRUE(SetKernelObjectSecurity(file.Get(), OWNER_SECURITY_INFORMATION, &descriptor));
  EXPECT_EQ(ErrorOf(SetKernelObjectSecurity(file.Get(), DACL_SECURITY_INFORMATION, &descriptor)),
            DWORD{ERROR_ACCESS_DENIED});  // this handle was opened for the owner alone
  EXPECT_EQ(OpenError(path, GENERIC_READ), DWORD{ERROR_ACCESS_DENIED});
  file = Open(path, WRITE_DAC | READ_CONTROL);  // its owner may
  ASSERT_TRUE(file);
  std::vector<uint8_t> list = List({kAllowAll});
  SetSecurityDescriptorDacl(&descriptor, TRUE, reinterpret_cast<ACL*>(list.data()), FALSE);
  EXPECT_TRUE(SetKernelObjectSecurity(file.Get(), DACL_SECURITY_INFORMATION, &descriptor));
  EXPECT_EQ(OpenError(path, GENERIC_READ | GENERIC_WRITE | DELETE), 0u);
  DWORD size = 0;
  EXPECT_EQ(ErrorOf(GetKernelObjectSecurity(file.Get(), OWNER_SECURITY_INFORMATION, nullptr, 0, &size)),
            DWORD{ERROR_INSUFFICIENT_BUFFER});
  std::vector<uint8_t> read(size);
  PSID owner = nullptr;
  BOOL isDefault = FALSE;
  EXPECT_TRUE(GetKernelObjectSecurity(file.Get(), OWNER_SECURITY_INFORMATION, read.data(), size, &size));
  EXPECT_TRUE(GetSecurityDescriptorOwner(read.data(), &owner, &isDefault));
  EXPECT_TRUE(EqualSid(owner, administrators.data()));
}

// What is made in a folder that only its owner may read must not lie open.
TEST_F(FileSecurity, NewFilesTakeOverWhatTheirFolderHandsDown) {
  const WString folder = place.Folder("f");
  Store(folder, {kAllowAll,
                 {false, OBJECT_INHERIT_ACE, FILE_WRITE_DATA, WinWorldSid},
                 {true, OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE, GENERIC_ALL, WinWorldSid}});
  EXPECT_EQ(OpenError(place / "f/a.txt", GENERIC_WRITE, 0, CREATE_NEW), 0u);  // its maker may
  EXPECT_EQ(OpenError(place / "f/a.txt", GENERIC_WRITE), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(OpenError(place / "f/a.txt", GENERIC_READ), 0u);
  EXPECT_TRUE(CreateDirectoryW((place / "f/sub").CStr(), nullptr));
  EXPECT_EQ(OpenError(place / "f/sub/b.txt", GENERIC_WRITE, 0, CREATE_NEW), 0u);
  EXPECT_EQ(OpenError(place / "f/sub/b.txt", GENERIC_WRITE), DWORD{ERROR_ACCESS_DENIED});
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
    OpenError(path, GENERIC_READ);
  }
  const machine::SecurityBytes cut(whole.begin(), whole.begin() + 30);
  machine::WriteSecurity(AT_FDCWD, OnDisk(path).c_str(), cut);
  EXPECT_EQ(OpenError(path, GENERIC_READ), DWORD{ERROR_ACCESS_DENIED});
}

}  // namespace
