// shared_target.h
//
// Whether a move would put two folders into one place, by whatever way that is spelled.
#pragma once
#include <functional>
#include <vector>

#include "foundation/wstring.h"
#include "operations/run_tree.h"
#include "operations/stop_word.h"

// Two folders of a run and the place where they meet, as the run spells them.
struct SharedTarget {
  WString source, otherSource, target;
};

// Whether the targets of two trees are the same or lie one inside the other. A copy leaves both sources as
// they are, but of a move the file that came first would be nowhere. Trees that move the same files to the
// same places, such as a folder and one inside it, don't count, and neither do those whose sources are
// missing. `isExcluded` tells which folders don't belong to a tree of other folders. `stop` may be null.
bool FindSharedTarget(const std::vector<RunTree>& trees,
                      const std::function<bool(const wchar_t*)>& isExcluded, SharedTarget& shared,
                      const StopWord* stop = nullptr);

// The sentence for a person who asked for a move.
WString SharedTargetSentence(const SharedTarget& shared);
