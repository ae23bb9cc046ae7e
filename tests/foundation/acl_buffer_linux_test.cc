// What Wine can't show: it adds every entry at the end of a list, and keeps of a list only what fits into
// the mode of a file.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "foundation/listed_entries.h"
#include "foundation/privileges.h"
#include "machine/machine.h"
#include "support/test_place.h"

namespace {

constexpr BYTE kInherit = OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE;

bool Apply(const WString& path, DWORD number, BYTE aceFlags, uint32_t options, PSID owner = nullptr) {
  AclBuffer buffer;
  EXPECT_TRUE(buffer.Prepare());
  buffer.AddAllowAll(TestSid(number).bytes, aceFlags);
  return buffer.ApplyToPath(path.CStr(), options, owner);
}

// An own entry behind inherited ones isn't in the order that Windows wants and is shown as damage.
TEST(AclBuffer, OwnEntriesGoInFrontOfInheritedOnes) {
  AclBuffer buffer;
  ASSERT_TRUE(buffer.Prepare());
  buffer.AddAllowAll(TestSid(1).bytes, INHERITED_ACE);
  buffer.AddAllowAll(TestSid(2).bytes, 0);
  buffer.AddAllowAll(TestSid(3).bytes, OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE);
  buffer.AddAllowAll(TestSid(4).bytes, INHERIT_ONLY_ACE);
  buffer.AddAllowAll(TestSid(5).bytes, 0);
  EXPECT_EQ(ListedEntries(buffer.acl), (std::vector<Entry>{{2, 0}, {3, 3}, {5, 0}, {1, 0x10}, {4, 8}}));
}

TEST(AclBuffer, ProtectedListStandsAlone) {
  const std::unique_ptr<uint8_t[]> privileges(EnableProcessPrivileges());
  TestPlace place;
  const WString file = place.File("folder/file");
  ASSERT_TRUE(Apply(place / "folder", 1, kInherit, kAclProtected));
  ASSERT_TRUE(Apply(file, 2, 0, kAclProtected | kAclUnprotected));  // protected wins
  EXPECT_EQ(ListOf(file), (std::vector<Entry>{{2, 0}}));
  ASSERT_TRUE(Apply(file, 2, 0, kAclUnprotected));
  EXPECT_EQ(ListOf(file), (std::vector<Entry>{{2, 0}, {1, INHERITED_ACE}}));
}

TEST(AclBuffer, InheritsFromARoot) {
  const std::unique_ptr<uint8_t[]> privileges(EnableProcessPrivileges());
  const WString path = L"\\\\?\\C:\\in the root";
  WriteBytes(path.CStr(), "x");
  EXPECT_TRUE(Apply(path, 2, 0, kAclUnprotected)) << GetLastError();
  EXPECT_TRUE(DeleteFileW(path.CStr()));
}

TEST(AclBuffer, TreeInheritsFromItsTop) {
  const std::unique_ptr<uint8_t[]> privileges(EnableProcessPrivileges());
  TestPlace place;
  const WString file = place.File("tree/folder/file");
  // The bit for a tree means nothing on a file.
  ASSERT_TRUE(Apply(file, 9, 0, kAclWholeTree | kAclProtected));
  EXPECT_EQ(ListOf(file), (std::vector<Entry>{{9, 0}}));
  ASSERT_TRUE(Apply(place / "tree", 1, kInherit, kAclWholeTree | kAclProtected | kAclKeepExplicit));
  EXPECT_EQ(ListOf(place / "tree/folder"), (std::vector<Entry>{{1, kInherit | INHERITED_ACE}}));
  EXPECT_EQ(ListOf(file), (std::vector<Entry>{{9, 0}, {1, INHERITED_ACE}}));
  ASSERT_TRUE(Apply(place / "tree", 2, kInherit, kAclWholeTree | kAclProtected));
  EXPECT_EQ(ListOf(file), (std::vector<Entry>{{2, INHERITED_ACE}}));
}

// Whoever may write in a tree could otherwise have the rights of any folder of the machine opened.
TEST(AclBuffer, LinkIsNotFollowed) {
  TestPlace place;
  place.File("outside/file");
  place.Folder("tree");
  const WString link = place.Link("tree/link", "outside");
  ASSERT_TRUE(Apply(place / "outside", 5, kInherit, kAclWholeTree | kAclProtected));
  EXPECT_TRUE(Apply(place / "tree", 1, kInherit, kAclWholeTree | kAclProtected));
  EXPECT_TRUE(Apply(link, 2, kInherit, kAclWholeTree | kAclProtected));
  EXPECT_EQ(ListOf(place / "outside"), (std::vector<Entry>{{5, kInherit}}));
  EXPECT_EQ(ListOf(place / "outside/file"), (std::vector<Entry>{{5, INHERITED_ACE}}));
}

// A second name for a file of the system, put into a tree, would open that file.
TEST(AclBuffer, FileWithOtherNamesIsRefused) {
  TestPlace place;
  const WString file = place.File("outside");
  place.Folder("tree");
  ASSERT_TRUE(Apply(file, 5, 0, kAclProtected));
  const std::string disk =
      machine::ThisMachine().DriveFolder('C') + "/Test/" + Utf8(WString(place.Path()).LastComponent()) + "/";
  std::filesystem::create_hard_link(disk + "outside", disk + "tree/name");
  EXPECT_FALSE(Apply(place / "tree/name", 1, 0, kAclProtected));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_TOO_MANY_LINKS});
  EXPECT_FALSE(Apply(place / "tree", 1, kInherit, kAclWholeTree | kAclProtected));
  EXPECT_EQ(ListOf(file), (std::vector<Entry>{{5, 0}}));
}

}  // namespace
