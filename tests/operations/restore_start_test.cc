#include "operations/restore_start.h"

#include <gtest/gtest.h>

#include "operations/path_queries.h"
#include "support/test_place.h"

namespace {

// Another spelling of the system's drive would copy the machine's accounts onto themselves.
TEST(RestoreStart, KnowsTheSystemsOwnRoot) {
  for (const wchar_t* root : {L"C:", L"c:\\", L"C:/", L"C:\\Windows\\..", L"\\\\?\\C:\\", L"C:\\\\",
                              L"\\\\localhost\\C$", L"\\\\127.0.0.1\\c$\\Windows\\.."})
    EXPECT_TRUE(IsSystemRoot(root, L"C:")) << Utf8(root);
  TestPlace place;
  for (const WString& root :
       {WString(L"C:\\Windows"), place.Path(), WString(L"D:"), WString(L""), WString(L"\\\\other\\C$")})
    EXPECT_FALSE(IsSystemRoot(root.CStr(), L"C:")) << Utf8(root);
  EXPECT_TRUE(IsFolderPath(L"C:")) << "a drive without its backslash is its root, too";
}

// Moving between two drives fails file by file.
TEST(RestoreStart, TellsWhetherFilesCanBeMoved) {
  const struct {
    const wchar_t* root;
    bool isOnIt;
  } cases[] = {{L"C:\\Windows.old", true}, {L"c:\\x", true}, {L"\\\\?\\C:\\x", true},
               {L"D:\\C:", true},          {L"D:", false},   {L"D:\\folder\\C:", false},
               {L"\\\\server\\C:", false}, {L"", false}};
  for (const auto& test : cases) EXPECT_EQ(IsOnSystemDrive(test.root, L"C:"), test.isOnIt) << Utf8(test.root);
}

TEST(RestoreStart, OffersTheSamePlaceOnTheSystemDrive) {
  EXPECT_EQ(OfferedTarget(L"D:", L"D:\\Data\\Work", L"C:"), L"C:\\Data\\Work");
  EXPECT_EQ(OfferedTarget(L"E:\\Windows.old", L"E:\\Windows.old\\Data", L"C:"), L"C:\\Data");
}

// What isn't an info file must neither be read as one nor be written over.
TEST(RestoreStart, OpensTheInfoFileOfARoot) {
  TestPlace place;
  IniDocument document;
  EXPECT_TRUE(OpenRootDocument(place.Path().CStr(), document));
  EXPECT_EQ(document.path, place / "BackupInfo.nvsav");
  const RestoreRoot root{place.Path(), false, 10.0};
  ASSERT_TRUE(StartRestore(root, RestoreSelection(), document, true));
  IniDocument again;
  EXPECT_TRUE(OpenRootDocument(place.Path().CStr(), again));
  EXPECT_EQ(again.GetNumber(L"Settings", L"RTUserFolders"), 255u);

  place.File("BackupInfo.grxsv", std::string("\0\1", 2));
  EXPECT_FALSE(OpenRootDocument(place.Path().CStr(), again));
  EXPECT_EQ(again.path, place / "BackupInfo.grxsv");
  EXPECT_EQ(again.lines.count, 0u) << "of another file";
  EXPECT_TRUE(StartRestore(root, RestoreSelection(), again, false));
  EXPECT_EQ(place.Read("BackupInfo.grxsv"), std::string("\0\1", 2));
}

// A set on a disk that can't be written is restored all the same, and its file stays as it is.
TEST(RestoreStart, GoesOnWithoutSaving) {
  TestPlace place;
  const WString file = place.File("BackupInfo.nvsav", "[Users]\r\nAnna=1|A\r\n");
  SetAttributes(file.CStr(), FILE_ATTRIBUTE_READONLY);
  IniDocument document(file.CStr());
  RestoreSelection selection;
  selection.users.push_back({L"Anna", L"Bob", true});
  EXPECT_FALSE(StartRestore({place.Path(), true, 0.0}, selection, document, true));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
  EXPECT_EQ(WString(document.GetValue(L"RTBackupUsers", L"Anna")), L"Bob");
  EXPECT_EQ(place.Read("BackupInfo.nvsav"), "[Users]\r\nAnna=1|A\r\n");
}

}  // namespace
