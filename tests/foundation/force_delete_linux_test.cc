// Links, which Wine shows as what they lead to; rights, which bind nobody there, since it runs as root; and
// what happens between two calls, which the machine folder's faults let a test do.
#include "foundation/force_delete.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "foundation/acl_buffer.h"
#include "foundation/listed_entries.h"
#include "foundation/privileges.h"
#include "machine/faults.h"
#include "support/test_place.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ForceDeleteLinks : public testing::Test {
 protected:
  void SetUp() override {
    place.File("outside/precious.txt");
    place.File("outside/folder/inner.txt");
    SetAttributes((place / "outside/precious.txt").CStr(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE);
    SetAttributes((place / "outside").CStr(), FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_SYSTEM);
  }
  void TearDown() override {
    machine::ClearFaults();
    EXPECT_THAT(place.List("outside"), ElementsAre("folder", "folder/inner.txt", "precious.txt"));
    EXPECT_EQ(Attributes((place / "outside/precious.txt").CStr()),
              DWORD{FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE});
    EXPECT_EQ(Attributes((place / "outside").CStr()),
              DWORD{FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_SYSTEM});
  }

  TestPlace place;
};

TEST_F(ForceDeleteLinks, GoAsTheLinksThatTheyAre) {
  const WString alone = place.Link("alone", "outside");
  EXPECT_EQ(ForceDelete(alone.CStr(), kDeleteTakeOwnership), kDeleted);
  place.File("tree/a.txt");
  place.Link("tree/folder/link", "outside");
  EXPECT_EQ(ForceDelete((place / "tree").CStr(), kDeleteTakeOwnership), kDeleted);
  EXPECT_THAT(place.List(),
              ElementsAre("outside", "outside/folder", "outside/folder/inner.txt", "outside/precious.txt"));
}

// The attempt to delete the link fails, so that its attributes and rights are tried next: those of its
// target must not be what is changed.
TEST_F(ForceDeleteLinks, LinkThatResistsLeavesItsTargetAsItIs) {
  const WString link = place.Link("tree/link", "outside");
  machine::FaultPlan plan;
  plan.call = "RemoveDirectoryW";
  plan.path = "*\\link";
  plan.nth = 1;
  plan.andAllLater = true;
  plan.error = ERROR_ACCESS_DENIED;
  machine::SetFaults(plan);
  EXPECT_EQ(ForceDelete(link.CStr(), kDeleteTakeOwnership), kDeleteFailed);
  machine::ClearFaults();
  EXPECT_TRUE(place.Exists("tree/link"));
}

// At every call of a delete somebody else puts a link in the place of a folder that is still to come or
// under way.
TEST_F(ForceDeleteLinks, SwappedForAFolderUnderWay) {
  const char* const folders[] = {"tree", "tree/m", "tree/m/deep"};
  for (const std::string name : folders) {
    for (uint64_t at = 1;; ++at) {
      place.File("tree/a.txt");
      place.File("tree/m/deep/precious.txt");
      place.File("tree/m/deep/folder/inner.txt");
      uint64_t calls = 0;
      bool swapped = false;
      machine::FaultPlan plan;
      plan.before = [&](std::string_view, std::string_view) {
        if (++calls != at) return;
        plan.before = nullptr;
        machine::ClearFaults();
        swapped = MoveFileExW((place / name).CStr(), (place / "moved").CStr(), 0);
        if (swapped) place.Link(name, "outside");
      };
      machine::SetFaults(plan);
      ForceDelete((place / "tree").CStr(), kDeleteTakeOwnership);
      machine::ClearFaults();
      ASSERT_TRUE(place.Exists("outside/precious.txt")) << name << " at call " << at;
      ASSERT_TRUE(place.Exists("outside/folder/inner.txt")) << name << " at call " << at;
      ForceDelete((place / "tree").CStr(), 0);
      ForceDelete((place / "moved").CStr(), 0);
      ASSERT_THAT(place.List("").size(), 4u) << name << " at call " << at;
      if (calls < at) break;
    }
  }
}

// Nobody but a stranger may do anything with it.
void Deny(const WString& path) {
  AclBuffer buffer;
  ASSERT_TRUE(buffer.Prepare());
  TestSid stranger(4711);
  buffer.AddAllowAll(stranger.bytes, 0);
  ASSERT_TRUE(buffer.ApplyToPath(path.CStr(), kAclProtected, stranger.bytes)) << GetLastError();
}

// Rights are taken only where they are asked for, and then nothing keeps them from being taken.
TEST(ForceDeleteRights, WhatIsDeniedIsTakenOverWhenAsked) {
  const std::unique_ptr<uint8_t[]> before(EnableProcessPrivileges());
  TestPlace place;
  SetAttributes(place.File("tree/folder/file.txt").CStr(), FILE_ATTRIBUTE_READONLY);
  Deny(place / "tree/folder/file.txt");
  Deny(place / "tree/folder");
  Deny(place / "tree");
  EXPECT_EQ(ForceDelete((place / "tree").CStr(), 0), kDeleteFailed);
  EXPECT_TRUE(place.Exists("tree"));
  EXPECT_EQ(ForceDelete((place / "tree").CStr(), kDeleteTakeOwnership), kDeleted);
  EXPECT_THAT(place.List(), IsEmpty());
}

// A folder that must stay for what it holds isn't a folder that resists.
TEST(ForceDeleteRights, WhatStaysKeepsItsRights) {
  TestPlace place;
  place.File("x/part.tmp/a.tmp");
  const WString kept = place.File("x/part.tmp/kept.txt");
  const std::vector<Entry> before = ListOf(kept);
  EXPECT_EQ(ForceDelete((place / "x/*.tmp").CStr(), kDeleteTakeOwnership), kDeleted);
  EXPECT_EQ(ForceDelete((place / "x/*.none").CStr(), kDeleteTakeOwnership), kDeleted);
  EXPECT_THAT(place.List("x/part.tmp"), ElementsAre("kept.txt"));
  EXPECT_EQ(ListOf(kept), before);
}

TEST(ForceDeleteFaults, ListingThatBreaksOffIsAFailure) {
  TestPlace place;
  for (const char* name : {"tree/a", "tree/b", "tree/c"}) place.File(name);
  machine::FaultPlan plan;
  plan.call = "FindNextFileW";
  plan.nth = 4;  // "." and ".." are entries, too
  plan.error = ERROR_CRC;
  machine::SetFaults(plan);
  EXPECT_EQ(ForceDelete((place / "tree").CStr(), kDeleteTakeOwnership), kDeleteFailed);
  machine::ClearFaults();
}

}  // namespace
