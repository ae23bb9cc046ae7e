#include "operations/run_tree.h"

#include "operations/folder_rows.h"
#include "operations/path_queries.h"

namespace {

constexpr const wchar_t* kRoamingFolders[] = {L"Themes", L"SendTo", L"Account Pictures", nullptr};
constexpr const wchar_t* kLocalFolders[] = {L"Themes", nullptr};

}  // namespace

void AddApplicationData(std::vector<RunTree>& trees, RunTree whole, ApplicationData part) {
  whole.fast = true;
  whole.bit = kMaskAppData;
  trees.push_back(whole);
  // The account itself could have put a link on the way from the whole tree to a folder inside it.
  RunTree inner(whole);
  inner.inner = true;
  if (inner.sourceBase.IsEmpty()) inner.sourceBase = whole.source;
  if (inner.targetBase.IsEmpty()) inner.targetBase = whole.target;
  for (const wchar_t* const* leaf = part == ApplicationData::kRoaming ? kRoamingFolders : kLocalFolders;
       *leaf; leaf++) {
    const WString relative = WString(L"Microsoft\\Windows\\") + *leaf;
    inner.source = PathBelow(whole.source, relative.CStr());
    inner.target = PathBelow(whole.target, relative.CStr());
    trees.push_back(inner);
  }
}
