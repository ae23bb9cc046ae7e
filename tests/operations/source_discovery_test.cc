#include "operations/source_discovery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include "foundation/file_object.h"
#include "foundation/unique_handle.h"
#include "operations/backup_set.h"
#include "support/account_database.h"
#include "support/account_place.h"
#include "support/array_rows.h"

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

// Values of a registry; an empty number is left out.
std::vector<TestValue> Version(const std::string& major, const std::string& minor,
                               uint32_t type = REG_DWORD) {
  constexpr char kKey[] = "Microsoft\\Windows NT\\CurrentVersion";
  std::vector<TestValue> values;
  if (!major.empty()) values.push_back({kKey, "CurrentMajorVersionNumber", major, type});
  if (!minor.empty()) values.push_back({kKey, "CurrentMinorVersionNumber", minor, type});
  return values;
}

// Keys right below HKEY_LOCAL_MACHINE.
std::vector<std::string> MachineKeys() {
  std::vector<std::string> names;
  wchar_t name[256];
  for (DWORD i = 0;; i++) {
    DWORD size = 256;
    if (RegEnumKeyExW(HKEY_LOCAL_MACHINE, i, name, &size, nullptr, nullptr, nullptr, nullptr) !=
        ERROR_SUCCESS) {
      return names;
    }
    names.push_back(Utf8(name));
  }
}

class SourceDiscovery : public testing::Test {
 protected:
  // A root with folders and, where values are given, its own registry.
  WString MakeRoot(const std::string& name, const std::vector<std::string>& folders,
                   const std::vector<TestValue>& values = {}) {
    WString root = files_.Folder(name);
    for (const std::string& folder : folders) files_.Folder(name + "/" + folder);
    if (!values.empty()) {
      WriteTestHive(files_.Folder(name + "/Windows/System32/config") + L"\\SOFTWARE", values);
    }
    return root;
  }

  void Scan(double version, LeftOutKeys* leftOut = nullptr) {
    ScanSource((files_ / "root").CStr(), version, accounts_, scan_, leftOut);
  }

  AccountPlace place_;
  TestPlace& files_ = place_.files;
  UserTable accounts_;
  SourceScan scan_;
};

// A version decides which folders are taken for accounts, so a wrong one restores nothing.
TEST_F(SourceDiscovery, TellsTheVersionByRegistryThenByFolders) {
  const std::vector<std::string> before = MachineKeys();
  const std::string windows = "ProgramData/Microsoft/Windows";
  const struct {
    const char* what;
    std::vector<std::string> folders;
    std::vector<TestValue> values;
    double version;
  } cases[] = {
      {"registry first", {"Documents and Settings"}, Version("10", "0"), 10.0},
      {"registry with a minor number", {"Users"}, Version("6", "3"), 6.3},
      {"minor number alone", {"Users"}, Version("", "3"), 6.1},
      {"major number alone", {"Users"}, Version("10", ""), 6.1},
      {"numbers as texts", {"Documents and Settings"}, Version("10", "0", REG_SZ), 5.1},
      {"too old to be believed", {"Users"}, Version("3", "5"), 6.1},
      {"no such key", {"Users"}, {{"Microsoft", "x", "y", REG_SZ}}, 6.1},
      {"10 by its folders", {windows + "/AppRepository", "Users"}, {}, 10.0},
      {"8 by its folders", {windows, "Documents and Settings", "Users"}, {}, 6.2},
      {"old layout", {"Documents and Settings", "Users"}, {}, 5.1},
      {"new layout", {"Users"}, {}, 6.1},
      {"nothing", {"Data"}, {}, 0.0},
      {"a folder for a registry", {"Users", "Windows/System32/config/SOFTWARE"}, {}, 6.1},
  };
  for (const auto& one : cases) {
    const WString root = MakeRoot(one.what, one.folders, one.values);
    EXPECT_DOUBLE_EQ(GetInstallationVersion(root.CStr()), one.version) << one.what;
    EXPECT_DOUBLE_EQ(GetInstallationVersion((root + L"\\\\").CStr()), one.version) << one.what;
  }
  files_.File("file/ProgramData/Microsoft/Windows");
  files_.File("file/Users");
  EXPECT_EQ(GetInstallationVersion((files_ / "file").CStr()), 0.0) << "files are no folders";
  EXPECT_EQ(GetInstallationVersion((files_ / "missing").CStr()), 0.0);
  EXPECT_EQ(MachineKeys(), before) << "a hive stays loaded";
}

// Loading a file that isn't there makes one on the disk that is only to be looked at.
TEST_F(SourceDiscovery, ChangesNothing) {
  const WString root = MakeRoot("root", {"Users", "Windows/System32/config"});
  files_.File("root/a.nvsav", "[RTExtraFolders2]\r\nData=D:\\Data\r\n");
  const std::vector<std::string> before = files_.List("root");
  GetInstallationVersion(root.CStr());
  Scan(6.1);
  EXPECT_EQ(files_.List("root"), before);
  EXPECT_EQ(files_.Read("root/a.nvsav"), "[RTExtraFolders2]\r\nData=D:\\Data\r\n");
}

TEST_F(SourceDiscovery, CountsVisibleEntriesOnly) {
  const auto fill = [&](const std::string& folder, int visible, int hidden) {
    for (int i = 0; i < visible; i++) files_.File(folder + "/v" + std::to_string(i));
    for (int i = 0; i < hidden; i++) {
      const WString file = files_.File(folder + "/h" + std::to_string(i));
      SetAttributes(file.CStr(), i % 2 ? FILE_ATTRIBUTE_HIDDEN : FILE_ATTRIBUTE_SYSTEM);
    }
    return IsPopulatedFolder((files_ / folder).CStr());
  };
  EXPECT_FALSE(fill("three", 3, 20));
  EXPECT_TRUE(fill("four", 4, 3));
  files_.Folder("folders/a");
  files_.Folder("folders/b");
  EXPECT_TRUE(fill("folders", 2, 0)) << "folders count, too";
  EXPECT_FALSE(IsPopulatedFolder((files_ / "missing").CStr()));
  EXPECT_FALSE(IsPopulatedFolder(files_.File("file").CStr()));
}

TEST_F(SourceDiscovery, KnowsAProfileByItsHiveOrItsData) {
  files_.File("hive/NTUSER.DAT");
  files_.Folder("data/AppData/Local/Microsoft");
  files_.Folder("neither/AppData/Local");
  files_.Folder("folder/ntuser.dat");
  files_.File("file/AppData/Local/Microsoft");
  const std::pair<const char*, bool> cases[] = {{"hive", true},    {"data", true},  {"neither", false},
                                                {"folder", false}, {"file", false}, {"missing", false}};
  for (const auto& [name, isProfile] : cases) {
    EXPECT_EQ(IsUserProfileFolder((files_ / name).CStr()), isProfile) << name;
    EXPECT_EQ(IsUserProfileFolder(((files_ / name) + L"\\").CStr()), isProfile) << name;
  }
}

std::vector<std::string> Users(const SourceScan& scan) {
  std::vector<std::string> rows;
  for (uint32_t i = 0; i < scan.users.count; i++) {
    rows.push_back(Utf8(scan.users[i]) + " -> " + Utf8(scan.userTargets[i]));
  }
  return rows;
}

TEST_F(SourceDiscovery, ListsTheAccountsOfTheLayout) {
  for (const char* name : {"Users/ANNA", "Users/Bob", "Users/default", "Users/DEFAULT.MIGRATED",
                           "Users/public", "Users/Default User", "Documents and Settings/Old"}) {
    for (const char* file : {"/a", "/b", "/c", "/d"}) files_.File(std::string("root/") + name + file);
  }
  files_.File("root/Users/Few/a");
  files_.File("root/Users/file");
  accounts_.count = 1;
  accounts_.userNames.Add(L"Anna");
  ScanSource((files_ / "root\\").CStr(), 6.2, accounts_, scan_);
  EXPECT_THAT(Users(scan_), UnorderedElementsAre("ANNA -> ANNA", "Bob -> Bob <create>",
                                                 "Default User -> Default User <create>"))
      << "the folder's own spelling";
  for (const double version : {5.1, 0.0}) {
    Scan(version);
    EXPECT_THAT(Users(scan_), ElementsAre("Old -> Old <create>")) << version;
  }
  ScanSource((files_ / "missing").CStr(), 10.0, accounts_, scan_);
  EXPECT_THAT(Users(scan_), ElementsAre()) << "rows of the root before";
}

// An info file on a stranger's disk could otherwise offer folders of this machine as if they were the disk's.
TEST_F(SourceDiscovery, OffersExtraFoldersBelowTheRootOnly) {
  const std::string root = Utf8(files_.Folder("root"));
  Scan(6.1);
  EXPECT_EQ(scan_.extraFolders.count, 0u);
  files_.File("root/a.nvsav", "[RTExtraFolders2]\r\nNever=D:\\Never\r\n");
  files_.File(
      "root/b.grxsv",
      "[RTExtraFolders]\r\nOther=x\r\n[RTextrafolders2]\r\nData\\Work=D:\\Work\r\n..\\up=x\r\n"
      "C:\\Windows=x\r\n\\\\server\\share=x\r\na:b=x\r\nCON=x\r\na\\..\\b=x\r\nNew=\r\n[End]\r\nz=x\r\n");
  LeftOutKeys leftOut;
  Scan(6.1, &leftOut);
  EXPECT_THAT(ArrayRows(scan_.extraFolders), ElementsAre(root + "\\Data\\Work", root + "\\New"));
  EXPECT_THAT(ArrayRows(leftOut.notPlain),
              ElementsAre("..\\up", "C:\\Windows", "\\\\server\\share", "a:b", "CON", "a\\..\\b"));
  EXPECT_THAT(ArrayRows(scan_.extraTargets), ElementsAre("D:\\Work", ""));
}

// Neither is an end of the program, nor rows of nonsense.
TEST_F(SourceDiscovery, LeavesOutAnInfoFileThatIsNone) {
  files_.Folder("root");
  const std::string text = "[RTExtraFolders2]\r\nData=D:\\Data\r\n";
  const std::string contents[] = {"", std::string("\0\1\2", 3) + text, text + std::string(17 << 20, 'x')};
  for (const std::string& content : contents) {
    files_.File("root/a.nvsav", content);
    Scan(6.1);
    EXPECT_EQ(scan_.extraFolders.count, 0u) << content.size();
  }
  files_.Folder("root/a.grxsv");
  files_.File("root/a.nvsav", text);
  Scan(6.1);
  EXPECT_EQ(scan_.extraFolders.count, 1u) << "a folder of the first kind hides the file of the second";
}

}  // namespace
