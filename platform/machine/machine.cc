#include "machine/machine.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <mutex>

#include "machine/accounts_file.h"
#include "machine/complaint.h"
#include "machine/names.h"
#include "machine/settings_text.h"

namespace machine {
namespace {

constexpr const char* kMachineFile = "machine.ini";

struct Current {
  std::unique_ptr<Machine> machine;
  std::mutex lock;
  std::vector<void (*)()> leaving;
};
Current& TheCurrent() {
  static Current* current = new Current;  // never destroyed: calls may come while the process ends
  return *current;
}

bool IsFolder(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

void Take(const SettingsSection& section, std::string_view key, std::string& value) {
  if (const std::string* text = section.Find(key)) value = *text;
}

bool ParseVersion(const std::string& text, MachineSettings& settings) {
  char rest = 0;
  return sscanf(text.c_str(), "%u.%u.%u%c", &settings.major, &settings.minor, &settings.build, &rest) == 3;
}

bool IsDriveLetter(std::string_view text) {
  return !text.empty() && text.size() <= 2 && (text.size() == 1 || text[1] == ':') &&
         ((text[0] >= 'A' && text[0] <= 'Z') || (text[0] >= 'a' && text[0] <= 'z'));
}
char Upper(char letter) {
  return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

bool ReadMachineSection(const SettingsSection& section, const std::string& file, MachineSettings& settings,
                        std::string* error) {
  Take(section, "ComputerName", settings.computerName);
  Take(section, "Console", settings.consoleAccount);
  Take(section, "RunAs", settings.runAs);
  Take(section, "TimeZone", settings.timeZone);
  Take(section, "Program", settings.programPath);
  if (const std::string* version = section.Find("Version"); version && !ParseVersion(*version, settings)) {
    return Complain(error, "\"" + file + "\": \"Version=" + *version +
                               "\" isn't of the form major.minor.build, such as 10.0.19045.");
  }
  if (const std::string* drive = section.Find("SystemDrive")) {
    if (!IsDriveLetter(*drive)) {
      return Complain(error, "\"" + file + "\": \"SystemDrive=" + *drive + "\" isn't a drive letter.");
    }
    settings.systemDrive = Upper((*drive)[0]);
  }
  return true;
}

bool ReadDrives(const SettingsSection& section, const std::string& file, MachineSettings& settings,
                std::string* error) {
  for (const auto& [key, value] : section.values) {
    if (SameText(key, "ReadOnly")) {
      for (char c : value) {
        if (IsDriveLetter(std::string_view(&c, 1))) settings.readOnlyDrives += Upper(c);
      }
      continue;
    }
    if (!IsDriveLetter(key) || !value.starts_with("/")) {
      return Complain(error, "\"" + file + "\": \"" + key + "=" + value +
                                 "\" isn't a drive letter with an absolute folder.");
    }
    std::string folder = value;
    while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    settings.drives[Upper(key[0])] = folder;
  }
  return true;
}

// image=account or image=account,session
void ReadProcesses(const SettingsSection& section, MachineSettings& settings) {
  for (const auto& [key, value] : section.values) {
    ProcessSettings process{key, value, 1};
    if (const size_t comma = value.rfind(','); comma != std::string::npos) {
      process.account = value.substr(0, comma);
      process.session = static_cast<uint32_t>(strtoul(value.c_str() + comma + 1, nullptr, 10));
    }
    settings.processes.push_back(process);
  }
}

const char* TypeName(AccountType type) {
  switch (type) {
    case AccountType::kGuest:
      return "guest";
    case AccountType::kStandard:
      return "standard";
    case AccountType::kAdministrator:
      return "administrator";
  }
  return "standard";
}

}  // namespace

bool ParseAccountType(std::string_view text, AccountType& type) {
  for (const AccountType known : {AccountType::kGuest, AccountType::kStandard, AccountType::kAdministrator}) {
    if (!SameText(text, TypeName(known))) continue;
    type = known;
    return true;
  }
  return false;
}

std::string AccountTypeName(AccountType type) { return TypeName(type); }

bool Machine::Open(const std::string& folder, Machine& machine, std::string* error) {
  machine = Machine();
  char* real = realpath(folder.c_str(), nullptr);
  const std::string file = folder + "/" + kMachineFile;
  if (!real || !IsFolder(real) || access(file.c_str(), F_OK) != 0) {
    free(real);
    return Complain(error, "\"" + folder +
                               "\" is no machine folder, since it has no file machine.ini. "
                               "\"norvane-machine create\" makes one.");
  }
  machine.folder = real;
  free(real);
  SettingsText text;
  if (!text.Read(file, error)) return false;
  const SettingsSection* section = text.Find("Machine");
  if (!section) return Complain(error, "\"" + file + "\" has no section [Machine].");
  if (!ReadMachineSection(*section, file, machine.settings, error)) return false;
  if (const auto* drives = text.Find("Drives");
      drives && !ReadDrives(*drives, file, machine.settings, error)) {
    return false;
  }
  if (const auto* processes = text.Find("Processes")) ReadProcesses(*processes, machine.settings);

  return ReadAccounts(machine.folder + "/" + kAccountsFile, machine.accounts, error);
}

bool Machine::Save(std::string* error) const {
  SettingsText text;
  SettingsSection section{"Machine", {}};
  section.Add("ComputerName", settings.computerName);
  section.Add("Version", std::to_string(settings.major) + "." + std::to_string(settings.minor) + "." +
                             std::to_string(settings.build));
  section.Add("SystemDrive", std::string(1, settings.systemDrive));
  section.Add("Console", settings.consoleAccount);
  section.Add("RunAs", settings.runAs);
  section.Add("TimeZone", settings.timeZone);
  section.Add("Program", settings.programPath);
  text.sections.push_back(section);
  SettingsSection drives{"Drives", {}};
  for (const auto& [letter, place] : settings.drives) drives.Add(std::string(1, letter), place);
  if (!settings.readOnlyDrives.empty()) drives.Add("ReadOnly", settings.readOnlyDrives);
  if (!drives.values.empty()) text.sections.push_back(drives);
  SettingsSection processes{"Processes", {}};
  for (const auto& process : settings.processes) {
    processes.Add(process.image, process.account + "," + std::to_string(process.session));
  }
  if (!processes.values.empty()) text.sections.push_back(processes);
  return text.Write(folder + "/" + kMachineFile, "A Windows machine for norvanectl.", error) &&
         SaveAccounts(error);
}

bool Machine::SaveAccounts(std::string* error) const {
  return WriteAccounts(folder + "/" + kAccountsFile, accounts, error);
}

std::string Machine::DriveFolder(char letter) const {
  letter = Upper(letter);
  if (const auto drive = settings.drives.find(letter); drive != settings.drives.end()) {
    return IsFolder(drive->second) ? drive->second : std::string();
  }
  const std::string inside = folder + "/" + letter;
  // A link here could lead the whole drive out of the machine folder.
  struct stat status;
  return lstat(inside.c_str(), &status) == 0 && S_ISDIR(status.st_mode) ? inside : std::string();
}

bool Machine::IsAttachedDrive(char letter) const { return settings.drives.contains(Upper(letter)); }

bool Machine::IsReadOnlyDrive(char letter) const {
  return settings.readOnlyDrives.find(Upper(letter)) != std::string::npos;
}

std::string Machine::Drives() const {
  std::string letters;
  for (char letter = 'A'; letter <= 'Z'; ++letter) {
    if (!DriveFolder(letter).empty()) letters += letter;
  }
  return letters;
}

const Account* FindByName(const std::vector<Account>& accounts, std::string_view name) {
  const std::string folded = FoldUtf8(name);
  for (const Account& account : accounts) {
    if (FoldUtf8(account.name) == folded) return &account;
  }
  return nullptr;
}

const Account* FindBySid(const std::vector<Account>& accounts, std::string_view sid) {
  const std::string folded = FoldUtf8(sid);
  for (const Account& account : accounts) {
    if (FoldUtf8(account.sid) == folded) return &account;
  }
  return nullptr;
}

const Account* Machine::RunningAccount() const {
  return FindAccount(settings.runAs.empty() ? settings.consoleAccount : settings.runAs);
}

void UseMachine(Machine machine) {
  Current& current = TheCurrent();
  if (current.machine) {
    LeaveMachine();
  } else {
    atexit(LeaveMachine);  // a program that ends by `exit` keeps its changed hives, too
  }
  current.machine = std::make_unique<Machine>(std::move(machine));
}

Machine& ThisMachine() {
  Current& current = TheCurrent();
  if (!current.machine) {
    fprintf(stderr, "norvane: no machine folder was given. Give one with --machine DIR.\n");
    _exit(4);
  }
  return *current.machine;
}

bool HasMachine() { return TheCurrent().machine != nullptr; }

void LeaveMachine() {
  Current& current = TheCurrent();
  std::vector<void (*)()> leaving;
  {
    const std::lock_guard hold(current.lock);
    leaving = current.leaving;
  }
  for (auto drop = leaving.rbegin(); drop != leaving.rend(); ++drop) (*drop)();
}

void OnLeaveMachine(void (*drop)()) {
  Current& current = TheCurrent();
  const std::lock_guard hold(current.lock);
  current.leaving.push_back(drop);
}

}  // namespace machine
