// real_path.h
//
// Where a path really leads, by whatever way it is spelled.
#pragma once
#include "foundation/wstring.h"

// The path with every link, junction, short name and substituted drive of its existing part resolved,
// without the long path prefix and without a trailing backslash. What doesn't exist yet is appended as
// it stands.
WString ResolveRealPath(const wchar_t* path);

// Whose administrative shares ("\\server\C$", "\\server\ADMIN$") count as the folders behind them.
enum class ShareServer {
  kThisMachine,  // by one of its names, or because its drive and the share are one and the same folder
  kAnyMachine,   // for a decision to the safe side: the server's name may be one that isn't known here
};

// The same, and with the folder in place of such a share. For comparing only: a path of another machine
// must not be opened by it.
WString ResolveForComparison(const wchar_t* path, ShareServer server = ShareServer::kThisMachine);
