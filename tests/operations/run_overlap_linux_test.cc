// Links, which Wine can't make.
#include <gtest/gtest.h>

#include "operations/real_path.h"
#include "operations/run_overlap.h"
#include "operations/shared_target.h"
#include "support/test_place.h"

namespace {

// A profile that was moved by a junction, and a target that is reached by one.
TEST(RunOverlap, SeesThroughLinks) {
  TestPlace place;
  place.Folder("Real/Documents");
  place.Folder("Set");
  place.Link("Linked", "Real");
  place.Link("Nested", "Linked/Documents");
  RunTree tree;
  WString source, target;
  struct {
    const char* source;
    const char* target;
    bool overlap;
  } cases[] = {
      {"Linked/Documents", "Set/x", false},
      {"Linked/Documents", "Real/Documents/x", true},
      {"Real/Documents", "Linked/Documents/x", true},
      {"Real", "Nested/new/x", true},
      {"Nested", "Real/x", false},
      {"Nested", "Real", true},
  };
  for (const auto& test : cases) {
    tree.source = place / test.source;
    tree.target = place / test.target;
    EXPECT_EQ(FindOverlap({tree}, source, target), test.overlap) << test.source << " > " << test.target;
  }
  place.Folder("Other");
  RunTree other(tree);
  tree.target = place / "Nested/x";
  other.source = place / "Other";
  other.target = place / "Real/Documents/x";
  tree.source = place / "Set";
  SharedTarget shared;
  EXPECT_TRUE(FindSharedTarget(
      {tree, other}, [](const wchar_t*) { return false; }, shared));
  EXPECT_EQ(Utf8(ResolveRealPath((place / "Nested/a/b").CStr())), Utf8(place / "Real/Documents/a/b"));
}

}  // namespace
