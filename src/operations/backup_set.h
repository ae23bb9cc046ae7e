// backup_set.h
//
// The format of a backup set: an ordinary folder with one info file at its top and a fixed tree below.
// docs/backup-set.md describes it for someone who writes another reader.
#pragma once
#include <windows.h>

#include <cstdint>

#include "foundation/ini_document.h"
#include "foundation/wstring.h"
#include "operations/folder_rows.h"
#include "operations/info_file.h"
#include "operations/md5_name.h"

// Sections.
inline constexpr wchar_t kSettingsSection[] = L"Settings";
inline constexpr wchar_t kUsersSection[] = L"Users";                      // all accounts shown
inline constexpr wchar_t kBackupUsersSection[] = L"BackupUsers";          // those to back up
inline constexpr wchar_t kExtraFoldersSection[] = L"ExtraFolders";        // all extra folders
inline constexpr wchar_t kNewExtraFoldersSection[] = L"NewExtraFolders";  // those to back up
inline constexpr wchar_t kRestoreUsersSection[] = L"RTBackupUsers";
inline constexpr wchar_t kRestoreExtraFoldersSection[] = L"RTExtraFolders";
inline constexpr wchar_t kRestoreFromExtraFoldersSection[] = L"RTExtraFolders2";

// Keys of the section Settings.
inline constexpr wchar_t kUserFoldersKey[] = L"UserFolders";        // folder mask
inline constexpr wchar_t kBackupOptionsKey[] = L"BackupOptions";    // 1: only new and outdated files
inline constexpr wchar_t kSkipAttributesKey[] = L"SkipAttributes";  // see kSkipHiddenFiles
inline constexpr wchar_t kRestoreUserFoldersKey[] = L"RTUserFolders";
inline constexpr wchar_t kRestoreOptionsKey[] = L"RTBackupOptions";  // 2: only missing files

inline constexpr wchar_t kCreateSuffix[] = L" <create>";  // behind a target account that is to be made

enum : uint32_t {
  kSkipHiddenFiles = FILE_ATTRIBUTE_HIDDEN,
  kSkipSystemFiles = FILE_ATTRIBUTE_SYSTEM,
};

// Folders of the set.
inline constexpr wchar_t kUsersFolder[] = L"Users";
inline constexpr wchar_t kExtraFoldersFolder[] = L"ExtraFolders";
inline constexpr wchar_t kAppDataFolder[] = L"AppData";
inline constexpr wchar_t kLocalAppDataFolder[] = L"LocalAppData";

// Whether a text survives as a key of the info file: it isn't empty, doesn't begin like a comment or a
// section, and has no "=", line end or blank at its ends.
bool CanBeKey(const wchar_t* text);

WString UserFolderInSet(const wchar_t* setFolder, const wchar_t* userName);
WString ExtraFolderInSet(const wchar_t* setFolder, const wchar_t* md5Name);

// Where the extra folder `path` lies in the set: by its key in NewExtraFolders, or else by its MD5 name.
// A value that isn't a plain name, such as one that leads out of the set, doesn't count. Empty if there
// is no set folder or no digest.
WString ExtraFolderDestination(IniDocument& document, const wchar_t* setFolder, const wchar_t* path);

// Take an account or an extra folder out of the document. Its tree in the set is the caller's to delete,
// beforehand.
void RemoveUserFromSet(IniDocument& document, const wchar_t* userName);
void RemoveExtraFolderFromSet(IniDocument& document, const wchar_t* path);
