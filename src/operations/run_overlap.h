// run_overlap.h
//
// Whether a run would copy a folder into itself or over itself, or a move would put two folders into one,
// by whatever way they are spelled. The time is in proportion to the number of trees and its logarithm.
// `stop` may be null.
#pragma once
#include <functional>
#include <vector>

#include "foundation/wstring.h"
#include "operations/operation_context.h"
#include "operations/run_tree.h"
#include "operations/stop_word.h"

// The first source that is the target of a tree of the run, lies in one, or holds one. The two paths are
// given as the run spells them.
bool FindOverlap(const std::vector<RunTree>& trees, WString& source, WString& target,
                 const StopWord* stop = nullptr);

// The sentence for a person who asked for an operation of this kind.
WString OverlapSentence(OperationKind kind, const wchar_t* source, const wchar_t* target);

// Two folders of a run and the place where they meet, as the run spells them.
struct SharedTarget {
  WString source, otherSource, target;
};

// Whether the targets of two trees are the same or lie one inside the other. A copy leaves both sources as
// they are, but of a move the file that came first would be nowhere. Trees that move the same files to the
// same places, such as a folder and one inside it, don't count, and neither do those whose sources are
// missing. `isExcluded` tells which folders don't belong to a tree of other folders.
bool FindSharedTarget(const std::vector<RunTree>& trees,
                      const std::function<bool(const wchar_t*)>& isExcluded, SharedTarget& shared,
                      const StopWord* stop = nullptr);

// The sentence for a person who asked for a move.
WString SharedTargetSentence(const SharedTarget& shared);
