// profile_making.h
//
// New profiles, made from the default one.
#pragma once
#include <windows.h>

#include <string>

namespace machine {

// Makes the folder with its access list, its hive, and the entry in ProfileList, as the system does
// whoever calls. The folder is named as the account, with the computer's name and a number behind it
// where that is taken. `profile` gets its path. What was begun is taken back where something fails.
DWORD MakeProfile(const std::string& sid, const std::string& name, std::string& profile);

}  // namespace machine

// Of Userenv.dll, and declared in no SDK here.
HRESULT WINAPI CreateProfile(const wchar_t* sid, const wchar_t* name, wchar_t* path, DWORD size);
