// A key of the registry on the terminal.
#include <windows.h>

#include <algorithm>
#include <cstring>

#include "machine/account_names.h"
#include "machine/complaint.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/profile_list.h"
#include "machine/registry_key.h"
#include "machine/show_machine.h"
#include "machine/text_output.h"

namespace machine {
namespace {

struct Root {
  const char* shortName;
  const char* longName;
  HKEY key;
};
const Root kRoots[] = {
    {"HKLM", "HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},   {"HKCU", "HKEY_CURRENT_USER", HKEY_CURRENT_USER},
    {"HKCR", "HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},     {"HKU", "HKEY_USERS", HKEY_USERS},
    {"HKCC", "HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG},
};

// Takes root and view from the front of the path.
bool TakeRoot(std::string& path, HKEY& root, REGSAM& view) {
  const size_t end = std::min(path.find('\\'), path.size());
  std::string token = FoldUtf8(path.substr(0, end));
  view = 0;
  if (token.ends_with("64")) view = KEY_WOW64_64KEY;
  if (token.ends_with("32")) view = KEY_WOW64_32KEY;
  if (view != 0) token.resize(token.size() - 2);
  for (const Root& known : kRoots) {
    if (token != known.shortName && token != known.longName) continue;
    root = known.key;
    path.erase(0, std::min(end + 1, path.size()));
    return true;
  }
  return false;
}

// HKU\<name or SID> of an account whose hive isn't in the registry yet.
void LoadHiveFor(std::string& path) {
  const size_t end = std::min(path.find('\\'), path.size());
  const std::string name = path.substr(0, end);
  NamedSid found;
  if (!FindAccountName(name, found) && !FindAccountSid(name, found)) return;
  path.replace(0, end, found.sid);
  std::shared_ptr<Hive> hive;
  if (FindHive(HiveRoot::kUsers, found.sid, hive) != ERROR_FILE_NOT_FOUND) return;
  const Account* account = ThisMachine().FindSid(found.sid);
  std::string profile = ProfileOf(found.sid);
  if (profile.empty() && account) profile = account->home;
  const std::u16string file = ToUtf16(profile + "\\NTUSER.DAT");
  // Loading a file that isn't there would make it.
  if (GetFileAttributesW(AsWide(file)) == INVALID_FILE_ATTRIBUTES) return;
  LoadHive(HiveRoot::kUsers, found.sid, AsWide(file));
}

const char* TypeName(uint32_t type) {
  const char* const names[] = {"REG_NONE",
                               "REG_SZ",
                               "REG_EXPAND_SZ",
                               "REG_BINARY",
                               "REG_DWORD",
                               "REG_DWORD_BIG_ENDIAN",
                               "REG_LINK",
                               "REG_MULTI_SZ",
                               "REG_RESOURCE_LIST",
                               "REG_FULL_RESOURCE_DESCRIPTOR",
                               "REG_RESOURCE_REQUIREMENTS_LIST",
                               "REG_QWORD"};
  return type < sizeof names / sizeof *names ? names[type] : "unknown type";
}

std::string ValueText(const HiveValue& value) {
  const std::string& data = value.data;
  if (value.type == REG_SZ || value.type == REG_EXPAND_SZ || value.type == REG_MULTI_SZ) {
    std::u16string units(data.size() / 2, 0);
    memcpy(units.data(), data.data(), units.size() * 2);
    while (!units.empty() && units.back() == 0) units.pop_back();
    return Escaped(ToUtf8(units));
  }
  if ((value.type == REG_DWORD && data.size() == 4) || (value.type == REG_QWORD && data.size() == 8)) {
    uint64_t number = 0;
    memcpy(&number, data.data(), data.size());
    char text[48];
    snprintf(text, sizeof text, "0x%llx (%llu)", static_cast<unsigned long long>(number),
             static_cast<unsigned long long>(number));
    return text;
  }
  std::string text;
  constexpr size_t kShown = 64;
  for (size_t i = 0; i < data.size() && i < kShown; ++i) {
    char byte[4];
    snprintf(byte, sizeof byte, "%02x", static_cast<unsigned char>(data[i]));
    text += (i > 0 ? " " : "") + std::string(byte);
  }
  if (data.size() > kShown) text += " ... (" + Grouped(data.size()) + " bytes)";
  return text;
}

}  // namespace

bool ShowKey(const std::string& given, FILE* output, std::string* error) {
  std::string path = given;
  HKEY root;
  REGSAM view;
  if (!TakeRoot(path, root, view)) {
    return Complain(error, "\"" + given +
                               "\" begins with no root key. Roots are HKLM, HKCU, HKCR, HKU and HKCC, "
                               "with 64 or 32 behind them for a view, such as HKLM64\\SOFTWARE.");
  }
  const std::lock_guard hold(RegistryLock());
  if (root == HKEY_USERS) LoadHiveFor(path);
  RegistryKey key;
  std::vector<std::string> rest;
  DWORD failed = WalkRegistry(root, AsWide(ToUtf16(path)), view, key, rest);
  if (failed == ERROR_SUCCESS && !rest.empty()) failed = ERROR_FILE_NOT_FOUND;
  std::vector<std::string> names;
  std::vector<HiveValue> values;
  if (failed == ERROR_SUCCESS && !key.hive) {
    names = HiveNames(key.root);
  } else if (failed == ERROR_SUCCESS) {
    std::vector<Hive::Key> children;
    failed = key.hive->Children(key.key, children);
    if (failed == ERROR_SUCCESS) failed = key.hive->Values(key.key, values);
    for (const Hive::Key child : children) {
      std::string name;
      if (key.hive->Name(child, name) == ERROR_SUCCESS) names.push_back(name);
    }
  }
  if (failed != ERROR_SUCCESS) {
    return Complain(error, "The key \"" + given + "\" can't be read: " + ErrorReason(failed) + ".");
  }
  fprintf(output, "%s\n", Escaped(given).c_str());
  for (const HiveValue& value : values) {
    fprintf(output, "  %s  %s  %s\n", value.name.empty() ? "(default)" : Escaped(value.name).c_str(),
            TypeName(value.type), ValueText(value).c_str());
  }
  for (const std::string& name : names) fprintf(output, "  [%s]\n", Escaped(name).c_str());
  return true;
}

}  // namespace machine
