#include "machine/create_machine.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <random>

#include "machine/account_names.h"
#include "machine/complaint.h"
#include "machine/file_attributes.h"
#include "machine/names.h"
#include "machine/profile_layout.h"
#include "machine/system_hives.h"

namespace fs = std::filesystem;

namespace machine {
namespace {

constexpr uint32_t kFirstRid = 1001;

struct BuiltInAccount {
  const char* name;
  AccountType type;
  uint32_t rid;
  const char* comment;
};
constexpr BuiltInAccount kBuiltInAccounts[] = {
    {"Administrator", AccountType::kAdministrator, 500,
     "Built-in account for administering the computer/domain"},
    {"Guest", AccountType::kGuest, 501, "Built-in account for guest access to the computer/domain"},
};
uint32_t BuiltInRid(std::string_view name) {
  for (const BuiltInAccount& builtIn : kBuiltInAccounts) {
    if (SameText(builtIn.name, name)) return builtIn.rid;
  }
  return 0;
}

// One run of CreateMachine.
class Creation {
 public:
  explicit Creation(const MachinePlan& plan) : plan_(plan) {}

  bool PlanAccounts(std::string* error);  // first: it makes nothing
  bool Run(const std::string& folder, std::string* error) {
    machine_.folder = folder;
    if (!MakeFolders() || !MakeProfiles() || !MakeSystemHives()) return Complain(error, failure_);
    machine_.settings.computerName = plan_.computerName;
    machine_.settings.major = plan_.major;
    machine_.settings.minor = plan_.minor;
    machine_.settings.build = plan_.build;
    machine_.settings.consoleAccount = plan_.consoleAccount;
    machine_.settings.runAs = plan_.runAs;
    machine_.settings.timeZone = plan_.timeZone;
    AddProcesses();
    return machine_.Save(error);  // last, so that a half-made machine is none
  }

 private:
  void AddAccount(const AccountPlan& plan, uint32_t rid);
  bool MakeFolders();
  bool MakeProfiles();
  bool MakeSystemHives();
  void AddProcesses();
  bool MakeProfile(const std::string& path, const std::map<std::string, std::string>& elsewhere,
                   bool hasHive);

  // Of Windows paths on the new machine.
  std::string Disk(const std::string& path) const;
  bool MakeFolder(const std::string& path, uint32_t attributes = 0);
  bool MakeHive(const std::string& path, const HivePlan& plan, uint32_t attributes = 0);
  bool SetAttributes(const std::string& path, uint32_t attributes);

  const MachinePlan& plan_;
  Machine machine_;
  std::string authority_;              // the machine's part of the SIDs
  std::vector<AccountPlan> planned_;   // in the order of machine_.accounts
  std::vector<std::string> profiles_;  // likewise; empty: none
  std::string failure_;
};

std::string Creation::Disk(const std::string& path) const {
  std::string disk = machine_.folder + "/" + path.substr(0, 1) + path.substr(2);
  std::replace(disk.begin(), disk.end(), '\\', '/');
  return disk;
}

bool Creation::SetAttributes(const std::string& path, uint32_t attributes) {
  FileFacts facts;
  const std::string disk = Disk(path);
  if (ReadStatus(AT_FDCWD, disk.c_str(), facts) &&
      WriteAttributes(AT_FDCWD, disk.c_str(), facts, attributes, 0)) {
    return true;
  }
  failure_ = "The attributes of \"" + disk + "\" can't be set: " + strerror(errno) +
             ". A machine folder needs a file system with extended attributes.";
  return false;
}

bool Creation::MakeFolder(const std::string& path, uint32_t attributes) {
  std::error_code error;
  fs::create_directories(Disk(path), error);
  if (!error) return attributes == 0 || SetAttributes(path, attributes);
  failure_ = "The folder \"" + Disk(path) + "\" can't be made: " + error.message() + ".";
  return false;
}

bool Creation::MakeHive(const std::string& path, const HivePlan& plan, uint32_t attributes) {
  if (const DWORD error = Hive::Make(Disk(path), plan)) {
    failure_ =
        "The registry hive \"" + Disk(path) + "\" can't be written (error " + std::to_string(error) + ").";
    return false;
  }
  return attributes == 0 || SetAttributes(path, attributes);
}

void Creation::AddAccount(const AccountPlan& plan, uint32_t rid) {
  Account account;
  account.name = plan.name;
  account.sid = authority_ + std::to_string(rid);
  account.fullName = plan.fullName;
  account.comment = plan.comment;
  account.home = plan.home;
  account.type = plan.type;
  if (plan.isDisabled) account.flags |= kAccountDisabled;
  const char* const groups[] = {"Guests", "Users", "Administrators"};
  account.groups = {groups[static_cast<int>(plan.type)]};
  machine_.accounts.push_back(account);
  planned_.push_back(plan);
  profiles_.push_back(plan.hasProfile ? ProfilePath(plan_.major, plan.name) : std::string());
}

bool Creation::PlanAccounts(std::string* error) {
  std::mt19937_64 random(plan_.seed != 0 ? plan_.seed : std::random_device{}());
  authority_ = "S-1-5-21-";
  for (int i = 0; i < 3; ++i) authority_ += std::to_string(random() % 0xFFFFFFFF) + "-";

  uint32_t next = kFirstRid;
  for (const AccountPlan& plan : plan_.accounts) {
    if (machine_.FindAccount(plan.name)) {
      return Complain(error, "The account \"" + plan.name + "\" is given twice.");
    }
    const uint32_t builtIn = BuiltInRid(plan.name);
    AddAccount(plan, plan.rid != 0 ? plan.rid : builtIn != 0 ? builtIn : next++);
  }
  for (const BuiltInAccount& builtIn : kBuiltInAccounts) {
    if (machine_.FindAccount(builtIn.name)) continue;
    AccountPlan plan;
    plan.name = builtIn.name;
    plan.type = builtIn.type;
    plan.comment = builtIn.comment;
    plan.isDisabled = true;
    plan.hasProfile = false;
    AddAccount(plan, builtIn.rid);
  }
  for (const std::string& name : {plan_.consoleAccount, plan_.runAs}) {
    if (!name.empty() && !machine_.FindAccount(name)) {
      return Complain(
          error, "There is no account \"" + name + "\" on the machine to be made. Add it as an account.");
    }
  }
  return true;
}

bool Creation::MakeFolders() {
  for (const char drive : "C" + plan_.moreDrives) {
    if (!MakeFolder(std::string(1, drive) + ":")) return false;
  }
  for (const char* path : {"C:\\Norvane", "C:\\Program Files", "C:\\Program Files (x86)",
                           "C:\\Windows\\System32\\config", "C:\\Windows\\SysWOW64", "C:\\Windows\\Temp"}) {
    if (!MakeFolder(path)) return false;
  }
  if (plan_.major >= 6 && !MakeFolder("C:\\ProgramData", FILE_ATTRIBUTE_HIDDEN)) return false;
  if (!MakeFolder(ProfilesFolder(plan_.major))) return false;
  const std::string common = ProfilePath(plan_.major, PublicProfileName(plan_.major));
  for (const ProfileFolder& folder : ProfileFolders(plan_.major)) {
    // Of a profile that nobody logs on to there are the visible folders only.
    if (folder.place.find('\\') != std::string::npos || folder.isHidden) continue;
    if (!MakeFolder(common + "\\" + folder.place)) return false;
  }
  return true;
}

bool Creation::MakeProfile(const std::string& path, const std::map<std::string, std::string>& elsewhere,
                           bool hasHive) {
  for (const ProfileFolder& folder : ProfileFolders(plan_.major)) {
    const auto place = elsewhere.find(folder.name);
    const bool isElsewhere = !folder.name.empty() && place != elsewhere.end();
    const std::string made = isElsewhere ? place->second : path + "\\" + folder.place;
    // A drive that the machine doesn't have stays one, as with a disk that was taken out.
    if (isElsewhere && !fs::is_directory(Disk(made.substr(0, 2)))) continue;
    if (!MakeFolder(made, folder.isHidden ? FILE_ATTRIBUTE_HIDDEN : 0)) return false;
  }
  return !hasHive || MakeHive(path + "\\NTUSER.DAT", UserHive(plan_.major, path, elsewhere),
                              FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE);
}

bool Creation::MakeProfiles() {
  const std::string standard = ProfilePath(plan_.major, DefaultProfileName(plan_.major));
  if (!MakeProfile(standard, {}, true) || !SetAttributes(standard, FILE_ATTRIBUTE_HIDDEN)) return false;
  for (size_t i = 0; i < profiles_.size(); ++i) {
    if (profiles_[i].empty()) continue;
    if (!MakeProfile(profiles_[i], planned_[i].folders, planned_[i].hasHive)) return false;
  }
  return true;
}

bool Creation::MakeSystemHives() {
  const std::string config = "C:\\Windows\\System32\\config\\";
  return MakeHive(config + "SOFTWARE", SoftwareHive(plan_, machine_.accounts, profiles_)) &&
         MakeHive(config + "SYSTEM", SystemHive(plan_)) &&
         MakeHive(config + "DEFAULT",
                  UserHive(plan_.major, "C:\\Windows\\system32\\config\\systemprofile", {}));
}

void Creation::AddProcesses() {
  const uint32_t console = plan_.major < 6 ? 0 : 1;
  const std::string system = "C:\\Windows\\System32\\";
  auto& processes = machine_.settings.processes;
  processes = {{system + "smss.exe", "SYSTEM", 0},
               {system + "services.exe", "SYSTEM", 0},
               {system + "winlogon.exe", "SYSTEM", console}};
  if (!plan_.consoleAccount.empty()) {
    processes.push_back({"C:\\Windows\\explorer.exe", plan_.consoleAccount, console});
  }
}

}  // namespace

bool ParseAccountPlan(std::string_view text, AccountPlan& account, std::string* error) {
  const size_t first = std::min(text.find(':'), text.size());
  account.name = text.substr(0, first);
  if (!IsAccountName(account.name)) {
    return Complain(error, "\"" + account.name +
                               "\" can't be the name of an account: it has 1 to 20 characters, "
                               "none of \" / \\ [ ] : ; | = , + * ? < > @, and no dot or blank at its end.");
  }
  if (first == text.size()) return true;
  const size_t second = std::min(text.find(':', first + 1), text.size());
  const std::string type(text.substr(first + 1, second - first - 1));
  if (!type.empty() && !ParseAccountType(type, account.type)) {
    return Complain(
        error, "\"" + type + "\" is no type of an account. Types are guest, standard and administrator.");
  }
  if (second < text.size()) account.fullName = text.substr(second + 1);
  return true;
}

bool ParseMachineVersion(std::string_view text, MachinePlan& plan, std::string* error) {
  const std::string version(text);
  char rest = 0;
  if (sscanf(version.c_str(), "%u.%u.%u%c", &plan.major, &plan.minor, &plan.build, &rest) == 3 &&
      plan.major >= 5) {
    return true;
  }
  return Complain(error,
                  "\"" + version +
                      "\" is no version of Windows. It has the form major.minor.build, such as "
                      "10.0.19045 for Windows 10, 10.0.22631 for 11, 6.1.7601 for 7, 5.1.2600 for XP.");
}

bool CreateMachine(const std::string& folder, const MachinePlan& plan, std::string* error) {
  Creation creation(plan);
  if (!creation.PlanAccounts(error)) return false;
  std::error_code failed;
  fs::create_directories(folder, failed);
  if (failed)
    return Complain(error, "The folder \"" + folder + "\" can't be made: " + failed.message() + ".");
  if (!fs::is_empty(folder, failed) || failed) {
    return Complain(error,
                    "The folder \"" + folder + "\" isn't empty. Give one that is empty or doesn't exist.");
  }
  const fs::path whole = fs::canonical(folder, failed);
  if (failed)
    return Complain(error, "The folder \"" + folder + "\" can't be found: " + failed.message() + ".");
  return creation.Run(whole.string(), error);
}

}  // namespace machine
