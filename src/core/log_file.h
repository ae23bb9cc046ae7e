// log_file.h
//
// The log as a file: who may write to it, and how it is exchanged as a whole. All waiting is bounded by
// `deadline`, a time of GetTickCount64; a deadline that has passed still gets one try.
#pragma once
#include <windows.h>

#include <cstdint>

#include "core/log_layout.h"
#include "foundation/unique_handle.h"
#include "foundation/wstring.h"

// The right to write to the log, held against all programs that go through here. It is a file beside the
// log, open to one only, which goes with its handle, so also when the program is ended. The log itself
// can't serve: it is closed for a moment when a new one takes its place. Empty with the reason in
// GetLastError() if it can't be had.
UniqueFile LockLog(const wchar_t* path, uint64_t deadline);

// Whether there is a file at `path` that is no log: it isn't empty, and none of the sections of a new log
// stands in its first 64 KiB. An entry would spoil it.
bool IsOtherThanLog(const wchar_t* path);

// The log, open for reading and writing while others may read. To be called under the lock. Empty with
// the reason in GetLastError(), ERROR_FILE_NOT_FOUND if there is none.
UniqueFile OpenLog(const wchar_t* path, uint64_t deadline);

// The following exchange the file by a rename, so that it is the old or the new one at each moment.

// Makes the log, with its folder, or replaces it.
bool WriteWholeLog(const wchar_t* path, const wchar_t* text);

// Writes the log anew with `text` at `layout.insertAt`, and behind it a line of blanks of `room` bytes
// (an even number above 4, or 0) in the place of the one that was there. Closes `log`.
bool RewriteLog(const wchar_t* path, UniqueFile& log, const LogLayout& layout, const WString& text,
                int64_t room);

// Turns a log of another encoding, such as an editor may have left, into UTF-16. Closes `log`.
bool ConvertLog(const wchar_t* path, UniqueFile& log);
