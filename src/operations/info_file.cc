#include "operations/info_file.h"

#include <windows.h>

#include <algorithm>
#include <memory>

#include "foundation/directory_enumerator.h"
#include "foundation/system_text.h"
#include "foundation/unique_handle.h"
#include "operations/path_queries.h"

namespace {

constexpr uint64_t kLargestInfoFile = 16u << 20;

WString InFolder(const wchar_t* folder, const wchar_t* name) {
  WString path(folder);
  path.StripTrailingBackslashes();
  path.Append(L"\\").Append(name);
  return path;
}

// The first of two names that the folder has, otherwise the second.
WString FirstOf(const wchar_t* folder, const wchar_t* first, const wchar_t* second) {
  WString path = InFolder(folder, first);
  return IsFilePath(path.CStr()) ? path : InFolder(folder, second);
}

// Control characters that no editor writes. A zero among them is what nearly every binary file has.
bool IsTextUnit(uint16_t unit) {
  constexpr uint16_t kEndOfFileMark = 0x1a;  // old editors leave it at the end
  return unit >= 0x20 || (unit >= 9 && unit <= 13) || unit == kEndOfFileMark;
}

bool IsText(const uint8_t* bytes, size_t size) {
  bool littleEndian = size >= 2 && bytes[0] == 0xff && bytes[1] == 0xfe;
  bool bigEndian = size >= 2 && bytes[0] == 0xfe && bytes[1] == 0xff;
  if (!littleEndian && !bigEndian) return std::all_of(bytes, bytes + size, IsTextUnit);
  for (size_t i = 2; i + 1 < size; i += 2) {
    uint16_t low = bytes[littleEndian ? i : i + 1];
    uint16_t high = bytes[littleEndian ? i + 1 : i];
    if (!IsTextUnit(static_cast<uint16_t>(high << 8 | low))) return false;
  }
  return true;
}

InfoFileState CheckContent(HANDLE file) {
  LARGE_INTEGER size = {};
  if (!GetFileSizeEx(file, &size)) return InfoFileState::kUnreadable;
  if (static_cast<uint64_t>(size.QuadPart) > kLargestInfoFile) return InfoFileState::kTooLarge;
  DWORD bytes = static_cast<DWORD>(size.QuadPart), read = 0;
  auto content = std::make_unique<uint8_t[]>(bytes + 1);
  if (!ReadFile(file, content.get(), bytes, &read, nullptr)) return InfoFileState::kUnreadable;
  return IsText(content.get(), read) ? InfoFileState::kReadable : InfoFileState::kBinary;
}

}  // namespace

WString ChooseInfoFile(const wchar_t* setFolder) {
  return FirstOf(setFolder, kInfoFileNvsav, kInfoFileGrxsv);
}

WString ChooseCustomRootInfoFile(const wchar_t* root) {
  return FirstOf(root, kInfoFileGrxsv, kInfoFileNvsav);
}

WString FindScannedInfoFile(const wchar_t* root) {
  for (const wchar_t* pattern : {L"*.grxsv", L"*.nvsav"}) {
    DirectoryEnumerator files;
    WString path = InFolder(root, pattern);
    if (files.First(path.AddLongPathPrefix().CStr(), kSkipReparsePoints | kSkipDirectories)) {
      return InFolder(root, files.data.cFileName);
    }
  }
  return WString();
}

WString FindInfoFile(const wchar_t* set) {
  if (UnitCount(set) == 0) return WString();
  if (IsFilePath(set)) return WString(set);
  WString path = ChooseInfoFile(set);
  return IsFilePath(path.CStr()) ? path : WString();
}

WString SetFolderOf(const wchar_t* infoFile) {
  WString folder(infoFile);
  folder.ParentPath();
  return folder;
}

InfoFileState CheckInfoFile(const wchar_t* path) {
  DWORD attributes = PathAttributes(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    DWORD error = GetLastError();
    bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    return missing ? InfoFileState::kMissing : InfoFileState::kUnreadable;
  }
  if (attributes & FILE_ATTRIBUTE_DIRECTORY) return InfoFileState::kFolder;
  WString name(path);
  UniqueFile file(CreateFileW(name.AddLongPathPrefix().CStr(), GENERIC_READ,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                              0, nullptr));
  return file ? CheckContent(file.Get()) : InfoFileState::kUnreadable;
}

WString InfoFileSentence(InfoFileState state, const wchar_t* path) {
  const DWORD error = GetLastError();
  const wchar_t* reason = nullptr;
  WString unreadable;
  switch (state) {
    case InfoFileState::kReadable:
      return WString();
    case InfoFileState::kMissing:
      reason = L"\" does not exist. Indicate the folder of a backup, or its info file.";
      break;
    case InfoFileState::kFolder:
      reason = L"\" is a folder. Rename it, or choose another folder for the backup.";
      break;
    case InfoFileState::kUnreadable:
      unreadable.Concat(L"\" could not be read (", SystemText(error).CStr(),
                        L"). Check that it is not open elsewhere and that you may read it.");
      reason = unreadable.CStr();
      break;
    case InfoFileState::kTooLarge:
      reason =
          L"\" is larger than 16 MiB and cannot be a backup's info file. Rename it, or choose another "
          L"folder.";
      break;
    case InfoFileState::kBinary:
      reason = L"\" holds no text and cannot be a backup's info file. Rename it, or choose another folder.";
      break;
  }
  WString sentence;
  sentence.Concat(L"The file \"", path, reason);
  return sentence;
}
