#include "operations/backup_start.h"

#include <gtest/gtest.h>
#include <windows.h>

#include "foundation/unique_handle.h"
#include "support/account_place.h"

namespace {

// Would catch empty folders and files of a run that never was, also those that the document's owner
// makes when it saves at its end.
TEST(BackupStart, LeavesNothingBehindWhereItCantWrite) {
  TestPlace place;
  place.File("file");
  BackupSelection selection;
  {
    IniDocument document;
    document.saveOnDestroy = true;
    WString problem;
    EXPECT_FALSE(StartBackupSet((place / "file/X").CStr(), selection, document, problem));
    EXPECT_EQ(Utf8(problem), Utf8(kFolderNotMadeText));
  }
  EXPECT_EQ(place.List(), std::vector<std::string>{"file"});
}

TEST(BackupStart, KeepsAnInfoFileThatItCantReplace) {
  TestPlace place;
  const WString file = place.File("X/BackupInfo.grxsv", "[Settings]\r\nUserFolders=3\r\n");
  BackupSelection selection;
  {
    // Open elsewhere, for reading only: the file can be read and not replaced.
    UniqueFile open(
        CreateFileW(file.CStr(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    IniDocument document;
    document.saveOnDestroy = true;
    WString problem;
    EXPECT_FALSE(StartBackupSet((place / "X").CStr(), selection, document, problem));
    EXPECT_NE(Utf8(problem).find("could not be written"), std::string::npos) << Utf8(problem);
    EXPECT_TRUE(document.path.IsEmpty());
  }
  EXPECT_EQ(place.Read("X/BackupInfo.grxsv"), "[Settings]\r\nUserFolders=3\r\n");
  EXPECT_EQ(place.List("X"), std::vector<std::string>{"BackupInfo.grxsv"});
}

}  // namespace
