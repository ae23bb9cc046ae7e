// dead_disk.h
//
// The system drive of a Windows that doesn't start any more: hives, two profiles, no machine folder.
#pragma once
#include <gtest/gtest.h>

#include "machine/hive.h"
#include "platform/sam_hive.h"
#include "platform/test_machine.h"

inline constexpr const char* kMachineSid = "S-1-5-21-11-22-33";

// All that is below a folder, with times and the sums of the bytes, to see that nothing changed. The sizes
// of folders are left out: an NTFS driver reckons them anew whenever it likes.
inline std::string StateOf(const std::string& folder) {
  return RunProgramOf(
             "cd " + folder +
             " && find . -type d -printf '%p %m %T@ %C@\\n' -o -printf '%p %s %m %T@ %C@ %l\\n' | sort && "
             "find . -type f -print0 | sort -z | xargs -0 sha256sum")
      .output;
}

// The disk of a machine, as a copy or a mount of it would be.
class DeadDisk {
 public:
  DeadDisk() {
    machine::MachinePlan plan = TwoAccounts();
    plan.computerName = "OLD-PC";
    std::string error;
    EXPECT_TRUE(machine::CreateMachine(place_.path + "/made", plan, &error)) << error;
    std::filesystem::remove(place_.path + "/made/machine.ini");
    Rewrite();
  }
  // ProfileList with accounts of the SID above, whatever the plan drew by chance.
  void Rewrite(const std::string& setAside = "") {
    machine::HivePlan software;
    machine::HivePlan& version = software.Key("Microsoft\\Windows NT\\CurrentVersion");
    version.Text("CurrentVersion", "6.3");
    version.Text("CurrentBuildNumber", "22631");
    version.Number("CurrentMajorVersionNumber", 10);
    version.Number("CurrentMinorVersionNumber", 0);
    version.Text("SystemRoot", "C:\\Windows");
    machine::HivePlan& list = version.Key("ProfileList");
    list.Text("ProfilesDirectory", "%SystemDrive%\\Users", REG_EXPAND_SZ);
    for (const auto& [sid, path] :
         {std::pair<std::string, std::string>{"S-1-5-18", "C:\\Windows\\x"},
          {std::string(kMachineSid) + "-1001", "C:\\Users\\Anna"},
          {std::string(kMachineSid) + "-1002" + setAside, "%SystemDrive%\\Users\\Bob"},
          {"S-1-12-1-9-8-7-6", "C:\\Users\\Cloud"},
          {"S-1-5-80-1-2", "C:\\Users\\Service"}}) {
      list.Key(sid).Text("ProfileImagePath", path, REG_EXPAND_SZ);
    }
    EXPECT_EQ(machine::Hive::Make(Config() + "SOFTWARE", software), 0u);
  }
  void WriteSam() {
    const std::vector<SamUser> users = {{500, "Administrator", "", "Built-in", "", 0x0211},
                                        {1001, "Anna Ä", "Anna Berg", "Chief", "", 0x0210},
                                        {1002, "Bob", "", "", "", 0x0214}};
    EXPECT_EQ(machine::Hive::Make(Config() + "SAM", SamHive(kMachineSid, users, {500, 1001}, {1002})), 0u);
  }
  std::string Config() const { return Folder() + "/Windows/System32/config/"; }
  std::string Folder() const { return place_.path + "/made/C"; }
  const std::string& Above() const { return place_.path; }

 private:
  DiskFolder place_;
};
