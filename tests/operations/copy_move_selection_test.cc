#include "operations/copy_move_selection.h"

#include <gtest/gtest.h>

#include "operations/backup_set.h"
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

// A slip in the target that makes a whole row of folders.
TEST(CopyMoveSelection, StartsWithAFolderUnderAnExistingOne) {
  TestPlace place;
  const WString source = place.Folder("from");
  EXPECT_TRUE(CanStartCopyMove(source.CStr(), (place / "new").CStr(), kMaskDocuments));
  EXPECT_TRUE(CanStartCopyMove(source.CStr(), (place / "new/new").CStr(), kMaskAll));
  EXPECT_FALSE(CanStartCopyMove(source.CStr(), (place / "a/b/c").CStr(), kMaskAll));
  EXPECT_FALSE(CanStartCopyMove(source.CStr(), (place / "new").CStr(), 0)) << "nothing is chosen";
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

}  // namespace
