// profile_layout.h
//
// What a profile of Windows looks like: its folders, and the hive that names them.
#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "machine/hive.h"

namespace machine {

// A folder of a profile.
struct ProfileFolder {
  std::string name;   // in the shell folders' keys; empty: it isn't in them
  std::string place;  // below the profile, components apart by backslashes
  bool isHidden = false;
};

// The folders of the layout that a version of Windows has: below 6 the old one.
const std::vector<ProfileFolder>& ProfileFolders(uint32_t major);

// The hive of the account whose profile is at `profile`. `elsewhere` are its shell folders outside of the
// profile, by name.
HivePlan UserHive(uint32_t major, std::string_view profile,
                  const std::map<std::string, std::string>& elsewhere);

// "C:\Users", or as the version has it; the folders of the default profile and the common one below it.
std::string ProfilesFolder(uint32_t major);
std::string DefaultProfileName(uint32_t major);
std::string PublicProfileName(uint32_t major);

}  // namespace machine
