#include "machine/hive_store.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>

#include "machine/accounts_file.h"
#include "machine/faults.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/path_resolution.h"
#include "machine/profile_list.h"
#include "machine/settings_text.h"

namespace machine {
namespace {

struct MountedHive {
  HiveRoot root;
  std::string name;
  std::shared_ptr<Hive> hive;  // null: it couldn't be opened
  DWORD error = ERROR_SUCCESS;
  bool wasLoaded = false;  // by LoadHive
};

std::vector<MountedHive>& Mounted() {
  static auto* mounted = new std::vector<MountedHive>;
  return *mounted;
}

MountedHive* FindMounted(HiveRoot root, std::string_view name) {
  const std::string folded = FoldUtf8(name);
  for (MountedHive& mounted : Mounted()) {
    if (mounted.root == root && FoldUtf8(mounted.name) == folded) return &mounted;
  }
  return nullptr;
}

void LeaveHives() {
  const std::lock_guard hold(RegistryLock());
  for (const MountedHive& mounted : Mounted()) {
    if (!mounted.hive) continue;
    if (const DWORD error = FlushHive(*mounted.hive)) {
      fprintf(stderr,
              "norvane: the registry hive \"%s\" could not be written (error %u): its changes are lost.\n",
              mounted.hive->File().c_str(), static_cast<unsigned>(error));
    }
  }
  Mounted().clear();
}

void AskToBeToldOfLeaving() {
  static const bool asked = [] {
    OnLeaveMachine(LeaveHives);
    return true;
  }();
  static_cast<void>(asked);
}

// The accounts whose hives Windows itself has loaded, because they are logged on. To be asked under
// AccountsHold.
std::vector<const Account*> LoggedOn() {
  const Machine& here = ThisMachine();
  std::vector<const Account*> accounts;
  for (const Account* account : {here.FindAccount(here.settings.consoleAccount), here.RunningAccount()}) {
    if (account && std::find(accounts.begin(), accounts.end(), account) == accounts.end()) {
      accounts.push_back(account);
    }
  }
  return accounts;
}

const char* const kOwnHives[] = {"SAM", "SECURITY", "SOFTWARE", "SYSTEM"};
constexpr const char* kDefaultUser = ".DEFAULT";

// The file of one of the machine's own hives; empty if the name is none of them.
std::string OwnHiveFile(HiveRoot root, const std::string& folded) {
  const std::string config = WindowsFolder() + "\\System32\\config\\";
  if (root == HiveRoot::kLocalMachine) {
    for (const char* name : kOwnHives) {
      if (folded == name) return config + name;
    }
    return {};
  }
  if (folded == kDefaultUser) return config + "DEFAULT";
  const AccountsHold hold;
  for (const Account* account : LoggedOn()) {
    if (FoldUtf8(account->sid) != folded) continue;
    std::string profile = ProfileOf(account->sid);
    if (profile.empty()) profile = account->home;
    return profile.empty() ? std::string() : profile + "\\NTUSER.DAT";
  }
  return {};
}

bool IsInUse(const std::string& file) {
  struct stat status;
  return stat(file.c_str(), &status) == 0 && IsHiveInUse(status.st_dev, status.st_ino);
}

}  // namespace

std::recursive_mutex& RegistryLock() {
  static auto* lock = new std::recursive_mutex;
  return *lock;
}

DWORD FindHive(HiveRoot root, std::string_view name, std::shared_ptr<Hive>& hive) {
  if (const MountedHive* mounted = FindMounted(root, name)) {
    hive = mounted->hive;
    return mounted->error;
  }
  const std::string path = OwnHiveFile(root, FoldUtf8(name));
  if (path.empty()) return ERROR_FILE_NOT_FOUND;
  MountedHive mounted{root, std::string(name), nullptr, ERROR_SUCCESS, false};
  std::string file;
  bool isWritable = false;
  mounted.error = LocateHiveFile(AsWide(ToUtf16(path)), file, isWritable);
  if (mounted.error == ERROR_SUCCESS) mounted.error = Hive::Open(file, isWritable, mounted.hive);
  if (mounted.error == ERROR_PATH_NOT_FOUND) mounted.error = ERROR_FILE_NOT_FOUND;
  // A file that isn't there now may come; what can't be read is remembered, so that it is read once.
  if (mounted.error == ERROR_FILE_NOT_FOUND) return mounted.error;
  AskToBeToldOfLeaving();
  Mounted().push_back(mounted);
  hive = mounted.hive;
  return mounted.error;
}

std::vector<std::string> HiveNames(HiveRoot root) {
  std::vector<std::string> names;
  std::shared_ptr<Hive> hive;
  if (root == HiveRoot::kLocalMachine) {
    for (const char* name : kOwnHives) FindHive(root, name, hive);
  } else {
    FindHive(root, kDefaultUser, hive);
    const AccountsHold hold;
    for (const Account* account : LoggedOn()) FindHive(root, account->sid, hive);
  }
  for (const MountedHive& mounted : Mounted()) {
    if (mounted.root == root && mounted.hive) names.push_back(mounted.name);
  }
  std::sort(names.begin(), names.end(),
            [](const std::string& a, const std::string& b) { return FoldUtf8(a) < FoldUtf8(b); });
  return names;
}

DWORD LoadHive(HiveRoot root, const std::string& name, const wchar_t* path) {
  std::shared_ptr<Hive> hive;
  if (FindHive(root, name, hive) != ERROR_FILE_NOT_FOUND) {
    std::string file;
    bool isWritable = false;
    const bool isSame = LocateHiveFile(path, file, isWritable) == ERROR_SUCCESS && IsInUse(file);
    return isSame ? ERROR_SHARING_VIOLATION : ERROR_ALREADY_EXISTS;
  }
  if (FaultHits("RegLoadKeyW", ToUtf8(path))) return GetLastError();
  std::string file;
  bool isWritable = false;
  if (const DWORD error = LocateHiveFile(path, file, isWritable)) return error;
  if (IsInUse(file)) return ERROR_SHARING_VIOLATION;
  DWORD error = Hive::Open(file, isWritable, hive);
  if (error == ERROR_FILE_NOT_FOUND && isWritable) {
    if (FaultHitsChange("RegLoadKeyW", ToUtf8(path))) return GetLastError();
    error = Hive::Make(file, HivePlan());
    if (error == ERROR_SUCCESS) error = Hive::Open(file, isWritable, hive);
  }
  if (error != ERROR_SUCCESS) return error;
  AskToBeToldOfLeaving();
  Mounted().push_back({root, name, hive, ERROR_SUCCESS, true});
  return ERROR_SUCCESS;
}

DWORD UnloadHive(HiveRoot root, std::string_view name) {
  std::shared_ptr<Hive> hive;
  const DWORD error = FindHive(root, name, hive);
  if (error != ERROR_SUCCESS) return error;
  const MountedHive* mounted = FindMounted(root, name);
  if (!mounted->wasLoaded || hive->openKeys > 0) return ERROR_ACCESS_DENIED;
  if (const DWORD failed = FlushHive(*hive)) return failed;
  Mounted().erase(Mounted().begin() + (mounted - Mounted().data()));
  return ERROR_SUCCESS;
}

DWORD FlushHive(Hive& hive) {
  if (!hive.IsChanged()) return ERROR_SUCCESS;
  struct stat status;
  const uint64_t size = stat(hive.File().c_str(), &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
  if (FaultHitsChange("RegFlushKey", ToUtf8(PathOfDisk(hive.File())))) return GetLastError();
  if (TakeDiskSpace(size) < size) return ERROR_DISK_FULL;
  return hive.Flush();
}

bool IsHiveInUse(uint64_t device, uint64_t number) {
  const std::lock_guard hold(RegistryLock());
  for (const MountedHive& mounted : Mounted()) {
    if (mounted.hive && mounted.hive->IsFile(device, number)) return true;
  }
  return false;
}

}  // namespace machine
