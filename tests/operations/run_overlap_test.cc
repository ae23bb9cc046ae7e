#include "operations/real_path.h"
#include "operations/run_overlap.h"

#include <gtest/gtest.h>

#include "operations/folder_rows.h"
#include "operations/path_queries.h"
#include "operations/real_path.h"
#include "operations/shared_target.h"
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
  const StopWord stop{1};
  EXPECT_FALSE(FindOverlap(trees, source, target, &stop)) << "who wants to stop isn't kept waiting";
}

// In the order of texts, names with units below the backslash would come between a folder and its own.
TEST(RunOverlap, KeepsAFolderAndWhatItHoldsTogether) {
  for (const char* between : {"C:\\Data Base", "C:\\Data!", "C:\\Data", "C:\\DATA-1\\x", "D:"}) {
    std::vector<RunTree> trees = {Tree(Wide("X:\\s"), Wide("C:\\data\\sub\\deep"))};
    for (const char* other : {"C:\\Da", "C:\\Data#1", "C:\\Database", between}) {
      trees.push_back(Tree(Wide("X:\\s"), Wide(other)));
    }
    WString source, target;
    EXPECT_FALSE(FindOverlap(trees, source, target)) << between;
    for (const char* inside : {"C:\\Data\\SUB\\Deep", "C:\\Data\\Sub", "c:\\data\\sub\\deep\\er\\x"}) {
      trees.push_back(Tree(Wide(inside), Wide("X:\\t")));
      ASSERT_TRUE(FindOverlap(trees, source, target)) << between << inside;
      EXPECT_EQ(Utf8(target), Utf8(trees[0].target));
      trees.pop_back();
    }
  }
}

// A stranger's info file can have as many rows as it likes. Compared one by one, these would take minutes.
TEST(RunOverlap, EndsWithManyTrees) {
  std::vector<RunTree> trees;
  for (int i = 0; i < 20000; i++) {
    const std::string name = std::to_string(i * 7919 % 20000);
    trees.push_back(Tree(Wide("X:\\from\\" + name), Wide("X:\\to\\" + name + "\\Ä")));
  }
  WString source, target;
  SharedTarget shared;
  const auto none = [](const wchar_t*) { return false; };
  EXPECT_FALSE(FindOverlap(trees, source, target));
  EXPECT_FALSE(FindSharedTarget(trees, none, shared));
  trees.push_back(Tree(Wide("X:\\to\\19999\\ä\\x"), Wide("X:\\far")));
  ASSERT_TRUE(FindOverlap(trees, source, target));
  EXPECT_EQ(Utf8(target), "X:\\to\\19999\\Ä");
}

// By the name of this machine or by its address, a drive is reached through the share for administrators.
TEST(RunOverlap, SeesThroughAdministrativeShares) {
  wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
  DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
  ASSERT_TRUE(GetComputerNameW(name, &size));
  TestPlace place;
  place.Folder("Data/Sub");
  const std::string data = Utf8(place / "Data"), behind = data.substr(0, 1) + "$" + data.substr(2);
  WString source, target;
  for (const std::string& server : {std::string("localhost"), std::string("127.0.0.1"), Utf8(name),
                                    Utf8(name) + ".example.org", std::string("?\\UNC\\LocalHost")}) {
    const WString share = Wide("\\\\" + server + "\\" + behind);
    EXPECT_EQ(ResolveForComparison(share.CStr()), ResolveRealPath((place / "Data").CStr())) << server;
    EXPECT_TRUE(FindOverlap({Tree(place / "Data", share + L"\\Sub")}, source, target)) << server;
    EXPECT_TRUE(FindOverlap({Tree(share, place / "Data/Sub")}, source, target)) << server;
  }
  // Another machine has drives of its own, and other shares lead who knows where.
  for (const std::string& share : {"other\\" + behind, std::string("localhost\\Data"),
                                   std::string("localhost\\C"), std::string("localhost")}) {
    const std::string other = "\\\\" + share;
    EXPECT_EQ(Utf8(ResolveForComparison(Wide(other).CStr())), other);
    EXPECT_FALSE(FindOverlap({Tree(place / "Data", Wide(other))}, source, target)) << other;
  }
}

// Of a move, what came first would be overwritten by what comes second and be nowhere.
TEST(RunOverlap, FindsTargetsThatAMoveWouldShare) {
  TestPlace place;
  for (const char* folder : {"P/Sub/Deep", "Q", "R"}) place.Folder(folder);
  const struct {
    std::vector<std::pair<const char*, const char*>> trees;  // from and to
    bool shared;
  } cases[] = {
      {{{"P", "T/p"}, {"Q", "T/q"}}, false},
      {{{"P", "T"}, {"Q", "t"}}, true},
      {{{"P", "T"}, {"Q", "T/x"}}, true},
      {{{"P", "T/x/y"}, {"R", "U"}, {"Q", "T"}}, true},
      {{{"P", "T"}, {"Q", "T x"}, {"R", "T/z"}}, true},
      {{{"P", "T"}, {"gone", "T"}}, false},
      {{{"P", "T"}, {"P/Sub", "T/Sub"}, {"p", "T"}}, false},
      {{{"P", "T"}, {"P/Sub", "T/Deep"}}, true},
      {{{"P", "T"}, {"P/Sub", "T/sub"}, {"Q", "T/Sub/Deep"}}, true},
      {{{"P", "T"}, {"P", "T/Sub"}}, true},
  };
  for (const auto& test : cases) {
    std::vector<RunTree> trees;
    for (const auto& [from, to] : test.trees) trees.push_back(Tree(place / from, place / to));
    SharedTarget shared;
    const auto none = [](const wchar_t*) { return false; };
    EXPECT_EQ(FindSharedTarget(trees, none, shared), test.shared) << test.trees.back().second;
    EXPECT_EQ(!shared.target.IsEmpty(), test.shared);
  }
}

// The other folders of an account go beside its named ones, wherever its hive puts those.
TEST(RunOverlap, LooksIntoTheOtherFoldersOfAnAccount) {
  const struct {
    const char* desktop;   // its place in the profile
    const char* inSource;  // a folder of the source's account
    bool shared;
  } cases[] = {
      {"Desktop", "Desktop/a", false},          {"Cloud/Desktop", "Cloud/x", false},
      {"Cloud/Desktop", "Cloud/Desktop", true}, {"Cloud", "Cloud/x", true},
      {"AppData", "AppData/x", false},
  };
  for (const auto& test : cases) {
    TestPlace place;
    place.Folder("From/Desktop");
    place.Folder(std::string("From/") + test.inSource);
    RunTree others = Tree(place / "From", place / "To");
    others.otherFolders = true;
    others.bit = kMaskOther;
    const RunTree desktop = Tree(place / "From/Desktop", place / (std::string("To/") + test.desktop));
    const auto isNamed = [](const wchar_t* name) { return IsNameInBars(L"|AppData|Desktop|", name); };
    SharedTarget shared;
    EXPECT_EQ(FindSharedTarget({desktop, others}, isNamed, shared), test.shared)
        << test.desktop << test.inSource;
    RunTree stranger(others);
    stranger.source = place.Folder("Second");
    EXPECT_TRUE(FindSharedTarget({others, stranger}, isNamed, shared)) << "of two accounts";
  }
}

TEST(RunOverlap, TakesTheRootOfADriveAsHoldingAllOfIt) {
  TestPlace place;
  const WString drive = Wide(Utf8(place.Path()).substr(0, 3));
  WString source, target;
  EXPECT_TRUE(FindOverlap({Tree(drive, place / "Set/x")}, source, target));
  EXPECT_EQ(Utf8(ResolveRealPath(drive.CStr())), Utf8(drive).substr(0, 2));
}

}  // namespace
