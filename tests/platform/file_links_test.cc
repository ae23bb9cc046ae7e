// Links: what they show, where they lead, and that nothing leads out of the machine.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>

#include "platform/disk_side.h"
#include "platform/privilege_switch.h"

namespace {

bool Symlink(const std::string& text, const std::string& file) {
  return symlink(text.c_str(), file.c_str()) == 0;
}

// A link of a stranger's disk must not make a backup read the rescuer's own files.
TEST(FileLinks, NothingLeadsOutOfTheMachine) {
  TestPlace place;
  const std::string folder = OnDisk(place.Path());
  const std::string outside =
      std::filesystem::temp_directory_path() / ("norvane-outside-" + std::to_string(getpid()));
  std::filesystem::create_directory(outside);
  MakeOnDisk(outside + "/secret.txt", "secret");
  place.Folder("in");
  ASSERT_TRUE(Symlink(outside, folder + "/absolute") && Symlink(outside + "/secret.txt", folder + "/file"));
  ASSERT_TRUE(Symlink("../../../../../../../../.." + outside, folder + "/in/relative"));
  ASSERT_TRUE(Symlink("/proc/self/root", folder + "/magic") &&
              Symlink("C:\\..\\..\\..", folder + "/windows"));
  for (const char* path : {"absolute/secret.txt", "file", "in/relative/secret.txt", "magic/etc/passwd"}) {
    EXPECT_EQ(OpenError(place / path), DWORD{ERROR_PATH_NOT_FOUND}) << path;
    EXPECT_NE(OpenError(place / path, OPEN_ALWAYS), 0u) << path;
  }
  EXPECT_EQ(OpenError(place / "absolute/new.txt", CREATE_NEW), DWORD{ERROR_PATH_NOT_FOUND});
  EXPECT_EQ(OpenError(place / "windows/etc/passwd"), DWORD{ERROR_PATH_NOT_FOUND});  // the drive's own root
  EXPECT_EQ(std::filesystem::remove_all(outside), 2u);
}

TEST(FileLinks, LeadToWhereWindowsWouldGo) {
  TestPlace place;
  const std::string folder = OnDisk(place.Path());
  place.File("Data/Sub/a.txt", "a");
  place.Folder("x");
  const std::string windowsText = Utf8(place.Path()) + "\\data\\sub";
  for (const std::string& text :
       {std::string("../Data/Sub"), std::string("..\\DATA\\sub"), windowsText, windowsText + "\\",
        "\\??\\" + windowsText, folder + "/Data/Sub", "\\" + windowsText.substr(3)}) {
    ASSERT_TRUE(Symlink(text, folder + "/x/link"));
    EXPECT_EQ(place.Read("X/LINK/A.TXT"), "a") << text;
    EXPECT_EQ(Attributes((place / "x/link").CStr()),
              uint32_t{FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY});
    UniqueFile behind = HoldDirectory(place / "x/link");
    wchar_t path[300];
    ASSERT_GT(GetFinalPathNameByHandleW(behind.Get(), path, 300, 0), 0u);
    EXPECT_EQ(Utf8(path), "\\\\?\\" + Utf8(place.Path()) + "\\Data\\Sub") << text;
    behind.Reset();
    EXPECT_TRUE(RemoveDirectoryW((place / "x/link").CStr()));
    EXPECT_TRUE(place.Exists("Data/Sub/a.txt"));
  }
}

TEST(FileLinks, LeadFromOneDriveToAnother) {
  TestPlace place;
  const std::string drive = machine::ThisMachine().folder + "/D";
  std::filesystem::create_directories(drive + "/Moved");
  ASSERT_TRUE(MakeOnDisk(drive + "/Moved/a.txt", "d"));
  ASSERT_TRUE(Symlink("D:\\Moved", OnDisk(place / "documents")));
  place.File("b.txt");
  EXPECT_EQ(place.Read("documents/a.txt"), "d");
  // Another volume, although one file system of Linux holds both.
  EXPECT_EQ(ErrorOf(MoveFileExW((place / "b.txt").CStr(), (place / "documents/b.txt").CStr(), 0)),
            DWORD{ERROR_NOT_SAME_DEVICE});
  std::filesystem::remove_all(drive);
}

TEST(FileLinks, ALoopEnds) {
  TestPlace place;
  const std::string folder = OnDisk(place.Path());
  ASSERT_TRUE(Symlink("b", folder + "/a") && Symlink("a", folder + "/b") && Symlink(".", folder + "/self"));
  EXPECT_EQ(OpenError(place / "a"), DWORD{ERROR_CANT_RESOLVE_FILENAME});
  EXPECT_EQ(OpenError(place / "a/x"), DWORD{ERROR_CANT_RESOLVE_FILENAME});
  EXPECT_EQ(Attributes((place / "a").CStr()), uint32_t{FILE_ATTRIBUTE_REPARSE_POINT});
  std::string deep;
  for (int i = 0; i < 60; ++i) deep += "self/";
  EXPECT_EQ(OpenError(L"\\\\?\\" + (place / (deep + "none"))), DWORD{ERROR_FILE_NOT_FOUND});
}

// A walk that holds a folder must stay in it, whatever is put in its place.
TEST(FileLinks, AHeldDirectoryCannotBeSwapped) {
  TestPlace place;
  place.File("tree/folder/a.txt", "inside");
  place.File("outside/a.txt", "outside");
  UniqueFile held = HoldDirectory(place / "tree/folder");
  ASSERT_TRUE(held);
  const WString folder = place / "tree/folder", tree = place / "tree", away = place / "away";
  EXPECT_EQ(ErrorOf(MoveFileExW(tree.CStr(), away.CStr(), 0)), DWORD{ERROR_ACCESS_DENIED});
  // Another program of Linux isn't bound by that; the walk goes on in the folder that it holds.
  ASSERT_EQ(rename(OnDisk(folder).c_str(), OnDisk(away).c_str()), 0);
  ASSERT_TRUE(Symlink("../outside", OnDisk(folder)));
  EXPECT_EQ(place.Read("tree/folder/a.txt"), "inside");
  held.Reset();
  EXPECT_EQ(place.Read("tree/folder/a.txt"), "outside");
}

// People move folders by junction, so the root of a copy may be one: the road is as fast, and as true.
TEST(FileLinks, AHeldDirectoryBehindALinkFollowsAnExchangedLink) {
  TestPlace place;
  SetPrivilege(L"SeCreateSymbolicLinkPrivilege", true);
  place.File("one/a.txt", "one");
  place.File("two/a.txt", "two");
  ASSERT_TRUE(CreateSymbolicLinkW((place / "link").CStr(), L"one", SYMBOLIC_LINK_FLAG_DIRECTORY));
  UniqueFile held = HoldDirectory(place / "link");
  EXPECT_EQ(place.Read("link/a.txt"), "one");
  EXPECT_TRUE(RemoveDirectoryW((place / "link").CStr()));
  EXPECT_FALSE(place.Exists("link/a.txt"));
  ASSERT_TRUE(CreateSymbolicLinkW((place / "link").CStr(), L"two", SYMBOLIC_LINK_FLAG_DIRECTORY));
  EXPECT_EQ(place.Read("link/a.txt"), "two");
  EXPECT_EQ(ErrorOf(MoveFileExW((place / "one").CStr(), (place / "away").CStr(), 0)),
            DWORD{ERROR_SHARING_VIOLATION});
}

}  // namespace
