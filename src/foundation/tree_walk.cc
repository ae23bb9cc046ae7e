#include "foundation/tree_walk.h"

HoldResult TreeWalk::Enter(const wchar_t* folder, bool followLink) {
  auto level = std::make_unique<Level>();
  const HoldResult held = level->held.Open(folder, followLink);
  if (held != HoldResult::kHeld) return held;
  const WString path(folder);
  level->folderLength = path.Length();
  level->hasEntry = level->search.First((path + L"\\" + pattern_).CStr(), 0);
  if (!level->hasEntry && !ListingEnded()) {
    const DWORD error = GetLastError();
    level.reset();
    SetLastError(error);
    return HoldResult::kFailed;
  }
  folder_ = path;
  levels_.push_back(std::move(level));
  return HoldResult::kHeld;
}

bool TreeWalk::Next() {
  Level& level = *levels_.back();
  if (level.isAtFirst || !level.hasEntry) {
    level.isAtFirst = false;
    SetLastError(ERROR_NO_MORE_FILES);
    return level.hasEntry;
  }
  level.hasEntry = level.search.Next();
  return level.hasEntry;
}

void TreeWalk::Leave() {
  levels_.pop_back();
  if (IsInside()) folder_.Truncate(levels_.back()->folderLength);
}
