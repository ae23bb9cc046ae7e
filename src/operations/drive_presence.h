// drive_presence.h
//
// A folder that isn't there is something else than a disk that isn't there, although the system's errors
// are the same: with the disk its letter goes.
#pragma once
#include <windows.h>

// Whether a call on `path` that failed with `error` says that there is no such thing on a drive that is
// there.
bool IsMissingOnItsDrive(const wchar_t* path, DWORD error);
