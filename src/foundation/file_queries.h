// file_queries.h
//
// Small questions about one file.
#pragma once
#include <cstdint>

// Bytes of a file, also of one that another program holds open unshared. 0 if it can't be reached.
uint64_t GetFileSize64(const wchar_t* path);

// Room of the buffer of ResolveFoundName, in units with the terminator.
constexpr int kFoundNameCapacity = 1024;

// Puts the first entry that a path or pattern such as "D:\*.nvsav" finds, other than a link, in the
// place of its last component. False, with the buffer as it was, if nothing is found or the path
// doesn't fit into `buffer`, which has room for kFoundNameCapacity units.
bool ResolveFoundName(wchar_t* buffer);
