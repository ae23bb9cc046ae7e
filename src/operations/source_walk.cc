#include "operations/source_walk.h"

#include "operations/link_watch.h"
#include "operations/temporary_file.h"

SourceWalk::SourceWalk(const wchar_t* root) : path(root), error(NO_ERROR), depth_(0) {}

SourceWalk::Entrance SourceWalk::Enter() {
  if (path.Length() == 0) {
    error = ERROR_FILENAME_EXCED_RANGE;
    return Entrance::kFailed;
  }
  HeldDirectory held;
  HoldResult holding = held.Open(path.CStr(), depth_ == 0);
  if (holding == HoldResult::kLink) return Entrance::kLink;
  error = holding == HoldResult::kHeld ? NO_ERROR : GetLastError();
  if (error != NO_ERROR) return Entrance::kFailed;

  int32_t length = path.Length();
  if (!path.Push(L"*")) {
    error = ERROR_FILENAME_EXCED_RANGE;
    return Entrance::kFailed;
  }
  if (depth_ == levels_.size()) levels_.push_back(std::make_unique<Level>());
  Level& level = *levels_[depth_];
  level.hasFirst = level.search.First(path.CStr(), 0);
  if (!level.hasFirst && !ListingEnded()) error = GetLastError();
  path.Cut(length);
  if (error != NO_ERROR) return Entrance::kFailed;
  if (depth_ > 0 && HasBecomeLink(path.CStr())) {
    level.search.Close();
    return Entrance::kLink;
  }
  level.held = std::move(held);
  level.length = length;
  level.isAtEnd = !level.hasFirst;
  depth_++;
  return Entrance::kEntered;
}

bool SourceWalk::Advance(Level& level) {
  if (level.isAtEnd) return false;
  if (level.hasFirst) {
    level.hasFirst = false;
    return true;
  }
  if (level.search.Next()) return true;
  if (!ListingEnded()) error = GetLastError();
  level.isAtEnd = true;
  return false;
}

SourceWalk::Step SourceWalk::Next() {
  Level& level = Top();
  path.Cut(level.length);
  error = NO_ERROR;
  do {
    if (!Advance(level)) return error == NO_ERROR ? Step::kEnd : Step::kBrokenOff;
  } while (IsTemporaryName(level.search.data.cFileName));
  if (IsLink(level.search.data)) return Step::kLink;
  return path.Push(level.search.data.cFileName) ? Step::kEntry : Step::kTooLong;
}

void SourceWalk::Leave() {
  Level& level = Top();
  path.Cut(level.length);
  level.search.Close();
  level.held.Release();
  depth_--;
}

int64_t SourceWalk::Size() const {
  const WIN32_FIND_DATAW& entry = Entry();
  return static_cast<int64_t>(static_cast<uint64_t>(entry.nFileSizeHigh) << 32 | entry.nFileSizeLow);
}
