#include "operations/held_place.h"

#include <windows.h>

#include "foundation/directory_enumerator.h"
#include "operations/path_queries.h"
#include "operations/real_path.h"

namespace {

// Whether a disk is mounted in the folder: a link that the real path keeps.
bool IsMountPoint(const WString& folder) {
  DirectoryEnumerator entry;
  return entry.First(WString(folder).AddLongPathPrefix().CStr(), 0) && IsLink(entry.data) &&
         ResolveRealPath(folder.CStr()).EqualsNoCase(folder);
}

}  // namespace

HeldPlace FindHeldPlace(const WString& folder) {
  HeldPlace place;
  place.folder = ResolveRealPath(folder.CStr());
  const int32_t length = place.folder.Length();
  if (length <= kDriveRootLength || place.folder.buffer[1] != L':') return {folder, WString()};
  place.base.AssignMid(place.folder.CStr(), 1, kDriveRootLength);
  for (int32_t at = kDriveRootLength; at <= length; at++) {
    if (at < length && place.folder.buffer[at] != L'\\') continue;
    WString step;
    step.AssignMid(place.folder.CStr(), 1, at);
    if (IsMountPoint(step)) place.base = step;
  }
  return place;
}
