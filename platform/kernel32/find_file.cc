// find_file.cc
#include <cerrno>
#include <cstring>

#include "machine/access_check.h"
#include "machine/call.h"
#include "machine/faults.h"
#include "machine/handles.h"
#include "machine/kernel_calls.h"
#include "machine/name_pattern.h"
#include "machine/names.h"
#include "machine/path_resolution.h"
#include "machine/reparse_points.h"

using namespace machine;

namespace {

struct Search : Object {
  Location location;  // of an entry: the directory, and the pattern as its name
  DirectoryReader reader;
  std::u16string pattern;
  bool takesAll = false;
  int dots = 0;        // how many of "." and ".." were given: 2 is all
  FileFacts ownFacts;  // of the directory, read with the first of them
};

void Fill(WIN32_FIND_DATAW& data, const FileFacts& facts, std::u16string_view name, uint32_t tag) {
  std::memset(&data, 0, sizeof data);
  data.dwFileAttributes = facts.attributes;
  data.ftCreationTime = ToFileTime(facts.created);
  data.ftLastAccessTime = ToFileTime(facts.accessed);
  data.ftLastWriteTime = ToFileTime(facts.written);
  data.nFileSizeHigh = static_cast<DWORD>(facts.size >> 32);
  data.nFileSizeLow = static_cast<DWORD>(facts.size);
  data.dwReserved0 = tag;
  std::memcpy(data.cFileName, name.data(), name.size() * sizeof(char16_t));
}

// The facts of one entry. False with errno; ENOENT if it went away meanwhile.
bool Describe(Search& search, const char* name, std::u16string_view windowsName, WIN32_FIND_DATAW& data) {
  FileFacts facts;
  if (!ReadFacts(search.reader.Get(), name, facts)) return false;
  uint32_t tag = 0;
  if (facts.attributes & FILE_ATTRIBUTE_REPARSE_POINT) {
    Location entry = search.location;
    entry.name = name;
    std::u16string text = entry.path.text.substr(0, entry.path.ends[entry.path.Count() - 1]);
    entry.path = WindowsPath::FromText(text + u'\\' + std::u16string(windowsName));
    tag = DescribeReparsePoint(entry, facts);
  }
  Fill(data, facts, windowsName, tag);
  return true;
}

bool Next(Search& search, WIN32_FIND_DATAW& data) {
  while (search.dots < 2) {
    const char* name = search.dots++ == 0 ? "." : "..";
    bool isWanted = search.takesAll || MatchesPattern(ToUtf16(name), search.pattern);
    // The directory above may be out of the machine's reach, so both show the facts of this one.
    if (!isWanted) continue;
    if (search.ownFacts.inode == 0 && !ReadFacts(search.reader.Get(), "", search.ownFacts)) continue;
    Fill(data, search.ownFacts, ToUtf16(name), 0);
    return true;
  }
  while (const char* name = search.reader.Next()) {
    std::u16string windowsName = WindowsName(name);
    if (!search.takesAll && !MatchesPattern(windowsName, search.pattern)) continue;
    if (windowsName.size() >= MAX_PATH) return Fail(ERROR_FILENAME_EXCED_RANGE);
    if (Describe(search, name, windowsName, data)) return true;
    if (errno != ENOENT) return Fail(ErrorFromErrno(errno));
  }
  return Fail(search.reader.Error() ? ErrorFromErrno(search.reader.Error()) : ERROR_NO_MORE_FILES);
}

HANDLE NotFound(DWORD error) {
  SetLastError(error);
  return INVALID_HANDLE_VALUE;
}

// A name without wildcards: the entry itself, links unfollowed.
HANDLE FindOne(Location location, WIN32_FIND_DATAW& data) {
  FileFacts facts;
  if (location.path.wantsDirectory || location.path.IsRoot()) return NotFound(ERROR_FILE_NOT_FOUND);
  if (!LookUp(location, Links::kKeep, facts)) return INVALID_HANDLE_VALUE;
  uint32_t tag = DescribeReparsePoint(location, facts);
  Fill(data, facts, WindowsName(location.name), tag);
  auto search = std::make_shared<Search>();
  search->dots = 2;  // nothing follows
  return AddHandle(search);
}

// The right to list the directory that an entry or a pattern is in.
bool MayList(const Location& location) {
  Location folder = location;
  if (location.path.Count() > 1) {
    folder.path =
        WindowsPath::FromText(location.path.text.substr(0, location.path.ends[location.path.Count() - 1]));
  } else {
    folder.path = WindowsPath::FromText(location.path.text.substr(0, 2) + u'\\');
  }
  folder.name = ".";
  return MayOpen(folder, FILE_LIST_DIRECTORY, true);
}

}  // namespace

HANDLE WINAPI FindFirstFileExW(LPCWSTR path, FINDEX_INFO_LEVELS level, LPVOID result,
                               FINDEX_SEARCH_OPS operation, LPVOID, DWORD) {
  EnterCall();
  if (level > FindExInfoBasic || operation > FindExSearchLimitToDirectories) {
    return NotFound(ERROR_INVALID_PARAMETER);
  }
  auto& data = *static_cast<WIN32_FIND_DATAW*>(result);
  Location location;
  WindowsPath parsed;
  if (!ParsePath(path, parsed, PathUse::kPattern) || HasFault("FindFirstFileW", Effect::kReads, parsed)) {
    return INVALID_HANDLE_VALUE;
  }
  bool isPattern = !parsed.IsRoot() && parsed.Name().find_first_of(u"*?") != std::u16string_view::npos;
  if (!FindParent(std::move(parsed), location)) return INVALID_HANDLE_VALUE;
  if (!location.path.IsRoot() && !MayList(location)) return INVALID_HANDLE_VALUE;
  if (!isPattern) return FindOne(std::move(location), data);
  auto search = std::make_shared<Search>();
  search->pattern = location.path.Name();
  search->takesAll = search->pattern == u"*" || search->pattern == u"*.*";
  if (location.path.Count() == 1) search->dots = 2;  // the root of a drive has none
  search->location = std::move(location);
  if (!search->reader.Open(search->location.parent, ".")) return NotFound(ErrorFromErrno(errno));
  if (!Next(*search, data)) {
    if (GetLastError() == ERROR_NO_MORE_FILES) SetLastError(ERROR_FILE_NOT_FOUND);
    return INVALID_HANDLE_VALUE;
  }
  return AddHandle(std::move(search));
}

HANDLE WINAPI FindFirstFileW(LPCWSTR path, LPWIN32_FIND_DATAW data) {
  return FindFirstFileExW(path, FindExInfoStandard, data, FindExSearchNameMatch, nullptr, 0);
}

BOOL WINAPI FindNextFileW(HANDLE handle, LPWIN32_FIND_DATAW data) {
  EnterCall();
  auto search = HandleTo<Search>(handle);
  if (!search) return FALSE;
  if (search->reader.Get() < 0) return Fail(ERROR_NO_MORE_FILES);
  if (FaultsAreSet() && HasFault("FindNextFileW", Effect::kReads, search->location.path)) return FALSE;
  return Next(*search, *data);
}

BOOL WINAPI FindClose(HANDLE handle) {
  EnterCall();
  if (!HandleTo<Search>(handle)) return FALSE;
  return RemoveHandle(handle);
}
