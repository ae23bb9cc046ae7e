#include "machine/profile_list.h"

#include "machine/create_machine.h"
#include "machine/hive_store.h"
#include "machine/machine.h"
#include "machine/names.h"

namespace machine {
namespace {

constexpr const char* kProfileList = "Microsoft\\Windows NT\\CurrentVersion\\ProfileList";

std::string ReadProfileList(std::string_view below, const char* name) {
  const std::lock_guard hold(RegistryLock());
  std::shared_ptr<Hive> software;
  if (FindHive(HiveRoot::kLocalMachine, "SOFTWARE", software) != ERROR_SUCCESS) return {};
  std::string path = kProfileList, text;
  if (!below.empty()) path.append("\\").append(below);
  if (!software->ReadText(path, name, text)) return {};
  text = ExpandFolder(text);
  while (!text.empty() && text.back() == '\\') text.pop_back();
  return text;
}

}  // namespace

std::string SystemDriveText() { return std::string(1, ThisMachine().settings.systemDrive) + ":"; }

std::string WindowsFolder() { return SystemDriveText() + "\\Windows"; }

std::string ExpandFolder(std::string_view text, std::string_view profile) {
  const std::string drive = SystemDriveText(), windows = WindowsFolder();
  const std::pair<std::string_view, std::string_view> variables[] = {
      {"%SystemDrive%", drive}, {"%SystemRoot%", windows}, {"%USERPROFILE%", profile}};
  for (const auto& [variable, value] : variables) {
    if (value.empty() || FoldUtf8(text.substr(0, variable.size())) != FoldUtf8(variable)) continue;
    return std::string(value).append(text.substr(variable.size()));
  }
  return std::string(text);
}

std::string ProfileOf(std::string_view sid) { return ReadProfileList(sid, "ProfileImagePath"); }

std::string ProfilesDirectory() { return ReadProfileList({}, "ProfilesDirectory"); }

}  // namespace machine
