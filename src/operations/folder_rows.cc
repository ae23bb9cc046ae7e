#include "operations/folder_rows.h"

#include "foundation/split_list.h"
#include "operations/backup_set.h"
#include "users/user_folders.h"

const FolderRow kFolderRows[kFolderRowCount] = {
    {kMaskAppData, L"Application data", L"appdata", kFolderAppData, kAppDataFolder},
    {kMaskDesktop, L"Desktop", L"desktop", kFolderDesktop, L"Desktop"},
    {kMaskDocuments, L"Documents", L"documents", kFolderDocuments, L"Documents"},
    {kMaskDownloads, L"Downloads", L"downloads", kFolderDownloads, L"Downloads"},
    {kMaskMusic, L"Music", L"music", kFolderMusic, L"Music"},
    {kMaskPictures, L"Pictures", L"pictures", kFolderPictures, L"Pictures"},
    {kMaskVideos, L"Videos", L"videos", kFolderVideos, L"Videos"},
    {kMaskOther, L"All other folders", L"other", nullptr, nullptr},
};

namespace {

uint32_t BitOfListName(const WString& name) {
  for (const FolderRow& row : kFolderRows) {
    if (name.EqualsNoCase(row.listName)) return row.bit;
  }
  return name.EqualsNoCase(L"all") ? static_cast<uint32_t>(kMaskAll) : 0;
}

}  // namespace

bool ParseFolderList(const wchar_t* list, uint32_t& mask, WString* unknown) {
  uint32_t bits = 0;
  SplitList names;
  names.Split(list, L",", true);
  for (uint32_t i = 0; i < names.count; i++) {
    WString name(names.pieces[i]);
    name.Trim(kTrimLeading | kTrimTrailing);
    uint32_t bit = BitOfListName(name);
    if (bit == 0) {
      if (unknown) *unknown = name;
      return false;
    }
    bits |= bit;
  }
  if (bits == 0 && unknown) unknown->Assign(L"");
  if (bits == 0) return false;
  mask = bits;
  return true;
}

WString FolderListText(uint32_t mask) {
  WString text(L"");
  for (const FolderRow& row : kFolderRows) {
    if (!(mask & row.bit)) continue;
    if (!text.IsEmpty()) text.Append(L",");
    text.Append(row.listName);
  }
  return text;
}
