// folder_rows.h
//
// The eight kinds of user folders that a person can choose, and the mask that stands for a choice.
#pragma once
#include <cstdint>

#include "foundation/wstring.h"

enum : uint32_t {
  kMaskAppData = 1,
  kMaskDesktop = 2,
  kMaskDocuments = 4,
  kMaskDownloads = 8,
  kMaskMusic = 16,
  kMaskPictures = 32,
  kMaskVideos = 64,
  kMaskOther = 128,
  kMaskAll = 255,
};

// One row of the lists of user folders; the row's number is its bit in the folder mask.
struct FolderRow {
  uint32_t bit;
  const wchar_t* text;         // in the lists
  const wchar_t* listName;     // in a list on the command line
  const wchar_t* logicalName;  // for GetUserFolder; null for "All other folders"
  const wchar_t* setFolder;    // below Users\<name> in the set; null for "All other folders"
};
enum : uint32_t { kFolderRowCount = 8 };
extern const FolderRow kFolderRows[kFolderRowCount];

// A mask from names separated by commas, without regard to case or blanks around them, or "all". False
// with the first name that isn't known in `unknown`, if given (an empty one for an empty list).
bool ParseFolderList(const wchar_t* list, uint32_t& mask, WString* unknown = nullptr);
WString FolderListText(uint32_t mask);  // "appdata,music"; empty for 0
