#include <set>
#include <sstream>

#include "foundation/unique_handle.h"
#include "stand_in/account_stand_in.h"
#include "support/test_place.h"

namespace stand_in {
namespace {

using Names = std::set<std::pair<HKEY, std::string>>;
struct LoadedHives {
  Names byProgram;
  Names bySystem;
};

LoadedHives& Loaded() {
  static LoadedHives hives;
  return hives;
}

std::vector<HiveText> ParseHive(const std::string& bytes) {
  std::vector<HiveText> values;
  std::istringstream lines(bytes);
  HiveText value;
  std::string type;
  while (std::getline(lines, value.key, '\t') && std::getline(lines, value.name, '\t') &&
         std::getline(lines, type, '\t') && std::getline(lines, value.text)) {
    value.type = static_cast<uint32_t>(std::stoul(type));
    values.push_back(value);
  }
  return values;
}

LSTATUS AddValue(HKEY hive, const HiveText& value) {
  UniqueKey key;
  LSTATUS status = RegCreateKeyExW(hive, Wide(value.key).CStr(), 0, nullptr, REG_OPTION_VOLATILE,
                                   KEY_ALL_ACCESS, nullptr, key.Receive(), nullptr);
  if (status != ERROR_SUCCESS) return status;
  if (value.type == REG_DWORD) {
    const DWORD number = static_cast<DWORD>(std::stoul(value.text));
    return RegSetValueExW(key.Get(), Wide(value.name).CStr(), 0, REG_DWORD,
                          reinterpret_cast<const BYTE*>(&number), sizeof number);
  }
  const WString text = Wide(value.text);
  return RegSetValueExW(key.Get(), Wide(value.name).CStr(), 0, value.type,
                        reinterpret_cast<const BYTE*>(text.CStr()),
                        static_cast<DWORD>(2 * (text.Length() + 1)));
}

LSTATUS PutHive(HKEY root, const wchar_t* name, const wchar_t* file) {
  // As Windows does.
  if (Attributes(file) == INVALID_FILE_ATTRIBUTES) WriteBytes(file, "");
  UniqueKey hive;
  DWORD disposition = 0;
  LSTATUS status = RegCreateKeyExW(root, name, 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr,
                                   hive.Receive(), &disposition);
  if (status != ERROR_SUCCESS) return status;
  // The file is in use then.
  if (disposition == REG_OPENED_EXISTING_KEY) return ERROR_SHARING_VIOLATION;
  for (const HiveText& value : ParseHive(ReadBytes(file))) {
    status = AddValue(hive.Get(), value);
    if (status != ERROR_SUCCESS) return status;
  }
  return ERROR_SUCCESS;
}

LSTATUS WINAPI LoadKey(HKEY root, LPCWSTR name, LPCWSTR file) {
  if (!TheAccounts().isActive) {
    return System<decltype(&RegLoadKeyW)>(L"advapi32", "RegLoadKeyW")(root, name, file);
  }
  LSTATUS status = PutHive(root, name, file);
  if (status == ERROR_SUCCESS) Loaded().byProgram.emplace(root, Utf8(name));
  return status;
}

LSTATUS WINAPI UnloadKey(HKEY root, LPCWSTR name) {
  if (!TheAccounts().isActive) {
    return System<decltype(&RegUnLoadKeyW)>(L"advapi32", "RegUnLoadKeyW")(root, name);
  }
  // Also where the key is there: it is then the system's.
  if (Loaded().byProgram.erase({root, Utf8(name)}) == 0) return ERROR_ACCESS_DENIED;
  return RegDeleteTreeW(root, name);
}

}  // namespace

std::string HiveFileText(const std::vector<HiveText>& values) {
  std::string text;
  for (const HiveText& value : values) {
    text += value.key + '\t' + value.name + '\t' + std::to_string(value.type) + '\t' + value.text + '\n';
  }
  return text;
}

LSTATUS LoadAsSystem(const wchar_t* name, const wchar_t* file) {
  LSTATUS status = PutHive(HKEY_USERS, name, file);
  if (status == ERROR_SUCCESS) Loaded().bySystem.emplace(HKEY_USERS, Utf8(name));
  return status;
}

void UnloadAllHives() {
  for (Names* names : {&Loaded().byProgram, &Loaded().bySystem}) {
    for (const auto& [root, name] : *names) RegDeleteTreeW(root, Wide(name).CStr());
    names->clear();
  }
}

STAND_IN_FOR("RegLoadKeyW@12", LoadKey)
STAND_IN_FOR("RegUnLoadKeyW@8", UnloadKey)

}  // namespace stand_in
