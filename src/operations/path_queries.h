// path_queries.h
//
// Questions about paths. Where the disk is asked, the path goes through the long path prefix.
#pragma once
#include <windows.h>

#include "foundation/wstring.h"

// INVALID_FILE_ATTRIBUTES with the reason as the last error. "D:" is the root of the drive.
DWORD PathAttributes(const wchar_t* path);
bool IsFilePath(const wchar_t* path);
bool IsFolderPath(const wchar_t* path);      // also through a junction or a link
bool IsRealFolderPath(const wchar_t* path);  // and no reparse point
bool IsMissingPath(const wchar_t* path);     // surely not there; false if that can't be found out

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
