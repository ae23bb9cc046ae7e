// extra_folders.h
//
// The list of further folders to back up: what may be in it.
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/wstring.h"
#include "foundation/wstring_array.h"

enum class ExtraFolderProblem { kNone, kMissing, kFile, kDriveRoot, kEqualsSign, kRedirected, kCovered };

// Whether `folder`, as CleanPath gives it, may be added to `rows`. kCovered: a row is the folder itself, or a
// folder that it lies in. kRedirected: see RedirectionSentence.
ExtraFolderProblem CheckExtraFolder(const wchar_t* folder, const WStringArray& rows);

// The sentence for a person; empty for kNone.
WString ExtraFolderSentence(ExtraFolderProblem problem, const wchar_t* folder);

// Whether a row is `folder` or holds it, by whole components and without regard to case. Otherwise
// `superseded` gets the rows that lie in `folder`, from the last to the first, which the caller removes.
bool CoversFolder(const WStringArray& rows, const wchar_t* folder, std::vector<uint32_t>& superseded);

// The same for a list in memory: removes the rows that the new folder supersedes, and their ticks.
bool IsFolderCovered(const wchar_t* folder, WStringArray& rows, std::vector<bool>* ticked = nullptr);
