// backup_target.h
//
// Which folder a backup goes to: from the parent folder and the name that a person gave.
#pragma once
#include "foundation/wstring.h"

// "COMPUTER (user)", or "COMPUTER" where nobody sits at the console, as in a rescue.
WString DefaultBackupName(const wchar_t* computerName, const wchar_t* consoleUserName);

// The name without \ / : * ? " < > | and without what Windows drops from the end of a name (dots and
// blanks). Empty if nothing is left, or if the rest is the name of a device.
WString CleanBackupName(const wchar_t* text);

// The parent folder without trailing backslashes, variables expanded. Empty if nothing is left.
WString ExpandParentFolder(const wchar_t* text);

// <parent>\<name>, or the parent itself if its last component is the name without regard to case, so
// that pointing at an existing backup updates it. `parent` as ExpandParentFolder gives it.
WString BackupTargetFolder(const wchar_t* parent, const wchar_t* name);

// The way back: name and parent of the folder of a set.
void SplitSetFolder(const wchar_t* setFolder, WString& name, WString& parent);

// Makes the target with its parents. `firstMade` is the topmost folder that wasn't there before, empty
// if the target existed. False if the target isn't a folder afterwards; nothing that was made stays then.
bool MakeBackupTarget(const wchar_t* target, WString& firstMade);

// Takes back what MakeBackupTarget made, from the target up to `firstMade`, as far as it is empty.
void UnmakeBackupTarget(const wchar_t* target, const WString& firstMade);

// What is said to a person, as it stands.
inline constexpr wchar_t kInvalidParentText[] =
    L"The backup's parent folder path is invalid.\r\n\r\nPlease specify a valid path.";
inline constexpr wchar_t kInvalidNameText[] =
    L"The backup folder name is invalid.\r\n\r\nPlease specify a valid name for your backup folder.";
inline constexpr wchar_t kFolderNotMadeText[] =
    L"The backup folder could not be created.\r\n\r\n"
    L"Please specify a directory the application can write to.";
