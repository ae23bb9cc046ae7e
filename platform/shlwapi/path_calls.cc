// path_calls.cc
#include <windows.h>
#include <shlwapi.h>

#include "machine/access_check.h"
#include "machine/call.h"
#include "machine/path_resolution.h"
#include "machine/reparse_points.h"

using namespace machine;

// A file's attributes aren't needed to know that it is there, which saves a call for each file of a copy.
BOOL WINAPI PathFileExistsW(LPCWSTR path) {
  EnterCall();
  Location location;
  FileFacts facts;
  return path && Locate("PathFileExistsW", Effect::kReads, path, location) &&
         LookUp(location, Links::kKeep, facts, false) && MayReadAttributes(location);
}

BOOL WINAPI PathIsDirectoryW(LPCWSTR path) {
  EnterCall();
  Location location;
  FileFacts facts;
  if (!path || !Locate("PathIsDirectoryW", Effect::kReads, path, location) ||
      !LookUp(location, Links::kKeep, facts, false) || !MayReadAttributes(location)) {
    return FALSE;
  }
  DescribeReparsePoint(location, facts);
  return facts.attributes & FILE_ATTRIBUTE_DIRECTORY;  // not TRUE but this bit, as the call gives it
}

BOOL WINAPI PathIsRootW(LPCWSTR path) {
  EnterCall();
  if (!path || !*path) return FALSE;
  std::u16string_view text = reinterpret_cast<const char16_t*>(path);
  if (text.starts_with(u"\\\\?\\") && text.size() > 5 && text[5] == u':') text.remove_prefix(4);
  if (text == u"\\") return TRUE;
  if (text.size() == 3 && text[1] == u':' && text[2] == u'\\') return TRUE;
  if (!text.starts_with(u"\\\\")) return FALSE;
  // A server, or a server and its share.
  size_t slash = text.find(u'\\', 2);
  return slash == text.npos || (slash + 1 < text.size() && text.find(u'\\', slash + 1) == text.npos);
}
