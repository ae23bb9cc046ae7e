// run_overlap.h
//
// Whether a run would copy a folder into itself or over itself, by whatever way the two are spelled.
#pragma once
#include <vector>

#include "foundation/wstring.h"
#include "operations/operation_context.h"
#include "operations/run_tree.h"

// The path with every link, junction, short name and substituted drive of its existing part resolved,
// without the long path prefix and without a trailing backslash. What doesn't exist yet is appended as
// it stands.
WString ResolveRealPath(const wchar_t* path);

// The first source that is the target of a tree of the run, lies in one, or holds one. The two paths are
// given as the run spells them.
bool FindOverlap(const std::vector<RunTree>& trees, WString& source, WString& target);

// The sentence for a person who asked for an operation of this kind.
WString OverlapSentence(OperationKind kind, const wchar_t* source, const wchar_t* target);
