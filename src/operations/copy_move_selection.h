// copy_move_selection.h
//
// What a copy or a move is to do, and its way into the document that carries it to the worker. That
// document has no file.
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/ini_document.h"
#include "operations/run_tree.h"
#include "users/user_table.h"

inline constexpr wchar_t kCopyMoveSourceKey[] = L"CMSrcFolder";
inline constexpr wchar_t kCopyMoveTargetKey[] = L"CMDstFolder";
inline constexpr wchar_t kCopyMoveSourceIsUserKey[] = L"SrcIsUser";
inline constexpr wchar_t kCopyMoveFoldersKey[] = L"CMUserFolders";
inline constexpr wchar_t kCopyMoveOptionsKey[] = L"CMBackupOptions";  // 2: only missing files

struct CopyMoveSelection {
  WString source, target;  // absolute paths without a trailing backslash
  bool sourceIsProfile = false;
  uint32_t folderMask = 0;  // of a profile
  bool onlyMissing = true;
};

void WriteCopyMoveSelection(IniDocument& document, const CopyMoveSelection& selection);
CopyMoveSelection ReadCopyMoveSelection(IniDocument& document);

// The path that a location entry stands for: a path itself, or "name (profile path)".
WString LocationFromEntry(const wchar_t* entry);
WString EntryForAccount(const wchar_t* name, const wchar_t* profile);

// Whether files can be moved from one to the other: both have a drive letter, and the same one.
bool CanMoveFiles(const wchar_t* source, const wchar_t* target);

// The first tree of a run whose files can't be moved; null if there is none.
const RunTree* FindUnmovable(const std::vector<RunTree>& trees);

// Whether a copy can start: some group of folders is chosen, the source is a folder, and the target, its
// parent or its parent's parent is one. Both are paths.
bool CanStartCopyMove(const wchar_t* source, const wchar_t* target, uint32_t folderMask);
