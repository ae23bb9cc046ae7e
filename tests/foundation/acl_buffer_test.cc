#include "foundation/acl_buffer.h"

#include <gtest/gtest.h>

#include "foundation/access_list.h"
#include "foundation/listed_entries.h"

namespace {

TEST(AclBuffer, WhatCanNotBeAddedChangesNothing) {
  AclBuffer buffer;
  buffer.AddAllowAll(TestSid(1).bytes, 0);  // no list yet
  EXPECT_EQ(buffer.acl, nullptr);
  EXPECT_FALSE(buffer.ApplyToPath(L"C:\\", 0, nullptr));
  ASSERT_TRUE(buffer.Prepare());
  BYTE invalid[SECURITY_MAX_SID_SIZE] = {};
  buffer.AddAllowAll(invalid, 0);
  buffer.AddAllowAll(nullptr, 0);
  EXPECT_EQ(buffer.acl->AceCount, 0);
  for (DWORD number = 0; number < 1000; ++number) buffer.AddAllowAll(TestSid(number).bytes, 0);
  const WORD full = buffer.acl->AceCount;
  EXPECT_GT(full, 90);
  EXPECT_EQ(ListedEntries(buffer.acl).size(), full);
}

// A list that was read from a disk may hold entries of any kind and size.
TEST(AclBuffer, ReadsTheKindsThatItKnows) {
  struct Case {
    BYTE kind;
    WORD size;
    bool isRead, allows;
    DWORD sidOffset;
  };
  const Case cases[] = {
      {ACCESS_ALLOWED_ACE_TYPE, 20, true, true, 8},
      {ACCESS_ALLOWED_CALLBACK_ACE_TYPE, 24, true, true, 8},
      {ACCESS_ALLOWED_OBJECT_ACE_TYPE, 56, true, true, 44},
      {ACCESS_ALLOWED_CALLBACK_OBJECT_ACE_TYPE, 60, true, true, 44},
      {ACCESS_DENIED_ACE_TYPE, 20, true, false, 8},
      {ACCESS_DENIED_CALLBACK_ACE_TYPE, 20, true, false, 8},
      {ACCESS_DENIED_OBJECT_ACE_TYPE, 56, true, false, 44},
      {ACCESS_DENIED_CALLBACK_OBJECT_ACE_TYPE, 56, true, false, 44},
      {SYSTEM_AUDIT_ACE_TYPE, 20, false, false, 0},
      {ACCESS_ALLOWED_ACE_TYPE, 12, false, false, 0},  // no room for a SID
      {ACCESS_ALLOWED_ACE_TYPE, 16, false, false, 0},  // the SID says one part and has none
      {ACCESS_DENIED_OBJECT_ACE_TYPE, 48, false, false, 0},
  };
  for (const Case& c : cases) {
    alignas(ACL) BYTE space[256] = {};
    const auto acl = reinterpret_cast<ACL*>(space);
    ASSERT_TRUE(InitializeAcl(acl, sizeof(space), ACL_REVISION4));
    const auto header = reinterpret_cast<ACE_HEADER*>(acl + 1);
    header->AceType = c.kind;
    header->AceSize = c.size;
    header->AceFlags = NO_PROPAGATE_INHERIT_ACE;
    const TestSid sid(7);
    for (DWORD offset : {8u, 44u}) CopyMemory(reinterpret_cast<BYTE*>(header) + offset, sid.bytes, 12);
    acl->AceCount = 1;
    AceRecord record = {};
    ASSERT_EQ(ReadAce(acl, 0, record), c.isRead) << int{c.kind} << " of " << c.size;
    if (!c.isRead) continue;
    EXPECT_EQ(record.allows, c.allows);
    EXPECT_EQ(record.kind, c.kind);
    EXPECT_EQ(record.size, c.size);
    EXPECT_TRUE(record.isInheritanceRelated);
    EXPECT_EQ(record.sid, reinterpret_cast<BYTE*>(acl + 1) + c.sidOffset);
    EXPECT_FALSE(ReadAce(acl, 1, record));
  }
}

// An entry passed on wrongly opens files below, or shuts their owner out.
TEST(AccessList, EntriesArePassedOnByTheirFlags) {
  constexpr BYTE kObject = OBJECT_INHERIT_ACE, kContainer = CONTAINER_INHERIT_ACE;
  constexpr BYTE kStop = NO_PROPAGATE_INHERIT_ACE, kOnly = INHERIT_ONLY_ACE, kInherited = INHERITED_ACE;
  struct Case {
    BYTE flags;
    int atFolder, atFile;  // -1: not passed on
  };
  const Case cases[] = {
      {0, -1, -1},
      {kInherited, -1, -1},
      {kObject | kContainer, kObject | kContainer | kInherited, kInherited},
      {kContainer, kContainer | kInherited, -1},
      {kObject, kObject | kOnly | kInherited, kInherited},
      {kObject | kContainer | kOnly, kObject | kContainer | kInherited, kInherited},
      {kObject | kContainer | kStop, kInherited, kInherited},
      {kObject | kStop, -1, kInherited},
  };
  for (const Case& c : cases) {
    AclBuffer parent;
    ASSERT_TRUE(parent.Prepare());
    parent.AddAllowAll(TestSid(1).bytes, c.flags);
    for (const bool isDirectory : {true, false}) {
      AclBuffer child;
      ASSERT_TRUE(child.Prepare());
      EXPECT_TRUE(AddInherited(child.acl, parent.acl, isDirectory));
      const int expected = isDirectory ? c.atFolder : c.atFile;
      const std::vector<Entry> entries = ListedEntries(child.acl);
      ASSERT_EQ(entries.size(), expected < 0 ? 0u : 1u) << int{c.flags} << isDirectory;
      for (const Entry& entry : entries) EXPECT_EQ(entry.second, expected) << int{c.flags} << isDirectory;
    }
  }
}

}  // namespace
