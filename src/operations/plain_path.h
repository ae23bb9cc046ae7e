// plain_path.h
//
// Paths that come out of a file which a stranger may have written: whether they stay below the folder
// that they are put behind, and whether they can name a folder at all.
#pragma once
#include "foundation/wstring.h"

// Whether the text is a relative path of plain components, such as "Data\Work": none of them empty, "."
// or "..", a device's name, or with a colon, a slash, a wildcard, a control character or a dot or blank
// at its end. At most 32,000 units.
bool IsPlainRelativePath(const wchar_t* path);

// Whether the text is a full path of a drive or a share whose components are plain; the root of a drive
// counts. Device paths ("\\?\", "\\.\") don't.
bool IsPlainFullPath(const wchar_t* path);
