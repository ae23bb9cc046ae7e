#include "operations/link_watch.h"

#include "foundation/file_queries.h"
#include "foundation/held_directory.h"

bool HasBecomeLink(const wchar_t* directory) {
  DWORD attributes = FileAttributesOf(directory);
  if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_REPARSE_POINT)) return false;
  HeldDirectory held;
  return held.Open(directory) != HoldResult::kHeld;
}
