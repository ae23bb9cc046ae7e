// Roots that somebody made to lead the program astray: links, which Wine doesn't show as such, and hives that
// are damaged in ways that only real ones can be.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <random>

#include "operations/source_discovery.h"
#include "support/account_database.h"
#include "support/account_place.h"

namespace {

// With versions that no root of these tests has by its folders.
std::vector<TestValue> Version(const char* major) {
  constexpr char kKey[] = "Microsoft\\Windows NT\\CurrentVersion";
  return {{kKey, "CurrentMajorVersionNumber", major, REG_DWORD},
          {kKey, "CurrentMinorVersionNumber", "0", REG_DWORD}};
}

class StrangeRoot : public testing::Test {
 protected:
  StrangeRoot() {
    place_.files.Folder("root/Users");
    WriteTestHive(place_.files.Folder("other/Windows/System32/config") + L"\\SOFTWARE", Version("77"));
  }
  double VersionOf(const char* root) { return GetInstallationVersion((place_.files / root).CStr()); }

  AccountPlace place_;
};

// C:\Windows behind a link on a strange disk would give the version of the machine that runs now.
TEST_F(StrangeRoot, ReadsNoHiveBehindALink) {
  TestPlace& files = place_.files;
  ASSERT_EQ(VersionOf("other"), 77.0);
  files.Folder("a/Users");
  files.Link("a/Windows", "other/Windows");
  EXPECT_EQ(VersionOf("a"), 6.1);
  files.Folder("b/Users");
  files.Folder("b/Windows");
  files.Link("b/Windows/System32", "other/Windows/System32");
  EXPECT_EQ(VersionOf("b"), 6.1);
  files.Folder("c/Users");
  files.Folder("c/Windows/System32/config");
  files.Link("c/Windows/System32/config/SOFTWARE", "other/Windows/System32/config/SOFTWARE");
  EXPECT_EQ(VersionOf("c"), 6.1);
  files.Link("d", "other");
  EXPECT_EQ(VersionOf("d"), 77.0) << "the root itself is what the person named";
}

TEST_F(StrangeRoot, TakesNoLinkForALayout) {
  TestPlace& files = place_.files;
  files.Folder("root/ProgramData/Microsoft");
  files.Folder("other/ProgramData/Microsoft/Windows/AppRepository");
  files.Link("root/ProgramData/Microsoft/Windows", "other/ProgramData/Microsoft/Windows");
  files.Link("root/Documents and Settings", "root/Users");
  EXPECT_EQ(VersionOf("root"), 6.1);
}

// "Documents and Settings" of a newer Windows leads to C:\Users, whichever C: that is.
TEST_F(StrangeRoot, ListsNoAccountsBehindALink) {
  TestPlace& files = place_.files;
  for (const char* name : {"a", "b", "c", "d"}) files.File(std::string("root/Users/Anna/") + name);
  files.Link("root/Documents and Settings", "root/Users");
  files.Link("root/Users/Linked", "root/Users/Anna");
  files.Folder("root/Users/Links");
  for (const char* name : {"a", "b", "c", "d"}) files.Link(std::string("root/Users/Links/") + name, "other");
  SourceScan scan;
  ScanSource((files / "root").CStr(), 5.1, UserTable(), scan);
  EXPECT_EQ(scan.users.count, 0u);
  ScanSource((files / "root").CStr(), 10.0, UserTable(), scan);
  ASSERT_EQ(scan.users.count, 1u);
  EXPECT_EQ(Utf8(scan.users[0]), "Anna");
  files.File("info", "[RTExtraFolders2]\r\nData=x\r\n");
  files.Link("root/a.nvsav", "info");
  ScanSource((files / "root").CStr(), 10.0, UserTable(), scan);
  EXPECT_EQ(scan.extraFolders.count, 0u);
}

// A hive from a dying disk, or made by somebody who means ill: no end of the program, and the folders decide
// where nothing can be read.
TEST_F(StrangeRoot, SurvivesDamagedHives) {
  const WString file = place_.files.Folder("root/Windows/System32/config") + L"\\SOFTWARE";
  WriteTestHive(file, Version("77"));
  const std::string whole = ReadBytes(file.CStr());
  ASSERT_EQ(VersionOf("root"), 77.0);
  const auto with = [&](size_t at, char byte) {
    std::string bytes = whole;
    bytes[at] = byte;
    return bytes;
  };
  const struct {
    const char* what;
    std::string bytes;
  } cases[] = {
      {"empty", ""},
      {"no hive", "MZ" + std::string(8190, 'x')},
      {"cut off in the head", whole.substr(0, 100)},
      {"cut off behind the head", whole.substr(0, 4096)},
      {"cut off in the keys", whole.substr(0, whole.size() - 4096)},
      {"wrong checksum", with(508, static_cast<char>(whole[508] ^ 1))},
      {"no root", with(36, '\x7f')},
  };
  for (const auto& [what, bytes] : cases) {
    WriteBytes(file.CStr(), bytes);
    EXPECT_EQ(VersionOf("root"), 6.1) << what;
  }
  WriteBytes(file.CStr(), whole);
  EXPECT_EQ(VersionOf("root"), 77.0) << "a damaged hive before is no obstacle";
}

// Lists that loop, cells that overlap, lengths of 4 GB: bytes of the keys changed by chance, many times. With
// the sanitizers this finds each read beside the file; the time of a test run bounds each walk.
TEST_F(StrangeRoot, SurvivesHivesChangedByChance) {
  const WString file = place_.files.Folder("root/Windows/System32/config") + L"\\SOFTWARE";
  WriteTestHive(file, Version("77"));
  const std::string whole = ReadBytes(file.CStr());
  std::mt19937 random(7);
  int read = 0, refused = 0;
  for (int round = 0; round < 400; round++) {
    std::string bytes = whole;
    const int changes = 1 + static_cast<int>(random() % 12);
    for (int i = 0; i < changes; i++) {
      const size_t at = 4096 + random() % (bytes.size() - 4096) / 4 * 4;
      const uint32_t values[] = {
          0, 0x20, 0xffffffff, 0x7fffffff, static_cast<uint32_t>(at - 4096), static_cast<uint32_t>(random())};
      const uint32_t value = values[random() % 6];
      memcpy(bytes.data() + at, &value, sizeof value);
    }
    WriteBytes(file.CStr(), bytes);
    (VersionOf("root") == 77.0 ? read : refused)++;
  }
  EXPECT_GT(read, 0);
  EXPECT_GT(refused, 0);
}

}  // namespace
