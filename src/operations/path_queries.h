// path_queries.h
//
// Questions about paths. Where the disk is asked, the path goes through the long path prefix.
#pragma once
#include <windows.h>

#include <cstdint>

#include "foundation/wstring.h"
#include "foundation/wstring_array.h"

// Of "C:\", in units. What is longer names a folder on a drive or on a share.
constexpr int32_t kDriveRootLength = 3;

// INVALID_FILE_ATTRIBUTES with the reason as the last error. "D:" is the root of the drive.
DWORD PathAttributes(const wchar_t* path);
bool IsFilePath(const wchar_t* path);
bool IsFolderPath(const wchar_t* path);      // also through a junction or a link
bool IsRealFolderPath(const wchar_t* path);  // and no reparse point
bool IsMissingPath(const wchar_t* path);     // surely not there; false if that can't be found out

// A path that somebody gave: absolute, with backslashes, without the long path prefix of a drive and
// without backslashes at its end.
WString CleanPath(const wchar_t* text);

// Whether the text begins with a drive and a backslash, or with two backslashes.
bool IsAbsolutePath(const WString& path);

// Whether a text is the name of one component that stays where it is put: no path, no drive, and not
// only dots and blanks, which lead to the folder itself or to the one above. Names from an info file are
// asked, since the file may be a stranger's.
bool IsPlainName(const WString& name);

// <folder>\<relative>, also for a folder with a backslash at its end, such as the root of a drive.
WString PathBelow(const WString& folder, const wchar_t* relative);

// Whether `name` is one of those that stand in `list`, each between bars, without regard to case.
bool IsNameInBars(const WString& list, const wchar_t* name);

// Whether `inner` is `outer` or lies in it, by whole components, without regard to case and to
// backslashes at the end. Only the texts are compared. An empty text lies nowhere and holds nothing.
bool IsSameOrInside(const WString& inner, const WString& outer);

// Whether `path` is one of the folders or lies in one.
bool IsInOneOf(const WString& path, const WStringArray& folders);

// The order of paths in which a folder is followed at once by all that lies in it; names count as they do
// for IsSameOrInside. Both paths are without backslashes at the end.
bool IsPathBefore(const WString& a, const WString& b);
