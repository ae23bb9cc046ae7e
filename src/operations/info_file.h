// info_file.h
//
// Which file of a folder is the info file of a set, and whether a file can be one.
#pragma once
#include "foundation/wstring.h"

// Names of the info file. Both mean the same; which one is looked for first depends on who looks.
inline constexpr wchar_t kInfoFileNvsav[] = L"BackupInfo.nvsav";
inline constexpr wchar_t kInfoFileGrxsv[] = L"BackupInfo.grxsv";

// The info file that the Backup screen writes: BackupInfo.nvsav if the folder has it, otherwise
// BackupInfo.grxsv, which then may not exist.
WString ChooseInfoFile(const wchar_t* setFolder);

// The info file of a custom root: the other order, BackupInfo.grxsv first, otherwise BackupInfo.nvsav.
WString ChooseCustomRootInfoFile(const wchar_t* root);

// The info file that an earlier run left in a custom root: the first file of the folder that ends in
// ".grxsv", otherwise the first that ends in ".nvsav", whatever its name. Empty if there is none. Links
// don't count.
WString FindScannedInfoFile(const wchar_t* root);

// The info file of the set that a person names by its folder or by the file itself. Empty if there is
// none.
WString FindInfoFile(const wchar_t* set);

// The folder that a file lies in, without a trailing backslash.
WString SetFolderOf(const wchar_t* infoFile);

enum class InfoFileState { kReadable, kMissing, kFolder, kUnreadable, kTooLarge, kBinary };

// Whether a file can be an info file. An empty file, any encoding and any content of lines will do; more
// than 16 MiB or bytes that are no text won't, because nothing of such a file should be rewritten. For
// kUnreadable the reason is in GetLastError().
InfoFileState CheckInfoFile(const wchar_t* path);

// What CheckInfoFile has just found, for a person; empty for kReadable.
WString InfoFileSentence(InfoFileState state, const wchar_t* path);
