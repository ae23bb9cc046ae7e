// user_folders.h
//
// Where the folders of an account really are, as the account's own registry settings say.
#pragma once
#include "foundation/wstring.h"

// Logical names of folders: the value names of the system's Shell Folders key.
inline constexpr wchar_t kFolderAppData[] = L"AppData";
inline constexpr wchar_t kFolderLocalAppData[] = L"Local AppData";
inline constexpr wchar_t kFolderDesktop[] = L"Desktop";
inline constexpr wchar_t kFolderDocuments[] = L"Personal";
inline constexpr wchar_t kFolderDownloads[] = L"{374DE290-123F-4565-9164-39C4925E467B}";
inline constexpr wchar_t kFolderMusic[] = L"My Music";
inline constexpr wchar_t kFolderPictures[] = L"My Pictures";
inline constexpr wchar_t kFolderVideos[] = L"My Video";
inline constexpr wchar_t kFolderTemp[] = L"Temp";  // from the account's environment

// The place of a folder; whether it exists isn't tested. Loads the account's hive if it has to. `profile`
// is the account's profile folder; where it is null, ProfileList is asked when it is needed. False if
// the place isn't known: nothing is guessed from the profile. `output` is emptied first in every case.
bool GetUserFolder(const wchar_t* sid, const wchar_t* logicalName, WString& output,
                   const wchar_t* profile = nullptr);

// The registry value that GetUserFolder reads the place of a shell folder from, for messages: key and name,
// such as "Shell Folders\Personal".
WString ShellFolderValue(const wchar_t* sid, const wchar_t* logicalName);
