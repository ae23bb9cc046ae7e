#include "operations/copy_move_trees.h"

#include "operations/folder_rows.h"
#include "operations/path_queries.h"

namespace {

constexpr wchar_t kNamedFolders[] = L"|AppData|Desktop|Documents|Downloads|Music|Pictures|Videos|";

// Below the two folders that were named, neither account's links lead elsewhere.
RunTree TreeBelow(const CopyMoveSelection& selection, const wchar_t* relative) {
  RunTree tree;
  tree.source = PathBelow(selection.source, relative);
  tree.target = PathBelow(selection.target, relative);
  tree.sourceBase = selection.source;
  tree.targetBase = selection.target;
  return tree;
}

}  // namespace

std::vector<RunTree> ListCopyMoveTrees(const CopyMoveSelection& selection) {
  std::vector<RunTree> trees;
  if (!selection.sourceIsProfile) {
    RunTree whole;
    whole.source = selection.source;
    whole.target = selection.target;
    trees.push_back(whole);
    return trees;
  }
  if (selection.folderMask & kMaskAppData) {
    AddApplicationData(trees, TreeBelow(selection, L"AppData\\Roaming"), ApplicationData::kRoaming);
    AddApplicationData(trees, TreeBelow(selection, L"AppData\\Local"), ApplicationData::kLocal);
    RunTree low = TreeBelow(selection, L"AppData\\LocalLow");
    low.fast = true;
    low.bit = kMaskAppData;
    trees.push_back(low);
  }
  for (const FolderRow& row : kFolderRows) {
    if (!(selection.folderMask & row.bit) || row.bit == kMaskAppData || row.bit == kMaskOther) continue;
    trees.push_back(TreeBelow(selection, row.setFolder));
    trees.back().bit = row.bit;
  }
  if (selection.folderMask & kMaskOther) {
    RunTree others;
    others.source = others.sourceBase = selection.source;
    others.target = others.targetBase = selection.target;
    others.bit = kMaskOther;
    others.otherFolders = true;
    trees.push_back(others);
  }
  return trees;
}

bool IsNamedCopyMoveFolder(const wchar_t* name) { return IsNameInBars(WString(kNamedFolders), name); }
