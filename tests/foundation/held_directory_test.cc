#include "foundation/held_directory.h"

#include <gtest/gtest.h>

#include "support/test_place.h"

namespace {

// A folder that can be moved away while it is walked can be replaced by a link.
TEST(HeldDirectory, StaysWhereItIs) {
  TestPlace place;
  const WString folder = place.Folder("a/b");
  place.File("a/b/c.txt");
  HeldDirectory held;
  ASSERT_EQ(held.Open(folder.CStr()), HoldResult::kHeld);
  EXPECT_FALSE(MoveFileExW(folder.CStr(), (place / "moved").CStr(), 0));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
  EXPECT_TRUE(DeleteFileW((place / "a/b/c.txt").CStr()));  // what it holds is free
  EXPECT_FALSE(RemoveDirectoryW(folder.CStr()));
  EXPECT_EQ(GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
  held.Release();
  EXPECT_TRUE(MoveFileExW(folder.CStr(), (place / "moved").CStr(), 0));
}

}  // namespace
