#include "machine/system_hives.h"

#include "machine/profile_layout.h"
#include "machine/sid_text.h"

namespace machine {
namespace {

// What Windows calls itself in the key CurrentVersion. From 10 on that stays 6.3, and 11 calls itself 10.
std::string VersionText(const MachinePlan& plan) {
  return plan.major >= 10 ? "6.3" : std::to_string(plan.major) + "." + std::to_string(plan.minor);
}

std::string ProductName(const MachinePlan& plan) {
  if (plan.major >= 10) return "Windows 10 Pro";
  if (plan.major < 6) return "Microsoft Windows XP";
  const char* const names[] = {"Windows Vista (TM) Business", "Windows 7 Professional", "Windows 8 Pro",
                               "Windows 8.1 Pro"};
  return plan.minor < 4 ? names[plan.minor] : "Windows";
}

void AddVersion(const MachinePlan& plan, HivePlan& key) {
  key.Text("CurrentVersion", VersionText(plan));
  key.Text("CurrentBuild", std::to_string(plan.build));
  key.Text("CurrentBuildNumber", std::to_string(plan.build));
  if (plan.major >= 10) {
    key.Number("CurrentMajorVersionNumber", plan.major);
    key.Number("CurrentMinorVersionNumber", plan.minor);
  }
  key.Text("ProductName", ProductName(plan));
  key.Text("SystemRoot", "C:\\Windows");
}

void AddProfileList(const MachinePlan& plan, const std::vector<Account>& accounts,
                    const std::vector<std::string>& profiles, HivePlan& list) {
  const std::string folder = "%SystemDrive%" + ProfilesFolder(plan.major).substr(2);
  list.Text("ProfilesDirectory", folder, REG_EXPAND_SZ);
  if (plan.major < 6) {
    list.Text("DefaultUserProfile", DefaultProfileName(plan.major));
    list.Text("AllUsersProfile", PublicProfileName(plan.major));
  } else {
    list.Text("Default", folder + "\\" + DefaultProfileName(plan.major), REG_EXPAND_SZ);
    list.Text("Public", folder + "\\" + PublicProfileName(plan.major), REG_EXPAND_SZ);
    list.Text("ProgramData", "%SystemDrive%\\ProgramData", REG_EXPAND_SZ);
  }
  HivePlan& system = list.Key(kSystemSid);
  system.Text("ProfileImagePath", "%systemroot%\\system32\\config\\systemprofile", REG_EXPAND_SZ);
  for (size_t i = 0; i < accounts.size(); ++i) {
    if (profiles[i].empty()) continue;
    list.keys.push_back(ProfileListEntry(accounts[i].sid, profiles[i]));
  }
}

}  // namespace

HivePlan ProfileListEntry(const std::string& sid, const std::string& profile) {
  HivePlan entry;
  entry.name = sid;
  entry.Text("ProfileImagePath", profile, REG_EXPAND_SZ);
  entry.Binary("Sid", SidBytes(sid));
  entry.Number("Flags", 0);
  entry.Number("State", 0);
  return entry;
}

HivePlan SoftwareHive(const MachinePlan& plan, const std::vector<Account>& accounts,
                      const std::vector<std::string>& profiles) {
  HivePlan hive;
  hive.Key("Classes\\CLSID");
  HivePlan& version = hive.Key("Microsoft\\Windows NT\\CurrentVersion");
  AddVersion(plan, version);
  AddProfileList(plan, accounts, profiles, version.Key("ProfileList"));
  hive.Key("Microsoft\\Windows\\CurrentVersion").Text("ProgramFilesDir", "C:\\Program Files");
  AddVersion(plan, hive.Key("Wow6432Node\\Microsoft\\Windows NT\\CurrentVersion"));
  hive.Key("Wow6432Node\\Microsoft\\Windows\\CurrentVersion")
      .Text("ProgramFilesDir", "C:\\Program Files (x86)");
  return hive;
}

HivePlan SystemHive(const MachinePlan& plan) {
  HivePlan hive;
  HivePlan& select = hive.Key("Select");
  for (const char* name : {"Current", "Default", "LastKnownGood"}) select.Number(name, 1);
  HivePlan& control = hive.Key("ControlSet001\\Control");
  control.Key("ComputerName\\ComputerName").Text("ComputerName", plan.computerName);
  HivePlan& session = control.Key("Session Manager");
  HivePlan& environment = session.Key("Environment");
  environment.Text("TEMP", "%SystemRoot%\\TEMP", REG_EXPAND_SZ);
  environment.Text("windir", "%SystemRoot%", REG_EXPAND_SZ);
  hive.Key("ControlSet001\\Hardware Profiles\\Current\\Software");
  return hive;
}

}  // namespace machine
