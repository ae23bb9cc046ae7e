#include "machine/attach_machine.h"

#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "machine/complaint.h"
#include "machine/hive_store.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/path_resolution.h"
#include "machine/profile_list.h"
#include "machine/sam_accounts.h"
#include "machine/show_machine.h"

namespace fs = std::filesystem;

namespace machine {
namespace {

constexpr const char* kVersionKey = "Microsoft\\Windows NT\\CurrentVersion";
constexpr size_t kMostProfiles = 4096;

bool LiesIn(const fs::path& inner, const fs::path& outer) {
  const auto [end, rest] = std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end());
  static_cast<void>(rest);
  return end == outer.end();
}

// The drive with Windows\System32\config\SOFTWARE on it; 0 if there is none.
char FindSystemDrive(const Machine& machine) {
  for (const auto& [letter, folder] : machine.settings.drives) {
    const std::u16string path = ToUtf16(std::string(1, letter) + ":\\Windows\\System32\\config\\SOFTWARE");
    if (GetFileAttributesW(AsWide(path)) != INVALID_FILE_ATTRIBUTES) return letter;
  }
  return 0;
}

bool ReadNumber(Hive& hive, const char* path, const char* name, uint32_t& number) {
  const Hive::Key key = hive.Find(hive.Root(), path);
  HiveValue value;
  if (key == 0 || hive.ReadValue(key, name, value) != ERROR_SUCCESS) return false;
  if (value.type != REG_DWORD || value.data.size() != 4) return false;
  value.data.copy(reinterpret_cast<char*>(&number), 4);
  return true;
}

// Windows 10 and later keep the old text at 6.3 and tell their version in two numbers.
bool ReadVersion(Hive& software, MachineSettings& settings) {
  std::string text, build;
  if (!software.ReadText(kVersionKey, "CurrentVersion", text) ||
      sscanf(text.c_str(), "%u.%u", &settings.major, &settings.minor) != 2) {
    return false;
  }
  uint32_t major = 0, minor = 0;
  if (ReadNumber(software, kVersionKey, "CurrentMajorVersionNumber", major)) {
    settings.major = major;
    settings.minor = ReadNumber(software, kVersionKey, "CurrentMinorVersionNumber", minor) ? minor : 0;
  }
  if (software.ReadText(kVersionKey, "CurrentBuildNumber", build) ||
      software.ReadText(kVersionKey, "CurrentBuild", build)) {
    settings.build = static_cast<uint32_t>(strtoul(build.c_str(), nullptr, 10));
  }
  return true;
}

void ReadComputerName(MachineSettings& settings) {
  std::shared_ptr<Hive> system;
  if (FindHive(HiveRoot::kLocalMachine, "SYSTEM", system) != ERROR_SUCCESS) return;
  uint32_t current = 1;
  ReadNumber(*system, "Select", "Current", current);
  char path[80];
  snprintf(path, sizeof path, "ControlSet%03u\\Control\\ComputerName\\ComputerName", current % 1000);
  std::string name;
  if (system->ReadText(path, "ComputerName", name) && !name.empty()) settings.computerName = name;
}

// Profiles of people: local, domain and cloud accounts, but not services.
bool IsPersonSid(const std::string& sid) {
  return sid.starts_with("S-1-5-21-") || sid.starts_with("S-1-12-1-");
}

struct ListedProfile {
  std::string sid, path;
  bool isSetAside = false;  // Windows renames the key of a profile that it couldn't load to <SID>.bak
};

std::vector<ListedProfile> ReadProfileList(Hive& software) {
  std::vector<ListedProfile> profiles;
  const std::string path = std::string(kVersionKey) + "\\ProfileList";
  std::vector<Hive::Key> keys;
  const Hive::Key list = software.Find(software.Root(), path);
  if (list == 0 || software.Children(list, keys) != ERROR_SUCCESS) return profiles;
  for (const Hive::Key key : keys) {
    ListedProfile profile;
    std::string image;
    if (profiles.size() >= kMostProfiles || software.Name(key, profile.sid) != ERROR_SUCCESS) continue;
    if (!IsPersonSid(profile.sid) || !software.ReadText(path + "\\" + profile.sid, "ProfileImagePath", image))
      continue;
    if (profile.sid.ends_with(".bak")) {
      profile.sid.resize(profile.sid.size() - 4);
      profile.isSetAside = true;
    }
    profile.path = ExpandFolder(image);
    while (!profile.path.empty() && profile.path.back() == '\\') profile.path.pop_back();
    if (!profile.path.empty()) profiles.push_back(profile);
  }
  return profiles;
}

// A name that no account has yet.
std::string FreeName(const Machine& machine, const std::string& wanted) {
  std::string name = wanted.empty() ? "Unknown" : wanted;
  for (int number = 2; machine.FindAccount(name); ++number)
    name = wanted + " (" + std::to_string(number) + ")";
  return name;
}

void AddAccounts(Hive& software, Machine& machine, std::vector<std::string>& warnings) {
  std::shared_ptr<Hive> sam;
  const DWORD error = FindHive(HiveRoot::kLocalMachine, "SAM", sam);
  if (error == ERROR_SUCCESS) {
    for (const Account& account : ReadSamAccounts(*sam)) {
      if (!machine.FindAccount(account.name) && !machine.FindSid(account.sid))
        machine.accounts.push_back(account);
    }
  }
  if (machine.accounts.empty()) {
    warnings.push_back("The accounts' names and types can't be read from the SAM hive (" +
                       (error != ERROR_SUCCESS ? ErrorReason(error) : std::string("it holds none")) +
                       "), so accounts are named after their profile folders and count as standard users.");
  }
  for (const ListedProfile& profile : ReadProfileList(software)) {
    const Account* known = machine.FindSid(profile.sid);
    if (!known) {
      Account account;
      account.name = FreeName(machine, profile.path.substr(profile.path.rfind('\\') + 1));
      account.sid = profile.sid;
      account.groups = {"Users"};
      machine.accounts.push_back(account);
      known = &machine.accounts.back();
    }
    if (!profile.isSetAside || !ProfileOf(profile.sid).empty()) continue;
    // Nothing else would lead to this profile any more.
    Account& account = machine.accounts[static_cast<size_t>(known - machine.accounts.data())];
    if (account.home.empty()) account.home = profile.path;
    warnings.push_back("Windows had set the profile of \"" + account.name +
                       "\" aside as damaged. It is taken from " + profile.path + " all the same.");
  }
}

// The first letter from N on that no drive has.
char ProgramDrive(const Machine& machine) {
  for (const char letter : std::string("NOPQRSTUVWXYZEFGHIJKLMDBA")) {
    if (!machine.settings.drives.contains(letter)) return letter;
  }
  return 0;
}

// Reads all that the disk tells, with the machine in use as far as it is known.
bool ReadDisk(std::vector<std::string>& warnings, std::string* error) {
  Machine& machine = ThisMachine();
  const std::lock_guard hold(RegistryLock());
  std::shared_ptr<Hive> software;
  const std::string place = SystemDriveText() + "\\Windows\\System32\\config\\SOFTWARE";
  if (const DWORD failed = FindHive(HiveRoot::kLocalMachine, "SOFTWARE", software)) {
    return Complain(error,
                    "The registry hive \"" + place + "\" can't be read: " + ErrorReason(failed) +
                        ". Without it nobody knows where the profiles are; copy what is needed by hand.");
  }
  if (!ReadVersion(*software, machine.settings)) {
    return Complain(
        error, "The registry hive \"" + place + "\" doesn't tell the version of Windows. Is it a whole one?");
  }
  std::string root;
  if (software->ReadText(kVersionKey, "SystemRoot", root) && root.size() > 1 && root[1] == ':' &&
      FoldUtf8(root.substr(0, 1))[0] != machine.settings.systemDrive) {
    return Complain(error, "The Windows on drive " + SystemDriveText() + " calls its own drive " +
                               root.substr(0, 2) +
                               ", and all its paths begin so. Attach it under that letter.");
  }
  if (!software->WasClean()) {
    warnings.push_back(
        "Windows was not shut down cleanly: the newest changes of its registry are in log files that "
        "aren't read, so a profile made just before may be missing.");
  }
  ReadComputerName(machine.settings);
  AddAccounts(*software, machine, warnings);
  return true;
}

bool CheckFolders(const std::string& folder, const AttachPlan& plan, Machine& machine, std::string* error) {
  std::error_code failed;
  const fs::path wanted = fs::weakly_canonical(folder, failed);
  for (const auto& [letter, place] : plan.drives) {
    const fs::path disk = fs::canonical(place, failed);
    if (failed || !fs::is_directory(disk)) {
      return Complain(error, "The folder \"" + place + "\" for drive " + letter +
                                 ": can't be opened: " + (failed ? failed.message() : "it is no folder") +
                                 ". Mount the disk there first.");
    }
    if (LiesIn(wanted, disk)) {
      return Complain(error, "The machine folder \"" + folder +
                                 "\" would lie on the disk that is attached as " + letter +
                                 ":. Give a folder elsewhere, since nothing is written to that disk.");
    }
    machine.settings.drives[letter] = disk.string();
  }
  fs::create_directories(wanted, failed);
  if (failed)
    return Complain(error, "The folder \"" + folder + "\" can't be made: " + failed.message() + ".");
  if (!fs::is_empty(wanted, failed) || failed) {
    return Complain(error,
                    "The folder \"" + folder + "\" isn't empty. Give one that is empty or doesn't exist.");
  }
  machine.folder = fs::canonical(wanted).string();
  return true;
}

}  // namespace

bool ParseAttachedDrive(const std::string& text, AttachPlan& plan, std::string* error) {
  const size_t equals = text.find('=');
  const std::string letter = FoldUtf8(text.substr(0, equals));
  const bool isLetter = letter.size() == 1 || (letter.size() == 2 && letter[1] == ':');
  if (equals == std::string::npos || !isLetter || letter[0] < 'A' || letter[0] > 'Z' ||
      equals + 1 == text.size()) {
    return Complain(error, "\"" + text + "\" isn't a drive letter with a folder, such as C=/mnt/disk.");
  }
  if (plan.drives.contains(letter[0])) {
    return Complain(error, std::string("Drive ") + letter[0] + ": is given twice.");
  }
  plan.drives[letter[0]] = text.substr(equals + 1);
  return true;
}

bool AttachMachine(const std::string& folder, const AttachPlan& plan, std::vector<std::string>& warnings,
                   std::string* error) {
  Machine machine;
  if (!CheckFolders(folder, plan, machine, error)) return false;
  machine.settings.timeZone = plan.timeZone;
  machine.settings.readOnlyDrives = plan.readOnlyDrives;
  UseMachine(machine);
  const char systemDrive = FindSystemDrive(machine);
  if (systemDrive == 0) {
    return Complain(error,
                    "None of the attached folders holds Windows\\System32\\config\\SOFTWARE, so none is the "
                    "system drive of a Windows. Attach the folder that holds \"Windows\" and \"Users\".");
  }
  Machine& current = ThisMachine();
  current.settings.systemDrive = systemDrive;
  if (!plan.isWritable) current.settings.readOnlyDrives += systemDrive;
  if (!ReadDisk(warnings, error)) return false;
  const char drive = ProgramDrive(current);
  if (drive == 0)
    return Complain(error, "All drive letters are taken, and one is needed for the program itself.");
  std::error_code failed;
  fs::create_directories(fs::path(current.folder) / std::string(1, drive) / "Norvane", failed);
  if (failed) return Complain(error, "The program's folder can't be made: " + failed.message() + ".");
  current.settings.programPath = std::string(1, drive) + ":\\Norvane\\Norvane.exe";
  return current.Save(error);
}

}  // namespace machine
