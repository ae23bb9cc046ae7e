#include "foundation/directory_enumerator.h"

#include "foundation/file_queries.h"

namespace {

// The bit of a reparse tag that says that the name stands for another place.
constexpr DWORD kNameSurrogate = 0x20000000;

// These stand for another thing without that bit, hold no data, and nobody can open them: the names by which
// store applications are started, of which each profile has a dozen, and sockets.
constexpr DWORD kAppExecutableLink = 0x8000001B;
constexpr DWORD kUnixSocket = 0x80000023;

bool IsDotName(const wchar_t* name) {
  return name[0] == L'.' && (name[1] == 0 || (name[1] == L'.' && name[2] == 0));
}

bool IsAccepted(const WIN32_FIND_DATAW& entry, uint32_t flags) {
  if (IsDotName(entry.cFileName)) return false;
  if ((flags & kSkipReparsePoints) != 0 && IsLink(entry)) return false;
  const bool isDirectory = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  if ((flags & kSkipDirectories) != 0) return !isDirectory;
  return (flags & kOnlyDirectories) == 0 || isDirectory;
}

// Short names cost a look at each entry, and large blocks spare calls of the kernel.
HANDLE OpenSearch(const wchar_t* pattern, WIN32_FIND_DATAW* data) {
  const HANDLE handle = FindFirstFileExW(pattern, FindExInfoBasic, data, FindExSearchNameMatch, nullptr,
                                         FIND_FIRST_EX_LARGE_FETCH);
  // Systems before 6.1 don't know the level, nor do some file servers' redirectors.
  if (handle != INVALID_HANDLE_VALUE || !IsUnsupported(GetLastError())) return handle;
  return FindFirstFileW(pattern, data);
}

}  // namespace

bool IsLink(DWORD attributes, DWORD reparseTag) {
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return false;
  // A tag of 0 was withheld: what isn't known to be harmless isn't entered.
  return reparseTag == 0 || (reparseTag & kNameSurrogate) != 0 || reparseTag == kAppExecutableLink ||
         reparseTag == kUnixSocket;
}

bool IsLink(const WIN32_FIND_DATAW& entry) { return IsLink(entry.dwFileAttributes, entry.dwReserved0); }

bool ListingEnded() {
  const DWORD error = GetLastError();
  return error == ERROR_NO_MORE_FILES || error == ERROR_FILE_NOT_FOUND;
}

DirectoryEnumerator::DirectoryEnumerator() : data{}, handle(INVALID_HANDLE_VALUE), flags(0), size(0) {}

DirectoryEnumerator::~DirectoryEnumerator() { Close(); }

void DirectoryEnumerator::Close() {
  if (handle == INVALID_HANDLE_VALUE) return;
  FindClose(handle);
  handle = INVALID_HANDLE_VALUE;
}

bool DirectoryEnumerator::First(const wchar_t* pattern, uint32_t filter) {
  Close();
  flags = filter;
  handle = OpenSearch(pattern, &data);
  if (handle == INVALID_HANDLE_VALUE) return false;
  return IsAccepted(data, flags) || Next();
}

bool DirectoryEnumerator::Next() {
  if (handle == INVALID_HANDLE_VALUE) {
    SetLastError(ERROR_INVALID_HANDLE);
    return false;
  }
  while (FindNextFileW(handle, &data)) {
    if (IsAccepted(data, flags)) return true;
  }
  const DWORD error = GetLastError();
  Close();
  SetLastError(error);
  return false;
}
