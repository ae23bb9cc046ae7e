#include "operations/copy_move_selection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "operations/backup_set.h"
#include "operations/copy_move_trees.h"
#include "support/test_place.h"

namespace {

// An entry of the list that becomes a folder of that odd name, or a path that loses its brackets.
TEST(CopyMoveSelection, TakesThePathOutOfAnEntry) {
  struct {
    const char* entry;
    const char* path;
  } cases[] = {
      {"C:\\Users\\Anna", "C:\\Users\\Anna"},
      {"Anna (C:\\Users\\Anna)", "C:\\Users\\Anna"},
      {"Anna (C:\\Users\\Anna (old))", "C:\\Users\\Anna (old)"},
      {"C:\\Data (old)", "C:\\Data (old)"},
      {"\\\\server\\a (b)", "\\\\server\\a (b)"},
      {"Data (old)", "old"},
      {"Data (ab)", "ab)"},  // what is left is too short to be cut
      {"Data", "Data"},
      {"(xy", "xy"},
      {"a)", "a)"},
      {"abc)d", "abc"},
      {"", ""},
  };
  for (const auto& test : cases)
    EXPECT_EQ(Utf8(LocationFromEntry(Wide(test.entry).CStr())), test.path) << test.entry;
  EXPECT_EQ(Utf8(LocationFromEntry(EntryForAccount(L"A(b)", L"C:\\x").CStr())), "b) (C:\\x")
      << "a bracket in a name, which the format doesn't know";
  EXPECT_EQ(Utf8(EntryForAccount(L"Anna", L"C:\\Users\\Anna")), "Anna (C:\\Users\\Anna)");
}

// A move over the border of two drives would be a copy that deletes its source.
TEST(CopyMoveSelection, MovesOnOneDriveOnly) {
  struct {
    const char* source;
    const char* target;
    bool canMove;
  } cases[] = {{"C:\\a", "C:\\b", true},  {"C:\\a", "D:\\b", false},
               {"C:\\a", "c:\\b", false}, {"\\\\srv\\a", "\\\\srv\\b", false},
               {"C:\\a", "", false},      {"", "", false},
               {"C", "C", false}};
  for (const auto& test : cases) {
    EXPECT_EQ(CanMoveFiles(Wide(test.source).CStr(), Wide(test.target).CStr()), test.canMove) << test.target;
    std::vector<RunTree> trees(2);
    trees[0].source = trees[0].target = L"C:\\x";
    trees[1].source = Wide(test.source);
    trees[1].target = Wide(test.target);
    EXPECT_EQ(FindUnmovable(trees), test.canMove ? nullptr : &trees[1]) << test.target;
  }
}

// A slip in the target that makes a whole row of folders; a source that isn't there.
TEST(CopyMoveSelection, StartsWithAFolderUnderAnExistingOne) {
  TestPlace place;
  place.Folder("from");
  place.Folder("to");
  place.File("file");
  struct {
    const char* source;
    const char* target;
    bool canStart;
  } cases[] = {{"from", "to", true},        {"from", "to/new", true},      {"from", "to/new/new", true},
               {"from", "to/a/b/c", false}, {"gone", "to", false},         {"file", "to", false},
               {"from", "file/new", false}, {"from", "file/new/x", false}, {"from", "new", true}};
  for (const auto& test : cases) {
    EXPECT_EQ(CanStartCopyMove((place / test.source).CStr(), (place / test.target).CStr()), test.canStart)
        << test.source << " > " << test.target;
  }
  EXPECT_FALSE(CanStartCopyMove((place / "from").CStr(), L"D:"));
  EXPECT_FALSE(CanStartCopyMove(L"", (place / "to").CStr()));
}

TEST(CopyMoveSelection, GoesThroughItsDocument) {
  IniDocument document;
  WriteCopyMoveSelection(document, {L"C:\\a (b)", L"D:\\c", true, 0x1ff, true});
  CopyMoveSelection read = ReadCopyMoveSelection(document);
  EXPECT_EQ(Utf8(read.source), "C:\\a (b)");
  EXPECT_EQ(Utf8(read.target), "D:\\c");
  EXPECT_TRUE(read.sourceIsProfile && read.onlyMissing);
  EXPECT_EQ(read.folderMask, kMaskAll);
  EXPECT_STREQ(document.GetValue(kSettingsSection, L"CMBackupOptions"), L"2");

  IniDocument plain;
  WriteCopyMoveSelection(plain, {L"C:\\a", L"D:\\c", false, 255, false});
  EXPECT_STREQ(plain.GetValue(kSettingsSection, L"CMUserFolders", L"none"), L"none");
  EXPECT_STREQ(plain.GetValue(kSettingsSection, L"SrcIsUser"), L"0");
  EXPECT_FALSE(ReadCopyMoveSelection(plain).onlyMissing);
}

std::vector<std::string> Trees(const CopyMoveSelection& selection) {
  std::vector<std::string> rows;
  for (const RunTree& tree : ListCopyMoveTrees(selection)) {
    std::string source = Utf8(tree.source), target = Utf8(tree.target);
    EXPECT_EQ(source.substr(5), target.substr(5));
    rows.push_back(source.substr(5) + (tree.fast ? " !" : "") + (tree.otherFolders ? " *" : ""));
  }
  return rows;
}

// A group of folders that comes by the wrong road, twice, or not at all.
TEST(CopyMoveTrees, FollowTheMaskInTheOrderOfTheWorker) {
  CopyMoveSelection selection{L"C:\\ab", L"D:\\ab", true, kMaskAll, true};
  EXPECT_THAT(Trees(selection),
              testing::ElementsAre("\\AppData\\Roaming !", "\\AppData\\Roaming\\Microsoft\\Windows\\Themes !",
                                   "\\AppData\\Roaming\\Microsoft\\Windows\\SendTo !",
                                   "\\AppData\\Roaming\\Microsoft\\Windows\\Account Pictures !",
                                   "\\AppData\\Local !", "\\AppData\\Local\\Microsoft\\Windows\\Themes !",
                                   "\\AppData\\LocalLow !", "\\Desktop", "\\Documents", "\\Downloads",
                                   "\\Music", "\\Pictures", "\\Videos", " *"));
  selection.folderMask = kMaskDocuments;
  EXPECT_THAT(Trees(selection), testing::ElementsAre("\\Documents"));
  selection.folderMask = 0;
  EXPECT_THAT(Trees(selection), testing::IsEmpty());
  selection.sourceIsProfile = false;
  EXPECT_THAT(Trees(selection), testing::ElementsAre(""));
}

// Unlike in a restore, folders of the old layout are ordinary ones.
TEST(CopyMoveTrees, LeaveNamedFoldersToTheirOwnTrees) {
  for (const char* name : {"AppData", "desktop", "DOCUMENTS", "Downloads", "Music", "Pictures", "Videos"}) {
    EXPECT_TRUE(IsNamedCopyMoveFolder(Wide(name).CStr())) << name;
  }
  for (const char* name : {"Local Settings", "Application Data", "LocalAppData", "Music2", "usic", "|"}) {
    EXPECT_FALSE(IsNamedCopyMoveFolder(Wide(name).CStr())) << name;
  }
}

}  // namespace
