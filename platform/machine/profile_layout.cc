#include "machine/profile_layout.h"

#include "machine/create_machine.h"

namespace machine {
namespace {

constexpr const char* kExplorer = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\";

const std::vector<ProfileFolder> kNewFolders = {
    {"", "AppData", true},
    {"AppData", "AppData\\Roaming"},
    {"Local AppData", "AppData\\Local"},
    {"", "AppData\\Local\\Temp"},
    {"{A520A1A4-1780-4FF6-BD18-167343C5AF16}", "AppData\\LocalLow"},
    {"Start Menu", "AppData\\Roaming\\Microsoft\\Windows\\Start Menu"},
    {"{56784854-C6CB-462B-8169-88E350ACB882}", "Contacts"},
    {"Desktop", "Desktop"},
    {"Personal", "Documents"},
    {"{374DE290-123F-4565-9164-39C4925E467B}", "Downloads"},
    {"Favorites", "Favorites"},
    {"{BFB9D5E0-C6A9-404C-B2B2-AE6DB6AF4968}", "Links"},
    {"My Music", "Music"},
    {"My Pictures", "Pictures"},
    {"{4C5C32FF-BB9D-43B0-B5B4-2D72E54EAAA4}", "Saved Games"},
    {"{7D1D3A04-DEBB-4115-95CF-2F29DA2920DA}", "Searches"},
    {"My Video", "Videos"},
};

const std::vector<ProfileFolder> kOldFolders = {
    {"AppData", "Application Data", true},
    {"Desktop", "Desktop"},
    {"Favorites", "Favorites"},
    {"", "Local Settings", true},
    {"Local AppData", "Local Settings\\Application Data"},
    {"", "Local Settings\\Temp"},
    {"Personal", "My Documents"},
    {"My Music", "My Documents\\My Music"},
    {"My Pictures", "My Documents\\My Pictures"},
    {"My Video", "My Documents\\My Videos"},
    {"Start Menu", "Start Menu"},
};

}  // namespace

const std::vector<ProfileFolder>& ProfileFolders(uint32_t major) {
  return major < 6 ? kOldFolders : kNewFolders;
}

HivePlan UserHive(uint32_t major, std::string_view profile,
                  const std::map<std::string, std::string>& elsewhere) {
  HivePlan hive;
  HivePlan& expanded = hive.Key(std::string(kExplorer) + "Shell Folders");
  for (const ProfileFolder& folder : ProfileFolders(major)) {
    if (folder.name.empty()) continue;
    const auto place = elsewhere.find(folder.name);
    expanded.Text(folder.name,
                  place != elsewhere.end() ? place->second : std::string(profile) + "\\" + folder.place);
  }
  HivePlan& withVariables = hive.Key(std::string(kExplorer) + "User Shell Folders");
  for (const ProfileFolder& folder : ProfileFolders(major)) {
    if (folder.name.empty()) continue;
    const auto place = elsewhere.find(folder.name);
    withVariables.Text(folder.name,
                       place != elsewhere.end() ? place->second : "%USERPROFILE%\\" + folder.place,
                       REG_EXPAND_SZ);
  }
  const std::string temporary =
      major < 6 ? "%USERPROFILE%\\Local Settings\\Temp" : "%USERPROFILE%\\AppData\\Local\\Temp";
  HivePlan& environment = hive.Key("Environment");
  environment.Text("TEMP", temporary, REG_EXPAND_SZ);
  environment.Text("TMP", temporary, REG_EXPAND_SZ);
  hive.Key("Control Panel\\Desktop").Text("Wallpaper", "");
  return hive;
}

std::string ProfilesFolder(uint32_t major) { return major < 6 ? "C:\\Documents and Settings" : "C:\\Users"; }
std::string DefaultProfileName(uint32_t major) { return major < 6 ? "Default User" : "Default"; }
std::string PublicProfileName(uint32_t major) { return major < 6 ? "All Users" : "Public"; }

std::string ProfilePath(uint32_t major, std::string_view name) {
  return ProfilesFolder(major).append("\\").append(name);
}

}  // namespace machine
