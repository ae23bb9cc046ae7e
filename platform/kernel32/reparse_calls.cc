// reparse_calls.cc
//
// CreateSymbolicLinkW, and the control code by which junctions and other reparse points are made.
#include <windows.h>
#include <winioctl.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "machine/access_check.h"
#include "machine/call.h"
#include "machine/directory_memory.h"
#include "machine/kernel_calls.h"
#include "machine/names.h"
#include "machine/open_files.h"
#include "machine/reparse_points.h"
#include "machine/token.h"

using namespace machine;

namespace {

// The start of a reparse buffer. Its own data begin at `kPlainData`, the names of a junction at
// `kJunctionNames`.
struct ReparseHeader {
  DWORD tag;
  WORD dataLength;
  WORD reserved;
  WORD substituteOffset, substituteLength, printOffset, printLength;  // in bytes, of a junction
};
constexpr size_t kPlainData = 8, kJunctionNames = 16;

std::u16string SubstituteName(const uint8_t* buffer, size_t size) {
  ReparseHeader header{};
  std::memcpy(&header, buffer, size < sizeof header ? size : sizeof header);
  size_t start = kJunctionNames + header.substituteOffset;
  if (start + header.substituteLength > size) return {};
  std::u16string name(header.substituteLength / 2, 0);
  std::memcpy(name.data(), buffer + start, name.size() * 2);
  return name;
}

// Puts a link in the place of the empty directory.
bool ExchangeForLink(Location& location, const std::string& text) {
  std::string temporary = location.name + ".norvane-link";
  const char* name = location.name.c_str();
  if (symlinkat(text.c_str(), location.parent, temporary.c_str()) != 0) return Fail(ErrorFromErrno(errno));
  bool isExchanged =
      renameat2(location.parent, temporary.c_str(), location.parent, name, RENAME_EXCHANGE) == 0;
  if (!isExchanged) {
    DWORD error = ErrorFromErrno(errno);
    unlinkat(location.parent, temporary.c_str(), 0);
    return Fail(error);
  }
  if (unlinkat(location.parent, temporary.c_str(), AT_REMOVEDIR) == 0) return true;
  DWORD error = ErrorFromErrno(errno);
  renameat2(location.parent, temporary.c_str(), location.parent, name, RENAME_EXCHANGE);
  unlinkat(location.parent, temporary.c_str(), 0);
  return Fail(error);
}

bool SetJunction(File& file, const uint8_t* buffer, size_t size) {
  std::u16string target = SubstituteName(buffer, size);
  if (!target.starts_with(u"\\??\\")) return Fail(ERROR_INVALID_REPARSE_DATA);
  Location location;
  FileFacts facts;
  if (!FindParent(file.Path(), location) || !LookUp(location, Links::kKeep, facts, false)) return false;
  if (!facts.IsDirectory()) return Fail(ERROR_DIRECTORY);
  if (!ExchangeForLink(location, LinkText(target, true, true))) return false;
  DropPinsThroughLinks();
  // From here on the handle stands for the link.
  Descriptor link(openat(location.parent, location.name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!link) return Fail(ErrorFromErrno(errno));
  *file.descriptor = std::move(link);
  return true;
}

// A tag that isn't a link's: the file keeps its content and shows the tag.
bool SetOther(File& file, DWORD tag, const uint8_t* buffer, size_t size) {
  std::vector<uint8_t> data(buffer + kPlainData, buffer + size);
  FileFacts facts;
  bool isDone =
      ReadFacts(file.Get(), "", facts) && WriteReparseData(file.Get(), "", tag, data) &&
      WriteAttributes(file.Get(), "", facts, facts.attributes | FILE_ATTRIBUTE_REPARSE_POINT, facts.created);
  file.hasAttributes = false;
  return isDone || Fail(ErrorFromErrno(errno));
}

bool SetReparsePoint(File& file, const uint8_t* buffer, size_t size) {
  if (!(file.access & (FILE_WRITE_DATA | FILE_WRITE_ATTRIBUTES))) return Fail(ERROR_ACCESS_DENIED);
  ReparseHeader header{};
  if (size < kPlainData) return Fail(ERROR_INVALID_REPARSE_DATA);
  std::memcpy(&header, buffer, kPlainData);
  if (kPlainData + header.dataLength != size) return Fail(ERROR_INVALID_REPARSE_DATA);
  if (header.tag == IO_REPARSE_TAG_MOUNT_POINT) return SetJunction(file, buffer, size);
  if (header.tag == IO_REPARSE_TAG_SYMLINK) {
    Unsupported("DeviceIoControl",
                "FSCTL_SET_REPARSE_POINT of a symbolic link; CreateSymbolicLinkW makes one");
  }
  return SetOther(file, header.tag, buffer, size);
}

}  // namespace

BOOLEAN WINAPI CreateSymbolicLinkW(LPCWSTR path, LPCWSTR targetPath, DWORD flags) {
  EnterCall();
  constexpr DWORD kUnprivileged = 2;  // SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE: in developer mode
  if (flags & ~(SYMBOLIC_LINK_FLAG_DIRECTORY | kUnprivileged)) return Fail(ERROR_INVALID_PARAMETER);
  if (!HasPrivilege(kCreateSymbolicLinkPrivilege)) return Fail(ERROR_PRIVILEGE_NOT_HELD);
  Location location;
  FileFacts present;
  if (!Locate("CreateSymbolicLinkW", Effect::kChanges, path, location)) return FALSE;
  if (LookUp(location, Links::kKeep, present, false)) return Fail(ERROR_ALREADY_EXISTS);
  if (GetLastError() != ERROR_FILE_NOT_FOUND || !MayAdd(location, FILE_ADD_FILE)) return FALSE;
  bool isDirectory = flags & SYMBOLIC_LINK_FLAG_DIRECTORY;
  std::string text = LinkText(reinterpret_cast<const char16_t*>(targetPath), isDirectory, false);
  DirectoryId parent = location.ParentId();
  OwnChange change;
  if (text.empty() || symlinkat(text.c_str(), location.parent, location.name.c_str()) != 0) {
    return Fail(text.empty() ? ERROR_INVALID_PARAMETER : ErrorFromErrno(errno));
  }
  change.Added(parent, location.path.Name());
  OwnChange::Settle(location.parent, parent);
  DropPinsThroughLinks();
  return TRUE;
}

BOOL WINAPI DeviceIoControl(HANDLE handle, DWORD code, LPVOID input, DWORD inputSize, LPVOID, DWORD,
                            LPDWORD returned, LPOVERLAPPED) {
  EnterCall();
  if (returned) *returned = 0;
  if (code != FSCTL_SET_REPARSE_POINT) Unsupported("DeviceIoControl", "this control code");
  std::shared_ptr<File> file = FileOf(handle);
  return file && !HasFault("DeviceIoControl", Effect::kChanges, file->Path()) && IsWritable(file->Drive()) &&
         SetReparsePoint(*file, static_cast<const uint8_t*>(input), inputSize);
}
