// run_overlap.h
//
// Whether a run would copy a folder into itself or over itself, by whatever way the two are spelled.
#pragma once
#include <vector>

#include "foundation/wstring.h"
#include "operations/operation_context.h"
#include "operations/run_tree.h"
#include "operations/stop_word.h"

// The first source that is the target of a tree of the run, lies in one, or holds one. The two paths are
// given as the run spells them. Takes no longer for each tree where there are many; `stop` may be null.
bool FindOverlap(const std::vector<RunTree>& trees, WString& source, WString& target,
                 const StopWord* stop = nullptr);

// The sentence for a person who asked for an operation of this kind.
WString OverlapSentence(OperationKind kind, const wchar_t* source, const wchar_t* target);
