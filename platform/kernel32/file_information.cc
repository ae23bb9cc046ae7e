// file_information.cc
//
// Information by handle, in classes.
#include <cerrno>
#include <cstring>

#include "machine/call.h"
#include "machine/faults.h"
#include "machine/open_files.h"
#include "machine/path_resolution.h"
#include "machine/reparse_points.h"

using namespace machine;

namespace {

// The facts of an open file, a link's kind included.
bool FactsOfHandle(const File& file, FileFacts& facts, uint32_t* tag = nullptr) {
  if (!ReadFacts(file.Get(), "", facts)) return Fail(ErrorFromErrno(errno));
  if (!(facts.attributes & FILE_ATTRIBUTE_REPARSE_POINT)) return true;
  Location location;
  FileFacts found;
  if (!FindParent(file.Path(), location) || !LookUp(location, Links::kKeep, found)) return false;
  uint32_t kind = DescribeReparsePoint(location, facts);
  if (tag) *tag = kind;
  return true;
}

LARGE_INTEGER ToLarge(uint64_t value) {
  LARGE_INTEGER large;
  large.QuadPart = static_cast<LONGLONG>(value);
  return large;
}

template <typename T>
T* Room(LPVOID buffer, DWORD size) {
  if (size >= sizeof(T)) return static_cast<T*>(buffer);
  SetLastError(ERROR_BAD_LENGTH);
  return nullptr;
}

BOOL SetBasic(File& file, const FILE_BASIC_INFO& info) {
  if (!(file.access & FILE_WRITE_ATTRIBUTES)) return Fail(ERROR_ACCESS_DENIED);
  if (info.ChangeTime.QuadPart > 0) Unsupported("SetFileInformationByHandle", "a change time");
  auto ticks = [](LARGE_INTEGER time) {
    return time.QuadPart > 0 ? static_cast<uint64_t>(time.QuadPart) : 0;
  };
  uint64_t created = ticks(info.CreationTime);
  if (info.FileAttributes != 0 || created != 0) {
    if (!file.hasAttributes && !ReadFacts(file.Get(), "", file.facts)) return Fail(ErrorFromErrno(errno));
    file.hasAttributes = true;
    uint32_t attributes = file.facts.attributes & kSettableAttributes;
    if (info.FileAttributes != 0) attributes = info.FileAttributes & kSettableAttributes;
    attributes |= file.facts.attributes & FILE_ATTRIBUTE_REPARSE_POINT;
    if (created == 0) created = file.facts.created;
    if (!WriteAttributes(file.Get(), "", file.facts, attributes, created)) {
      return Fail(ErrorFromErrno(errno));
    }
    file.facts.attributes = attributes;
    file.facts.created = created;
  }
  uint64_t accessed = ticks(info.LastAccessTime), written = ticks(info.LastWriteTime);
  if (accessed == 0 && written == 0) return TRUE;
  return WriteTimes(file.Get(), "", accessed, written) || Fail(ErrorFromErrno(errno));
}

}  // namespace

BOOL WINAPI GetFileInformationByHandle(HANDLE handle, LPBY_HANDLE_FILE_INFORMATION info) {
  EnterCall();
  std::shared_ptr<File> file = FileOf(handle);
  FileFacts facts;
  if (!file || (FaultsAreSet() && HasFault("GetFileInformationByHandle", Effect::kReads, file->Path())) ||
      !FactsOfHandle(*file, facts)) {
    return FALSE;
  }
  info->dwFileAttributes = facts.attributes;
  info->ftCreationTime = ToFileTime(facts.created);
  info->ftLastAccessTime = ToFileTime(facts.accessed);
  info->ftLastWriteTime = ToFileTime(facts.written);
  info->dwVolumeSerialNumber = static_cast<DWORD>(facts.device ^ facts.device >> 32);
  info->nFileSizeHigh = static_cast<DWORD>(facts.size >> 32);
  info->nFileSizeLow = static_cast<DWORD>(facts.size);
  info->nNumberOfLinks = facts.IsDirectory() ? 1 : facts.links;
  info->nFileIndexHigh = static_cast<DWORD>(facts.inode >> 32);
  info->nFileIndexLow = static_cast<DWORD>(facts.inode);
  return TRUE;
}

BOOL WINAPI GetFileInformationByHandleEx(HANDLE handle, FILE_INFO_BY_HANDLE_CLASS kind, LPVOID buffer,
                                         DWORD size) {
  EnterCall();
  std::shared_ptr<File> file = FileOf(handle);
  FileFacts facts;
  uint32_t tag = 0;
  if (!file || (FaultsAreSet() && HasFault("GetFileInformationByHandleEx", Effect::kReads, file->Path())) ||
      !FactsOfHandle(*file, facts, &tag)) {
    return FALSE;
  }
  if (kind == FileBasicInfo) {
    auto* info = Room<FILE_BASIC_INFO>(buffer, size);
    if (!info) return FALSE;
    info->CreationTime = ToLarge(facts.created);
    info->LastAccessTime = ToLarge(facts.accessed);
    info->LastWriteTime = ToLarge(facts.written);
    info->ChangeTime = ToLarge(facts.changed);
    info->FileAttributes = facts.attributes;
  } else if (kind == FileAttributeTagInfo) {
    auto* info = Room<FILE_ATTRIBUTE_TAG_INFO>(buffer, size);
    if (!info) return FALSE;
    info->FileAttributes = facts.attributes;
    info->ReparseTag = tag;
  } else {
    Unsupported("GetFileInformationByHandleEx", "this class of information");
  }
  return TRUE;
}

BOOL WINAPI SetFileInformationByHandle(HANDLE handle, FILE_INFO_BY_HANDLE_CLASS kind, LPVOID buffer,
                                       DWORD size) {
  EnterCall();
  std::shared_ptr<File> file = FileOf(handle);
  if (!file || (FaultsAreSet() && HasFault("SetFileInformationByHandle", Effect::kChanges, file->Path()))) {
    return FALSE;
  }
  if (kind != FileBasicInfo) Unsupported("SetFileInformationByHandle", "this class of information");
  auto* info = Room<FILE_BASIC_INFO>(buffer, size);
  return info && IsWritable(file->Drive()) && SetBasic(*file, *info);
}

DWORD WINAPI GetFinalPathNameByHandleW(HANDLE handle, LPWSTR buffer, DWORD size, DWORD flags) {
  EnterCall();
  std::shared_ptr<File> file = FileOf(handle);
  if (!file || (FaultsAreSet() && HasFault("GetFinalPathNameByHandleW", Effect::kReads, file->Path()))) {
    return 0;
  }
  // As of a network drive, whose volume has no other name.
  if ((flags & ~FILE_NAME_OPENED) == VOLUME_NAME_GUID) return Fail(ERROR_PATH_NOT_FOUND);
  if ((flags & ~FILE_NAME_OPENED) != VOLUME_NAME_DOS) {
    Unsupported("GetFinalPathNameByHandleW", "names other than those of drives");
  }
  std::u16string path = PathOfDescriptor(file->Get());
  if (path.empty()) return Fail(ERROR_PATH_NOT_FOUND);
  path.insert(0, u"\\\\?\\");
  if (path.size() >= size) return static_cast<DWORD>(path.size() + 1);
  std::memcpy(buffer, path.c_str(), (path.size() + 1) * sizeof(char16_t));
  SetLastError(ERROR_SUCCESS);
  return static_cast<DWORD>(path.size());
}
