#include "operations/source_discovery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <windows.h>

#include "foundation/file_object.h"
#include "foundation/unique_handle.h"
#include "operations/backup_set.h"
#include "support/account_database.h"
#include "support/account_place.h"

namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

constexpr char kVersionKey[] = "Microsoft\\Windows NT\\CurrentVersion";
constexpr char kMajor[] = "CurrentMajorVersionNumber";
constexpr char kMinor[] = "CurrentMinorVersionNumber";

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

// A root with folders and, where values are given, its own registry.
WString MakeRoot(AccountPlace& place, const std::string& name, const std::vector<std::string>& folders,
                 const std::vector<TestValue>& values = {}) {
  WString root = place.files.Folder(name);
  for (const std::string& folder : folders) place.files.Folder(name + "/" + folder);
  if (!values.empty()) {
    WriteTestHive(place.files.Folder(name + "/Windows/System32/config") + L"\\SOFTWARE", values);
  }
  return root;
}

// A version decides which folders are taken for accounts, so a wrong one restores nothing.
TEST(SourceDiscovery, TellsTheVersionByRegistryThenByFolders) {
  AccountPlace place;
  const std::vector<std::string> before = MachineKeys();
  const std::string windows = "ProgramData/Microsoft/Windows";
  const struct {
    const char* what;
    std::vector<std::string> folders;
    std::vector<TestValue> values;
    double version;
  } cases[] = {
      {"registry first",
       {"Documents and Settings"},
       {{kVersionKey, kMajor, "10", REG_DWORD}, {kVersionKey, kMinor, "0", REG_DWORD}},
       10.0},
      {"registry with a minor number",
       {"Users"},
       {{kVersionKey, kMajor, "6", REG_DWORD}, {kVersionKey, kMinor, "3", REG_DWORD}},
       6.3},
      {"minor number alone", {"Users"}, {{kVersionKey, kMinor, "3", REG_DWORD}}, 6.1},
      {"major number alone", {"Users"}, {{kVersionKey, kMajor, "10", REG_DWORD}}, 6.1},
      {"numbers as texts",
       {"Documents and Settings"},
       {{kVersionKey, kMajor, "10", REG_SZ}, {kVersionKey, kMinor, "0", REG_SZ}},
       5.1},
      {"too old to be believed",
       {"Users"},
       {{kVersionKey, kMajor, "3", REG_DWORD}, {kVersionKey, kMinor, "5", REG_DWORD}},
       6.1},
      {"no such key", {"Users"}, {{"Microsoft", "x", "y", REG_SZ}}, 6.1},
      {"10 by its folders", {windows + "/AppRepository", "Users"}, {}, 10.0},
      {"8 by its folders", {windows, "Documents and Settings", "Users"}, {}, 6.2},
      {"old layout", {"Documents and Settings", "Users"}, {}, 5.1},
      {"new layout", {"Users"}, {}, 6.1},
      {"nothing", {"Data"}, {}, 0.0},
      {"a folder for a registry", {"Users", "Windows/System32/config/SOFTWARE"}, {}, 6.1},
  };
  for (const auto& one : cases) {
    const WString root = MakeRoot(place, one.what, one.folders, one.values);
    EXPECT_DOUBLE_EQ(GetInstallationVersion(root.CStr()), one.version) << one.what;
    EXPECT_DOUBLE_EQ(GetInstallationVersion((root + L"\\\\").CStr()), one.version) << one.what;
  }
  place.files.File("file/ProgramData/Microsoft/Windows");
  place.files.File("file/Users");
  EXPECT_EQ(GetInstallationVersion((place.files / "file").CStr()), 0.0) << "files are no folders";
  EXPECT_EQ(GetInstallationVersion((place.files / "missing").CStr()), 0.0);
  EXPECT_EQ(MachineKeys(), before) << "a hive stays loaded";
}

// Loading a file that isn't there makes one on the disk that is only to be looked at.
TEST(SourceDiscovery, ChangesNothing) {
  AccountPlace place;
  const WString root = MakeRoot(place, "root", {"Users", "Windows/System32/config"});
  place.files.File("root/a.nvsav", "[RTExtraFolders2]\r\nData=D:\\Data\r\n");
  const std::vector<std::string> before = place.files.List("root");
  GetInstallationVersion(root.CStr());
  SourceScan scan;
  ScanSource(root.CStr(), 6.1, UserTable(), scan);
  EXPECT_EQ(place.files.List("root"), before);
  EXPECT_EQ(place.files.Read("root/a.nvsav"), "[RTExtraFolders2]\r\nData=D:\\Data\r\n");
}

TEST(SourceDiscovery, CountsVisibleEntriesOnly) {
  AccountPlace place;
  const auto fill = [&](const std::string& folder, int visible, int hidden) {
    for (int i = 0; i < visible; i++) place.files.File(folder + "/v" + std::to_string(i));
    for (int i = 0; i < hidden; i++) {
      const WString file = place.files.File(folder + "/h" + std::to_string(i));
      SetAttributes(file.CStr(), i % 2 ? FILE_ATTRIBUTE_HIDDEN : FILE_ATTRIBUTE_SYSTEM);
    }
    return IsPopulatedFolder((place.files / folder).CStr());
  };
  EXPECT_FALSE(fill("three", 3, 20));
  EXPECT_TRUE(fill("four", 4, 3));
  place.files.Folder("folders/a");
  place.files.Folder("folders/b");
  EXPECT_TRUE(fill("folders", 2, 0)) << "folders count, too";
  EXPECT_FALSE(IsPopulatedFolder((place.files / "missing").CStr()));
  EXPECT_FALSE(IsPopulatedFolder(place.files.File("file").CStr()));
}

TEST(SourceDiscovery, KnowsAProfileByItsHiveOrItsData) {
  AccountPlace place;
  place.files.File("hive/NTUSER.DAT");
  place.files.Folder("data/AppData/Local/Microsoft");
  place.files.Folder("neither/AppData/Local");
  place.files.Folder("folder/ntuser.dat");
  place.files.File("file/AppData/Local/Microsoft");
  const std::pair<const char*, bool> cases[] = {{"hive", true},    {"data", true},  {"neither", false},
                                                {"folder", false}, {"file", false}, {"missing", false}};
  for (const auto& [name, isProfile] : cases) {
    EXPECT_EQ(IsUserProfileFolder((place.files / name).CStr()), isProfile) << name;
    EXPECT_EQ(IsUserProfileFolder(((place.files / name) + L"\\").CStr()), isProfile) << name;
  }
}

void AddUser(AccountPlace& place, const std::string& folder) {
  for (const char* name : {"a", "b", "c", "d"}) place.files.File(folder + "/" + name);
}

std::vector<std::string> Texts(const WStringArray& array) {
  std::vector<std::string> texts;
  for (uint32_t i = 0; i < array.count; i++) texts.push_back(Utf8(array[i]));
  return texts;
}

std::vector<std::string> Users(const SourceScan& scan) {
  std::vector<std::string> rows;
  for (uint32_t i = 0; i < scan.users.count; i++) {
    rows.push_back(Utf8(scan.users[i]) + " -> " + Utf8(scan.userTargets[i]));
  }
  return rows;
}

TEST(SourceDiscovery, ListsTheAccountsOfTheLayout) {
  AccountPlace place;
  for (const char* name : {"ANNA", "Bob", "default", "DEFAULT.MIGRATED", "public", "Default User"}) {
    AddUser(place, std::string("root/Users/") + name);
  }
  AddUser(place, "root/Documents and Settings/Old");
  place.files.File("root/Users/Few/a");
  place.files.File("root/Users/file");
  UserTable accounts;
  accounts.count = 1;
  accounts.userNames.Add(L"Anna");
  const WString root = place.files / "root";
  SourceScan scan;
  ScanSource((root + L"\\").CStr(), 6.2, accounts, scan);
  EXPECT_THAT(Users(scan), UnorderedElementsAre("ANNA -> ANNA", "Bob -> Bob <create>",
                                                "Default User -> Default User <create>"))
      << "the folder's own spelling";
  for (const double version : {5.1, 0.0}) {
    ScanSource(root.CStr(), version, accounts, scan);
    EXPECT_THAT(Users(scan), ElementsAre("Old -> Old <create>")) << version;
  }
  ScanSource((place.files / "missing").CStr(), 10.0, accounts, scan);
  EXPECT_THAT(Users(scan), ElementsAre()) << "rows of the root before";
}

// An info file on a stranger's disk could otherwise offer folders of this machine as if they were the disk's.
TEST(SourceDiscovery, OffersExtraFoldersBelowTheRootOnly) {
  AccountPlace place;
  const WString root = place.files.Folder("root");
  SourceScan scan;
  ScanSource(root.CStr(), 6.1, UserTable(), scan);
  EXPECT_EQ(scan.extraFolders.count, 0u);
  place.files.File("root/a.nvsav", "[RTExtraFolders2]\r\nNever=D:\\Never\r\n");
  place.files.File(
      "root/b.grxsv",
      "[RTExtraFolders]\r\nOther=x\r\n[RTextrafolders2]\r\nData\\Work=D:\\Work\r\n..\\up=x\r\n"
      "C:\\Windows=x\r\n\\\\server\\share=x\r\na:b=x\r\nCON=x\r\na\\..\\b=x\r\nNew=\r\n[End]\r\nz=x\r\n");
  LeftOutKeys leftOut;
  ScanSource(root.CStr(), 6.1, UserTable(), scan, &leftOut);
  EXPECT_THAT(Texts(scan.extraFolders), ElementsAre(Utf8(root) + "\\Data\\Work", Utf8(root) + "\\New"));
  EXPECT_THAT(Texts(leftOut.notPlain),
              ElementsAre("..\\up", "C:\\Windows", "\\\\server\\share", "a:b", "CON", "a\\..\\b"));
  EXPECT_THAT(Texts(scan.extraTargets), ElementsAre("D:\\Work", ""));
}

// Neither is an end of the program, nor rows of nonsense.
TEST(SourceDiscovery, LeavesOutAnInfoFileThatIsNone) {
  AccountPlace place;
  const WString root = place.files.Folder("root");
  const std::string text = "[RTExtraFolders2]\r\nData=D:\\Data\r\n";
  const std::string contents[] = {"", std::string("\0\1\2", 3) + text, text + std::string(17 << 20, 'x')};
  SourceScan scan;
  for (const std::string& content : contents) {
    place.files.File("root/a.nvsav", content);
    ScanSource(root.CStr(), 6.1, UserTable(), scan);
    EXPECT_EQ(scan.extraFolders.count, 0u) << content.size();
  }
  place.files.Folder("root/a.grxsv");
  place.files.File("root/a.nvsav", text);
  ScanSource(root.CStr(), 6.1, UserTable(), scan);
  EXPECT_EQ(scan.extraFolders.count, 1u) << "a folder of the first kind hides the file of the second";
}

}  // namespace
