// listed_entries.h
//
// Access lists in a form that a test can compare: each entry by the last part of its SID and its flags.
#pragma once
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "foundation/access_list.h"
#include "foundation/acl_buffer.h"
#include "foundation/unique_handle.h"
#include "support/test_place.h"

// S-1-1-<number>: a SID that can be told from others by its last part.
struct TestSid {
  alignas(SID) BYTE bytes[SECURITY_MAX_SID_SIZE];
  explicit TestSid(DWORD number) {
    SID_IDENTIFIER_AUTHORITY authority = SECURITY_WORLD_SID_AUTHORITY;
    InitializeSid(bytes, &authority, 1);
    *GetSidSubAuthority(bytes, 0) = number;
  }
};

using Entry = std::pair<DWORD, int>;  // the last part of the SID, the flags

inline std::vector<Entry> ListedEntries(ACL* acl) {
  std::vector<Entry> entries;
  AceRecord record;
  for (uint32_t index = 0; ReadAce(acl, index, record); ++index) {
    void* ace = nullptr;
    GetAce(acl, index, &ace);
    entries.emplace_back(*GetSidSubAuthority(record.sid, 0), static_cast<ACE_HEADER*>(ace)->AceFlags);
  }
  EXPECT_EQ(entries.size(), acl->AceCount);
  return entries;
}

// The list of a thing itself, link or not.
inline std::vector<Entry> ListOf(const WString& path) {
  const UniqueFile file(CreateFileW(path.CStr(), READ_CONTROL, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  ReadList list;
  EXPECT_TRUE(file && list.Read(file.Get())) << Utf8(path) << ": " << GetLastError();
  return list.Get() != nullptr ? ListedEntries(list.Get()) : std::vector<Entry>();
}
