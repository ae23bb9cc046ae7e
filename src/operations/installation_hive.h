// installation_hive.h
//
// The registry of another installation, read without its help.
#pragma once
#include "foundation/wstring.h"

// Windows version that the installation under `root` (without a backslash at its end) has in its own
// registry, as major + minor / 10. 0.0 if it can't be read or doesn't say; the minor part alone if the
// major one is missing, as before Windows 10. The hive is loaded for the length of the call, and only
// from its own place: none of the folders to it, nor the file, may be a link.
double ReadHiveVersion(const wchar_t* root);

// The path of that hive, if something stands there, be it a damaged file or a folder; empty otherwise.
WString InstallationHive(const wchar_t* root);
