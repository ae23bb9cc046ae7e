// SIDs, access lists and security descriptors in memory.
#include <gtest/gtest.h>
#include <windows.h>
#include <sddl.h>

#include <cstring>

#include "machine/names.h"
#include "machine/sid_text.h"

namespace {

using namespace machine;

TEST(Sid, TextComesBack) {
  for (const char* text : {"S-1-5-18", "S-1-1-0", "S-1-5-21-1-4294967295-3-1001", "S-1-12-1-5",
                           "S-1-0x010000000000-7", "S-1-5-1-2-3-4-5-6-7-8-9-10-11-12-13-14-15"}) {
    PSID sid = nullptr;
    ASSERT_TRUE(ConvertStringSidToSidW(AsWide(ToUtf16(text)), &sid)) << text;
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
    EXPECT_FALSE(ConvertStringSidToSidW(AsWide(ToUtf16(text)), &sid)) << text;
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

struct alignas(DWORD) ListBuffer {
  BYTE bytes[256];
  ACL* Get() { return reinterpret_cast<ACL*>(bytes); }
};

DWORD MaskAt(ACL* list, DWORD index) {
  void* entry = nullptr;
  return GetAce(list, index, &entry) ? static_cast<ACCESS_ALLOWED_ACE*>(entry)->Mask : 0;
}

TEST(AccessList, KeepsTheOrderOfItsEntries) {
  ListBuffer buffer;
  ASSERT_TRUE(InitializeAcl(buffer.Get(), sizeof buffer, ACL_REVISION));
  const std::string everyone = SidBytes(kEveryoneSid);
  PSID sid = const_cast<char*>(everyone.data());
  ASSERT_TRUE(AddAccessAllowedAceEx(buffer.Get(), ACL_REVISION, 3, 1, sid));
  ASSERT_TRUE(AddAccessAllowedAceEx(buffer.Get(), ACL_REVISION, 0, 2, sid));
  struct alignas(DWORD) {
    BYTE bytes[20];
  } entry = {};
  auto* header = reinterpret_cast<ACCESS_ALLOWED_ACE*>(entry.bytes);
  header->Header = {ACCESS_DENIED_ACE_TYPE, 0, sizeof entry.bytes};
  header->Mask = 3;
  memcpy(&header->SidStart, everyone.data(), everyone.size());
  ASSERT_TRUE(AddAce(buffer.Get(), ACL_REVISION, 1, entry.bytes, sizeof entry.bytes));
  EXPECT_EQ(MaskAt(buffer.Get(), 0), 1u);
  EXPECT_EQ(MaskAt(buffer.Get(), 1), 3u);
  EXPECT_EQ(MaskAt(buffer.Get(), 2), 2u);
  EXPECT_EQ(MaskAt(buffer.Get(), 3), 0u);
  ACL_SIZE_INFORMATION size;
  ASSERT_TRUE(GetAclInformation(buffer.Get(), &size, sizeof size, AclSizeInformation));
  EXPECT_EQ(size.AceCount, 3u);
  EXPECT_EQ(size.AclBytesInUse, sizeof(ACL) + 3 * 20);
  EXPECT_EQ(size.AclBytesInUse + size.AclBytesFree, sizeof buffer);
  ASSERT_TRUE(DeleteAce(buffer.Get(), 0));
  EXPECT_EQ(MaskAt(buffer.Get(), 0), 3u);
}

TEST(AccessList, RefusesWhatDoesntFit) {
  ListBuffer buffer;
  ASSERT_TRUE(InitializeAcl(buffer.Get(), sizeof(ACL) + 20, ACL_REVISION));
  const std::string everyone = SidBytes(kEveryoneSid);
  PSID sid = const_cast<char*>(everyone.data());
  EXPECT_TRUE(AddAccessAllowedAce(buffer.Get(), ACL_REVISION, 1, sid));
  EXPECT_FALSE(AddAccessAllowedAce(buffer.Get(), ACL_REVISION, 1, sid));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_ALLOTTED_SPACE_EXCEEDED});
  EXPECT_EQ(buffer.Get()->AceCount, 1);
  // An entry that claims to go beyond the list makes the list invalid.
  void* entry = nullptr;
  ASSERT_TRUE(GetAce(buffer.Get(), 0, &entry));
  static_cast<ACE_HEADER*>(entry)->AceSize = 200;
  EXPECT_FALSE(IsValidAcl(buffer.Get()));
  EXPECT_FALSE(GetAce(buffer.Get(), 0, &entry));
}

TEST(SecurityDescriptor, BecomesSelfRelative) {
  ListBuffer buffer;
  ASSERT_TRUE(InitializeAcl(buffer.Get(), sizeof(ACL) + 20, ACL_REVISION));
  const std::string owner = SidBytes(kAdministratorsSid);
  SECURITY_DESCRIPTOR descriptor;
  ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
  ASSERT_TRUE(SetSecurityDescriptorOwner(&descriptor, const_cast<char*>(owner.data()), FALSE));
  ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, buffer.Get(), FALSE));
  ASSERT_TRUE(SetSecurityDescriptorControl(&descriptor, SE_DACL_PROTECTED, SE_DACL_PROTECTED));
  DWORD size = 0;
  EXPECT_FALSE(MakeSelfRelativeSD(&descriptor, nullptr, &size));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
  std::vector<DWORD> relative(size / 4 + 1);
  ASSERT_TRUE(MakeSelfRelativeSD(&descriptor, relative.data(), &size));
  EXPECT_TRUE(IsValidSecurityDescriptor(relative.data()));
  EXPECT_EQ(GetSecurityDescriptorLength(relative.data()), size);
  PSID found = nullptr;
  ACL* list = nullptr;
  BOOL isPresent = FALSE, isDefault = FALSE;
  SECURITY_DESCRIPTOR_CONTROL control = 0;
  DWORD revision = 0;
  ASSERT_TRUE(GetSecurityDescriptorOwner(relative.data(), &found, &isDefault));
  EXPECT_EQ(SidText(found), kAdministratorsSid);
  ASSERT_TRUE(GetSecurityDescriptorDacl(relative.data(), &isPresent, &list, &isDefault));
  EXPECT_TRUE(isPresent && list && list->AclSize == sizeof(ACL) + 20);
  ASSERT_TRUE(GetSecurityDescriptorControl(relative.data(), &control, &revision));
  EXPECT_EQ(control, SE_SELF_RELATIVE | SE_DACL_PRESENT | SE_DACL_PROTECTED);
}

}  // namespace
