// compact_path.cc
#include <shlwapi.h>
#include <windows.h>

#include "machine/call.h"

// Measures on a device context, and there is none.
BOOL WINAPI PathCompactPathW(HDC, wchar_t*, UINT) {
  machine::Unsupported("PathCompactPathW", "device contexts");
}
