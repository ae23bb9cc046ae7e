// directory_enumerator.h
//
// A walk over one directory that leaves out what its filter names.
// It doesn't descend: callers form the paths of subdirectories themselves.
#pragma once
#include <windows.h>

#include <cstdint>

enum : uint32_t {
  kSkipReparsePoints = 1,  // those that are links, see IsLink
  kSkipDirectories = 2,    // wins over kOnlyDirectories
  kOnlyDirectories = 4,
};

struct DirectoryEnumerator {
  WIN32_FIND_DATAW data;  // the entry in hand, valid after First or Next gave true; no short name
  HANDLE handle;          // INVALID_HANDLE_VALUE when no search is open
  uint32_t flags;
  uint64_t size;  // bytes of the entry in hand; set by whoever walks

  DirectoryEnumerator();
  DirectoryEnumerator(const DirectoryEnumerator&) = delete;
  DirectoryEnumerator& operator=(const DirectoryEnumerator&) = delete;
  ~DirectoryEnumerator();

  // Opens `pattern`, a path whose last component may hold "*" or "?", and stands on the first
  // entry that the filter lets through. "." and ".." never show. False if there is none or the
  // directory can't be read; ListingEnded() tells which. Closes an earlier search first.
  bool First(const wchar_t* pattern, uint32_t filter);

  // Goes on to the next entry. False at the end, where the search is closed, and where the listing
  // breaks off; ListingEnded() tells which.
  bool Next();

  void Close();
};

// To be asked right after First or Next gave false: true if all entries were seen or none matches, false
// if the directory could not be read, for the reason that GetLastError() still gives.
bool ListingEnded();

// Whether an entry stands for something elsewhere: a symbolic link, a junction, a mounted volume, the alias
// of a store application, a socket. Other reparse points (deduplicated or cloud files) are the files and
// directories that they show.
bool IsLink(const WIN32_FIND_DATAW& entry);
bool IsLink(DWORD attributes, DWORD reparseTag);
