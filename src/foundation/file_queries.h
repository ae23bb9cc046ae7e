// file_queries.h
//
// Small questions about one file.
#pragma once
#include <windows.h>

#include <cstdint>

// The attributes of what stands at a path, links unfollowed, also of what denies its reader where the
// backup privilege lets its folder be listed. INVALID_FILE_ATTRIBUTES with the reason as the last error.
DWORD FileAttributesOf(const wchar_t* path);

// Attributes and reparse tag of an open file or directory. The tag is 0 where the file system doesn't tell.
bool GetAttributesAndTag(HANDLE handle, FILE_ATTRIBUTE_TAG_INFO& info);

// Whether a call failed since the file system or a file server's redirector doesn't know what it was asked
// for; each of them says so in other words.
bool IsUnsupported(DWORD error);

// Bytes of a file, also of one that another program holds open unshared. 0 if it can't be reached.
uint64_t GetFileSize64(const wchar_t* path);

// Room of the buffer of ResolveFoundName, in units with the terminator.
constexpr int kFoundNameCapacity = 1024;

// Puts the first entry that a path or pattern such as "D:\*.nvsav" finds, other than a link, in the
// place of its last component. False, with the buffer as it was, if nothing is found or the path
// doesn't fit into `buffer`, which has room for kFoundNameCapacity units.
bool ResolveFoundName(wchar_t* buffer);
