#include "machine/profile_list.h"

#include "machine/hive_store.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/system_hives.h"

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

std::string DefaultProfile() {
  if (!ThisMachine().settings.HasOldLayout()) return ReadProfileList({}, "Default");
  return ProfilesDirectory() + "\\" + ReadProfileList({}, "DefaultUserProfile");
}

DWORD AddToProfileList(const std::string& sid, const std::string& profile) {
  const std::lock_guard hold(RegistryLock());
  std::shared_ptr<Hive> software;
  if (const DWORD error = FindHive(HiveRoot::kLocalMachine, "SOFTWARE", software)) return error;
  const Hive::Key list = software->Find(software->Root(), kProfileList);
  if (list == 0) return ERROR_FILE_NOT_FOUND;
  HivePlan plan;
  plan.keys.push_back(ProfileListEntry(sid, profile));
  if (const DWORD error = software->Add(list, plan)) return error;
  const DWORD error = FlushHive(*software);
  // What couldn't be written now isn't to be written later either: the caller takes the profile back.
  if (error != ERROR_SUCCESS) software->DeleteChild(software->FindChild(list, sid));
  return error;
}

}  // namespace machine
