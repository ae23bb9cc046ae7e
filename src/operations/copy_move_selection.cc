#include "operations/copy_move_selection.h"

#include <windows.h>

#include "operations/backup_set.h"
#include "operations/document_keys.h"
#include "operations/operation_context.h"
#include "operations/path_queries.h"

namespace {

constexpr int32_t kShortestPath = 3;

bool HasDrive(const WString& path) { return path.Length() >= 2 && path.buffer[1] == L':'; }

}  // namespace

void WriteCopyMoveSelection(IniDocument& document, const CopyMoveSelection& selection) {
  document.SetValue(kSettingsSection, kCopyMoveSourceKey, selection.source.CStr());
  document.SetValue(kSettingsSection, kCopyMoveTargetKey, selection.target.CStr());
  document.SetValue(kSettingsSection, kCopyMoveSourceIsUserKey, selection.sourceIsProfile ? L"1" : L"0");
  if (selection.sourceIsProfile) {
    SetNumber(document, kCopyMoveFoldersKey, selection.folderMask & kMaskAll);
  }
  document.SetValue(kSettingsSection, kCopyMoveOptionsKey, selection.onlyMissing ? L"2" : L"0");
}

CopyMoveSelection ReadCopyMoveSelection(IniDocument& document) {
  CopyMoveSelection selection;
  selection.source = document.GetValue(kSettingsSection, kCopyMoveSourceKey);
  selection.target = document.GetValue(kSettingsSection, kCopyMoveTargetKey);
  selection.sourceIsProfile = document.GetNumber(kSettingsSection, kCopyMoveSourceIsUserKey) != 0;
  selection.folderMask = document.GetNumber(kSettingsSection, kCopyMoveFoldersKey);
  selection.onlyMissing = (document.GetNumber(kSettingsSection, kCopyMoveOptionsKey) & kCopyOnlyMissing) != 0;
  return selection;
}

WString LocationFromEntry(const wchar_t* entry) {
  WString text(entry);
  if (text.Length() < kShortestPath || text.buffer[1] == L':' || text.buffer[0] == L'\\') return text;
  const int32_t open = text.Find(L"(");
  if (open) text.RemoveLeft(open);
  const int32_t close = text.Find(L")", true, -1);
  if (close >= 4) text.Truncate(close - 1);
  return text;
}

WString EntryForAccount(const wchar_t* name, const wchar_t* profile) {
  WString entry;
  entry.Concat(name, L" (", profile, L")");
  return entry;
}

bool CanMoveFiles(const wchar_t* source, const wchar_t* target) {
  const WString from(source), to(target);
  return HasDrive(from) && HasDrive(to) && from.buffer[0] == to.buffer[0];
}

const RunTree* FindUnmovable(const std::vector<RunTree>& trees) {
  for (const RunTree& tree : trees) {
    if (!CanMoveFiles(tree.source.CStr(), tree.target.CStr())) return &tree;
  }
  return nullptr;
}

bool CanStartCopyMove(const wchar_t* source, const wchar_t* target, uint32_t folderMask) {
  WString folder(target);
  if (!(folderMask & kMaskAll) || UnitCount(source) < kShortestPath || folder.Length() < kShortestPath ||
      !IsFolderPath(source)) {
    return false;
  }
  // The target itself or its parent may be missing, and one more.
  for (int missing = 0; missing < 2; missing++) {
    folder.ParentPath(false);
    const DWORD attributes = PathAttributes(folder.CStr());
    if (attributes != INVALID_FILE_ATTRIBUTES) return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  }
  return false;
}
