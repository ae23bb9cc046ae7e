#include "machine/registry_key.h"

#include <algorithm>

#include "machine/accounts_file.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/token.h"

namespace machine {
namespace {

constexpr size_t kDeepestPath = 512;  // levels of keys, as Windows has it
constexpr const char* kOther32BitView = "Wow6432Node";
constexpr REGSAM kWriteAccess =
    KEY_SET_VALUE | KEY_CREATE_SUB_KEY | KEY_CREATE_LINK | DELETE | WRITE_DAC | WRITE_OWNER;

DWORD SplitPath(const wchar_t* path, std::vector<std::string>& components) {
  const std::string text = ToUtf8(path);
  if (text.starts_with("\\")) return ERROR_BAD_PATHNAME;
  for (size_t start = 0; start < text.size();) {
    const size_t end = std::min(text.find('\\', start), text.size());
    if (end > start) components.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return components.size() > kDeepestPath ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
}

// The predefined keys as components behind their root.
bool TakePredefined(HKEY handle, RegistryKey& start, std::vector<std::string>& components) {
  std::vector<std::string> head;
  switch (static_cast<uint32_t>(reinterpret_cast<uintptr_t>(handle))) {
    case 0x80000002:
      start.root = HiveRoot::kLocalMachine;
      break;
    case 0x80000003:
      start.root = HiveRoot::kUsers;
      break;
    case 0x80000001: {
      start.root = HiveRoot::kUsers;
      const AccountsHold hold;
      const Account* account = ThisMachine().RunningAccount();
      head = {account ? account->sid : ".DEFAULT"};
      break;
    }
    case 0x80000000:
      head = {"SOFTWARE", "Classes"};
      break;
    case 0x80000005:
      head = {"SYSTEM", "CurrentControlSet", "Hardware Profiles", "Current"};
      break;
    default:
      return false;
  }
  components.insert(components.begin(), head.begin(), head.end());
  return true;
}

// How many components of a path below SOFTWARE lie above the place where the views part: 0 for most,
// and -1 for what both views share.
int ViewsPartAt(const std::vector<std::string>& below) {
  if (below.empty()) return 0;
  for (const char* shared : {"Clients", "Policies", "RegisteredApplications"}) {
    if (SameText(below[0], shared)) return -1;
  }
  if (!SameText(below[0], "Classes")) return 0;
  if (below.size() < 2) return -1;
  for (const char* apart : {"CLSID", "DirectShow", "Interface", "Media Type", "MediaFoundation"}) {
    if (SameText(below[1], apart)) return 1;
  }
  return -1;
}

void TurnView(const std::shared_ptr<Hive>& software, REGSAM view, std::vector<std::string>& below) {
  if (view & KEY_WOW64_64KEY) return;
  const int place = ViewsPartAt(below);
  if (place < 0) return;
  const size_t at = static_cast<size_t>(place);
  if (below.size() > at && SameText(below[at], kOther32BitView)) return;
  // A Windows of 32 bits has one view only.
  if (software->FindChild(software->Root(), kOther32BitView) == 0) return;
  below.insert(below.begin() + place, kOther32BitView);
}

// CurrentControlSet is a link that the system makes at its start.
void TurnControlSet(const std::shared_ptr<Hive>& system, std::vector<std::string>& below) {
  if (below.empty() || !SameText(below[0], "CurrentControlSet")) return;
  HiveValue value;
  const Hive::Key select = system->FindChild(system->Root(), "Select");
  unsigned number = 1;
  if (select != 0 && system->ReadValue(select, "Current", value) == ERROR_SUCCESS && value.data.size() == 4) {
    number = static_cast<unsigned char>(value.data[0]);
  }
  char name[32];
  snprintf(name, sizeof name, "ControlSet%03u", number);
  below[0] = name;
}

void WalkHive(RegistryKey& found, std::vector<std::string>& rest) {
  size_t used = 0;
  while (used < rest.size()) {
    const Hive::Key child = found.hive->FindChild(found.key, rest[used]);
    if (child == 0) break;
    found.key = child;
    ++used;
  }
  rest.erase(rest.begin(), rest.begin() + static_cast<ptrdiff_t>(used));
}

}  // namespace

RegistryKey::~RegistryKey() {
  if (hive && access != 0) --hive->openKeys;
}

DWORD WalkRegistry(HKEY handle, const wchar_t* path, REGSAM view, RegistryKey& found,
                   std::vector<std::string>& rest) {
  rest.clear();
  if (const DWORD error = SplitPath(path, rest)) return error;
  if (!TakePredefined(handle, found, rest)) {
    const auto open = std::dynamic_pointer_cast<RegistryKey>(FindHandle(handle));
    if (!open) return ERROR_INVALID_HANDLE;
    if (open->hive && open->hive->IsDeleted(open->key)) return ERROR_KEY_DELETED;
    found.root = open->root;
    found.hiveName = open->hiveName;
    found.hive = open->hive;
    found.key = open->key;
  }
  if (found.hive) {
    WalkHive(found, rest);
    return ERROR_SUCCESS;
  }
  if (rest.empty()) return ERROR_SUCCESS;
  if (const DWORD error = FindHive(found.root, rest[0], found.hive)) return error;
  found.hiveName = rest[0];
  found.key = found.hive->Root();
  rest.erase(rest.begin());
  if (found.root == HiveRoot::kLocalMachine && SameText(found.hiveName, "SOFTWARE"))
    TurnView(found.hive, view, rest);
  if (found.root == HiveRoot::kLocalMachine && SameText(found.hiveName, "SYSTEM"))
    TurnControlSet(found.hive, rest);
  WalkHive(found, rest);
  return ERROR_SUCCESS;
}

DWORD GrantAccess(const RegistryKey& key, REGSAM& access) {
  const auto token = ThreadToken();
  bool mayRead = true, mayWrite = token->IsAdministrator();
  if (key.root == HiveRoot::kUsers && !key.hiveName.empty()) {
    const bool isOwn = SameText(key.hiveName, TokenUserText(*token));
    mayRead = mayWrite || isOwn || SameText(key.hiveName, ".DEFAULT");
    mayWrite = mayWrite || isOwn;
  } else if (SameText(key.hiveName, "SAM") || SameText(key.hiveName, "SECURITY")) {
    mayRead = mayWrite = TokenUserText(*token) == "S-1-5-18";  // not even administrators
  }
  access &= ~static_cast<REGSAM>(kViewFlags);
  if (access & MAXIMUM_ALLOWED) access = mayWrite ? KEY_ALL_ACCESS : KEY_READ;
  if (access & GENERIC_ALL) access |= KEY_ALL_ACCESS;
  if (access & GENERIC_WRITE) access |= KEY_WRITE;
  if (access & (GENERIC_READ | GENERIC_EXECUTE)) access |= KEY_READ;
  access &= ~static_cast<REGSAM>(GENERIC_ALL | GENERIC_WRITE | GENERIC_READ | GENERIC_EXECUTE);
  if (!mayRead || (!mayWrite && (access & kWriteAccess))) return ERROR_ACCESS_DENIED;
  return access != 0 ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

DWORD UseKey(HKEY handle, REGSAM access, std::shared_ptr<RegistryKey>& key) {
  if (auto open = std::dynamic_pointer_cast<RegistryKey>(FindHandle(handle))) {
    if (open->hive && open->hive->IsDeleted(open->key)) return ERROR_KEY_DELETED;
    if ((open->access & access) != access) return ERROR_ACCESS_DENIED;
    key = std::move(open);
    return ERROR_SUCCESS;
  }
  // A predefined key is used as it stands, with what the caller may do there.
  auto predefined = std::make_shared<RegistryKey>();
  std::vector<std::string> rest;
  if (const DWORD error = WalkRegistry(handle, nullptr, 0, *predefined, rest)) return error;
  if (!rest.empty()) return ERROR_FILE_NOT_FOUND;
  REGSAM wanted = access;
  if (const DWORD error = GrantAccess(*predefined, wanted)) return error;
  key = std::move(predefined);
  return ERROR_SUCCESS;
}

HKEY AddKeyHandle(const RegistryKey& key, REGSAM access) {
  auto open = std::make_shared<RegistryKey>();
  open->root = key.root;
  open->hiveName = key.hiveName;
  open->hive = key.hive;
  open->key = key.key;
  open->access = access;
  if (open->hive) ++open->hive->openKeys;
  return static_cast<HKEY>(AddHandle(open));
}

}  // namespace machine
