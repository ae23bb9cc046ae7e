#include "operations/run_overlap.h"

#include <gtest/gtest.h>

#include "support/test_place.h"

namespace {

RunTree Tree(const WString& source, const WString& target) {
  RunTree tree;
  tree.source = source;
  tree.target = target;
  return tree;
}

// A run that copies a folder into itself grows until the disk is full; one that copies it over itself
// ends with nothing.
TEST(RunOverlap, FindsSourceAndTargetInsideEachOther) {
  TestPlace place;
  for (const char* folder : {"Data/Sub", "Database", "Set"}) place.Folder(folder);
  struct {
    const char* source;
    const char* target;
    bool overlap;
  } cases[] = {
      {"Data", "Set/x", false},     {"Data", "Database/x", false},     {"Database", "Data/x", false},
      {"Data", "Data", true},       {"Data", "data/Sub/new", true},    {"Data/Sub", "Data", true},
      {"DATA", "Data/new/x", true}, {"Data/./Sub/..", "Data/x", true}, {"missing/a", "missing/a/b", true},
  };
  for (const auto& test : cases) {
    WString source, target;
    const std::vector<RunTree> trees = {Tree(place / test.source, place / test.target)};
    EXPECT_EQ(FindOverlap(trees, source, target), test.overlap) << test.source << " > " << test.target;
    if (!test.overlap) continue;
    EXPECT_EQ(Utf8(source), Utf8(place / test.source)) << "as the run spells it";
  }
}

// The target of one tree can lie in the source of another.
TEST(RunOverlap, LooksAtAllTreesOfARun) {
  TestPlace place;
  for (const char* folder : {"A", "B", "Set"}) place.Folder(folder);
  std::vector<RunTree> trees = {Tree(place / "A", place / "Set/a"), Tree(place / "B", place / "Set/b")};
  WString source, target;
  EXPECT_FALSE(FindOverlap(trees, source, target));
  trees.push_back(Tree(place / "Set/a", place / "Set/c"));
  ASSERT_TRUE(FindOverlap(trees, source, target));
  EXPECT_EQ(Utf8(source), Utf8(place / "Set/a"));
  EXPECT_EQ(Utf8(target), Utf8(place / "Set/a"));
}

TEST(RunOverlap, TakesTheRootOfADriveAsHoldingAllOfIt) {
  TestPlace place;
  const WString drive = Wide(Utf8(place.Path()).substr(0, 3));
  WString source, target;
  EXPECT_TRUE(FindOverlap({Tree(drive, place / "Set/x")}, source, target));
  EXPECT_EQ(Utf8(ResolveRealPath(drive.CStr())), Utf8(drive).substr(0, 2));
}

}  // namespace
