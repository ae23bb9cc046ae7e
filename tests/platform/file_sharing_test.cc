// Who may open, replace, rename and delete what, and which error tells so.
#include <gtest/gtest.h>
#include <windows.h>

#include "platform/disk_side.h"
#include "platform/machine_settings.h"

namespace {

constexpr DWORD kAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Each handle must let the other one, and a handle that only asks for attributes minds nobody.
TEST(FileSharing, BothSidesMustAgree) {
  TestPlace place;
  const WString path = place.File("a.txt");
  const struct {
    DWORD access, share, otherAccess, otherShare, error;
  } cases[] = {
      {GENERIC_READ, FILE_SHARE_READ, GENERIC_READ, FILE_SHARE_READ, 0},
      {GENERIC_READ, FILE_SHARE_READ, GENERIC_WRITE, kAll, ERROR_SHARING_VIOLATION},
      {GENERIC_WRITE, kAll, GENERIC_READ, FILE_SHARE_READ, ERROR_SHARING_VIOLATION},
      {GENERIC_READ, 0, GENERIC_READ, kAll, ERROR_SHARING_VIOLATION},
      {GENERIC_READ, kAll, GENERIC_READ, 0, ERROR_SHARING_VIOLATION},
      {GENERIC_READ, 0, FILE_READ_ATTRIBUTES, 0, 0},
      {0, 0, GENERIC_READ | GENERIC_WRITE, 0, 0},
      {GENERIC_READ, FILE_SHARE_READ, DELETE, kAll, ERROR_SHARING_VIOLATION},
      {GENERIC_READ, kAll, DELETE, kAll, 0},
  };
  for (const auto& c : cases) {
    UniqueFile first = Open(path, c.access, c.share);
    ASSERT_TRUE(first);
    UniqueFile second = Open(path, c.otherAccess, c.otherShare);
    EXPECT_EQ(second ? 0u : GetLastError(), c.error) << &c - cases;
  }
}

TEST(FileSharing, AnOpenFileResists) {
  TestPlace place;
  const WString path = place.File("a.txt", "old"), other = place.File("b.txt", "new"),
                hard = place / "hard.txt";
  ASSERT_EQ(link(OnDisk(path).c_str(), OnDisk(hard).c_str()), 0);
  UniqueFile held = Open(path, GENERIC_READ, FILE_SHARE_READ);
  EXPECT_EQ(ErrorOf(DeleteFileW(path.CStr())), DWORD{ERROR_SHARING_VIOLATION});
  EXPECT_EQ(ErrorOf(DeleteFileW(hard.CStr())), DWORD{ERROR_SHARING_VIOLATION});  // the same file
  EXPECT_EQ(ErrorOf(MoveFileExW(path.CStr(), (place / "c.txt").CStr(), 0)), DWORD{ERROR_SHARING_VIOLATION});
  EXPECT_EQ(ErrorOf(MoveFileExW(other.CStr(), path.CStr(), MOVEFILE_REPLACE_EXISTING)),
            DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(ErrorOf(CopyFileExW(other.CStr(), path.CStr(), nullptr, nullptr, nullptr, 0)),
            DWORD{ERROR_SHARING_VIOLATION});
}

TEST(FileSharing, AttributesProtectAnExistingFile) {
  TestPlace place;
  const struct {
    DWORD present, asked, disposition, error;
  } cases[] = {
      {FILE_ATTRIBUTE_READONLY, 0, CREATE_ALWAYS, ERROR_ACCESS_DENIED},
      {FILE_ATTRIBUTE_READONLY, 0, OPEN_EXISTING, ERROR_ACCESS_DENIED},
      {FILE_ATTRIBUTE_HIDDEN, 0, CREATE_ALWAYS, ERROR_ACCESS_DENIED},
      {FILE_ATTRIBUTE_HIDDEN, FILE_ATTRIBUTE_HIDDEN, CREATE_ALWAYS, 0},
      {FILE_ATTRIBUTE_SYSTEM, FILE_ATTRIBUTE_HIDDEN, CREATE_ALWAYS, ERROR_ACCESS_DENIED},
      {FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM, 0, OPEN_ALWAYS, 0},
      {FILE_ATTRIBUTE_HIDDEN, 0, TRUNCATE_EXISTING, 0},
  };
  for (const auto& c : cases) {
    const WString path = place.File("a" + std::to_string(&c - cases), "old");
    SetAttributes(path.CStr(), c.present);
    UniqueFile file = Open(path, GENERIC_WRITE, 0, c.disposition, c.asked);
    EXPECT_EQ(file ? 0u : GetLastError(), c.error) << &c - cases;
    file.Reset();
    if (c.error != 0) {
      EXPECT_EQ(ReadBytes(path.CStr()), "old") << &c - cases;
    }
    SetAttributes(path.CStr(), FILE_ATTRIBUTE_NORMAL);
  }
}

TEST(FileSharing, DeletesAndRenamesTellWhyNot) {
  TestPlace place;
  const WString file = place.File("a.txt"), full = place.File("full/x.txt"), folder = place / "full";
  const WString readOnly = place.File("r.txt"), empty = place.Folder("empty");
  SetAttributes(readOnly.CStr(), FILE_ATTRIBUTE_READONLY);
  const DWORD replace = MOVEFILE_REPLACE_EXISTING;
  EXPECT_EQ(ErrorOf(RemoveDirectoryW(folder.CStr())), DWORD{ERROR_DIR_NOT_EMPTY});
  EXPECT_EQ(ErrorOf(RemoveDirectoryW(file.CStr())), DWORD{ERROR_DIRECTORY});
  EXPECT_EQ(ErrorOf(DeleteFileW(folder.CStr())), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(ErrorOf(DeleteFileW(readOnly.CStr())), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(ErrorOf(MoveFileExW(file.CStr(), readOnly.CStr(), replace)), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(ErrorOf(MoveFileExW(file.CStr(), empty.CStr(), replace)), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(ErrorOf(MoveFileExW(empty.CStr(), file.CStr(), replace)), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(ErrorOf(MoveFileExW(folder.CStr(), (place / "full/in").CStr(), 0)),
            DWORD{ERROR_SHARING_VIOLATION});
  EXPECT_TRUE(MoveFileExW(readOnly.CStr(), full.CStr(), replace));  // a read-only file may be renamed
}

TEST(FileSharing, AReadOnlyDriveTakesNothing) {
  TestPlace place;
  const WString path = place.File("a.txt", "old"), folder = place.Folder("f");
  ChangedSettings changed;
  changed.settings.readOnlyDrives = "C";
  const DWORD refused = ERROR_WRITE_PROTECT;
  EXPECT_EQ(ErrorOf(Open(path, GENERIC_WRITE, 0)), refused);
  EXPECT_EQ(OpenError(place / "n", CREATE_NEW), refused);
  EXPECT_EQ(ErrorOf(DeleteFileW(path.CStr())), refused);
  EXPECT_EQ(ErrorOf(RemoveDirectoryW(folder.CStr())), refused);
  EXPECT_EQ(ErrorOf(CreateDirectoryW((place / "d").CStr(), nullptr)), refused);
  EXPECT_EQ(ErrorOf(MoveFileExW(path.CStr(), (place / "b").CStr(), 0)), refused);
  EXPECT_EQ(ErrorOf(SetFileAttributesW(path.CStr(), FILE_ATTRIBUTE_HIDDEN)), refused);
  EXPECT_EQ(ErrorOf(CopyFileExW(path.CStr(), (place / "b").CStr(), nullptr, nullptr, nullptr, 0)), refused);
  UniqueFile file = Open(path, FILE_WRITE_ATTRIBUTES, kAll);
  const FILETIME time = {1, 30000000};
  EXPECT_EQ(ErrorOf(SetFileTime(file.Get(), nullptr, nullptr, &time)), refused);
  EXPECT_EQ(place.Read("a.txt"), "old");
}

}  // namespace
