// Attributes and times: where they lie, in a form that others read, and what happens where they can't.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/xattr.h>
#include <windows.h>

#include <cstdlib>
#include <filesystem>

#include "machine/file_attributes.h"
#include "platform/disk_side.h"

namespace {

constexpr uint64_t kTime = 127'500'000'012'345'670;  // in 2005

DWORD SetBasic(const WString& path, DWORD attributes, uint64_t created, uint64_t accessed, uint64_t written) {
  FILE_BASIC_INFO info = {};
  info.FileAttributes = attributes;
  info.CreationTime.QuadPart = static_cast<LONGLONG>(created);
  info.LastAccessTime.QuadPart = static_cast<LONGLONG>(accessed);
  info.LastWriteTime.QuadPart = static_cast<LONGLONG>(written);
  UniqueFile file =
      Open(path, FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES, 7, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  return ErrorOf(SetFileInformationByHandle(file.Get(), FileBasicInfo, &info, sizeof info));
}

WIN32_FILE_ATTRIBUTE_DATA Facts(const WString& path) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  EXPECT_TRUE(GetFileAttributesExW(path.CStr(), GetFileExInfoStandard, &data)) << GetLastError();
  return data;
}

std::vector<uint8_t> Bytes(const std::string& hex) {
  std::vector<uint8_t> bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 3) bytes.push_back(std::stoi(hex.substr(i, 2), nullptr, 16));
  return bytes;
}

// The bytes were made by Samba's own marshalling (4.17), so that a share shows the same attributes.
TEST(FileAttributes, HaveTheFormThatSambaReads) {
  const std::string tail = "11 00 00 00 23 00 00 00 ";
  const std::string created = "ef cd ab 89 67 45 23 01";
  std::string nothing;
  for (int i = 0; i < 20; ++i) nothing += "00 ";
  const std::string forms[] = {
      "30 78 32 33 00 00 03 00 03 00 00 00 " + tail + nothing + created + " 00 00 00 00 00 00 00 00",
      "00 00 04 00 04 00 00 00 " + tail + "00 00 00 00 00 00 00 00 " + created,
      "00 00 05 00 05 00 00 00 " + tail + created,
  };
  EXPECT_EQ(machine::MakeDosAttribute(0x23, 0x0123456789ABCDEF), Bytes(forms[0]));
  for (const std::string& form : forms) {
    uint32_t attributes = 0;
    uint64_t time = 0;
    const std::vector<uint8_t> bytes = Bytes(form);
    EXPECT_TRUE(machine::ReadDosAttribute(bytes.data(), bytes.size(), attributes, time));
    EXPECT_EQ(attributes, 0x23u);
    EXPECT_EQ(time, 0x0123456789ABCDEFu);
    // What is cut short isn't read beyond its end.
    for (size_t size = 5; size < bytes.size(); ++size) {
      const std::vector<uint8_t> part(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size));
      machine::ReadDosAttribute(part.data(), part.size(), attributes, time);
    }
  }
}

TEST(FileAttributes, AreKeptWithAllThreeTimes) {
  TestPlace place;
  const WString file = place.File("a.txt"), folder = place.Folder("f");
  EXPECT_EQ(Attributes(file.CStr()), uint32_t{FILE_ATTRIBUTE_ARCHIVE});
  EXPECT_EQ(Attributes(folder.CStr()), uint32_t{FILE_ATTRIBUTE_DIRECTORY});
  for (const WString& path : {file, folder}) {
    const uint32_t kind = Attributes(path.CStr()) & FILE_ATTRIBUTE_DIRECTORY;
    EXPECT_EQ(SetBasic(path, FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY, kTime, kTime + 3, kTime + 5),
              0u);
    EXPECT_EQ(SetBasic(path, 0, 0, 0, kTime + 7), 0u);  // 0 leaves as it is
    const WIN32_FILE_ATTRIBUTE_DATA data = Facts(path);
    EXPECT_EQ(data.dwFileAttributes, kind | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(machine::FromFileTime(data.ftCreationTime), kTime);
    EXPECT_EQ(machine::FromFileTime(data.ftLastAccessTime), kTime + 3);
    EXPECT_EQ(machine::FromFileTime(data.ftLastWriteTime), kTime + 7);
    EXPECT_TRUE(SetFileAttributesW(path.CStr(), FILE_ATTRIBUTE_NORMAL));
    EXPECT_EQ(Attributes(path.CStr()), kind ? kind : uint32_t{FILE_ATTRIBUTE_NORMAL});
    EXPECT_EQ(machine::FromFileTime(Facts(path).ftCreationTime), kTime);  // isn't lost on the way
  }
}

// A time outside of what the disk can hold would silently become another one.
TEST(FileAttributes, ATimeThatTheDiskCannotHoldFails) {
  TestPlace place;
  const WString file = place.File("a.txt");
  for (const uint64_t ticks : {uint64_t{1}, uint64_t{94'000'000'000'000'000}, uint64_t{0x7FFFFFFFFFFFFFF0}}) {
    const bool isKept = SetBasic(file, 0, 0, 0, ticks) == 0;
    EXPECT_EQ(machine::FromFileTime(Facts(file).ftLastWriteTime) == ticks, isKept) << ticks;
  }
}

class MountedDisk : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "mounting is for root";
    folder_ = machine::ThisMachine().folder + "/E";
    std::filesystem::create_directory(folder_);
  }
  void TearDown() override {
    umount2(folder_.c_str(), MNT_DETACH);
    std::error_code error;
    std::filesystem::remove(folder_, error);
    machine::ForgetDevices();  // the next disk may come with the same number
  }
  std::string folder_;
};

// A file system without extended attributes must not swallow what can't be kept.
TEST_F(MountedDisk, WithoutAPlaceForAttributesFailsAloud) {
  if (mount("none", folder_.c_str(), "ramfs", 0, nullptr) != 0) GTEST_SKIP() << "no ramfs here";
  const WString file = L"E:\\a.txt";
  WriteBytes(file.CStr(), "x");
  EXPECT_EQ(Attributes(file.CStr()), uint32_t{FILE_ATTRIBUTE_ARCHIVE});
  EXPECT_EQ(ErrorOf(SetFileAttributesW(file.CStr(), FILE_ATTRIBUTE_HIDDEN)), DWORD{ERROR_NOT_SUPPORTED});
  EXPECT_EQ(SetBasic(file, FILE_ATTRIBUTE_ARCHIVE, kTime, 0, 0), DWORD{ERROR_NOT_SUPPORTED});
  EXPECT_EQ(SetBasic(file, 0, 0, kTime, kTime), 0u);
  EXPECT_FALSE(Open(L"E:\\h", GENERIC_WRITE, 0, CREATE_NEW, FILE_ATTRIBUTE_HIDDEN));
  EXPECT_FALSE(std::filesystem::exists(folder_ + "/h"));
}

// The disk of a dead machine: its own attributes, creation times and links, by the NTFS driver.
TEST_F(MountedDisk, OfNtfsShowsItsOwnAttributes) {
  const std::string image = machine::ThisMachine().folder + "/ntfs.img";
  const std::string make = "truncate -s 16M " + image + " && mkntfs -q -F " + image +
                           " >/dev/null 2>&1 && ntfs-3g " + image + " " + folder_ + " 2>/dev/null";
  if (std::system(make.c_str()) != 0) GTEST_SKIP() << "no NTFS driver here";
  ASSERT_TRUE(MakeOnDisk(folder_ + "/a.txt"));
  const uint32_t hidden = __builtin_bswap32(FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
  const uint64_t time = __builtin_bswap64(kTime);
  ASSERT_EQ(setxattr((folder_ + "/a.txt").c_str(), "system.ntfs_attrib_be", &hidden, 4, 0), 0);
  ASSERT_EQ(setxattr((folder_ + "/a.txt").c_str(), "system.ntfs_times_be", &time, 8, 0), 0);
  const WIN32_FILE_ATTRIBUTE_DATA data = Facts(L"E:\\A.TXT");
  EXPECT_EQ(data.dwFileAttributes, DWORD{FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM});
  EXPECT_EQ(machine::FromFileTime(data.ftCreationTime), kTime);
  EXPECT_TRUE(SetFileAttributesW(L"E:\\a.txt", FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(SetBasic(L"E:\\a.txt", 0, kTime + 10, kTime + 20, kTime + 30), 0u);
  EXPECT_EQ(Attributes(L"E:\\a.txt"), uint32_t{FILE_ATTRIBUTE_READONLY});
  EXPECT_EQ(machine::FromFileTime(Facts(L"E:\\a.txt").ftCreationTime), kTime + 10);
  EXPECT_EQ(machine::FromFileTime(Facts(L"E:\\a.txt").ftLastWriteTime), kTime + 30);
}

}  // namespace
