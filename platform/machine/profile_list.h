// profile_list.h
//
// Where the profiles of the machine in use are, as its key ProfileList says.
#pragma once
#include <windows.h>

#include <string>
#include <string_view>

namespace machine {

// Windows paths without a trailing backslash, variables expanded; empty where the key has none.
std::string ProfileOf(std::string_view sid);
std::string ProfilesDirectory();
std::string DefaultProfile();  // what new profiles are made from

// Adds an account's profile and writes the hive at once. An error of Windows; ERROR_WRITE_PROTECT where
// the hive isn't ours to write.
DWORD AddToProfileList(const std::string& sid, const std::string& profile);

// A leading %SystemDrive%, %SystemRoot% or %USERPROFILE% replaced; `profile` is of the last one.
std::string ExpandFolder(std::string_view text, std::string_view profile = {});

std::string SystemDriveText();  // "C:"
std::string WindowsFolder();    // "C:\Windows"

}  // namespace machine
