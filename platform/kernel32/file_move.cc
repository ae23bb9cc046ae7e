// file_move.cc
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "machine/access_check.h"
#include "machine/call.h"
#include "machine/delete_entry.h"
#include "machine/faults.h"
#include "machine/kernel_calls.h"
#include "machine/machine.h"
#include "machine/open_file.h"
#include "machine/rename_entry.h"
#include "machine/reparse_points.h"

using namespace machine;

namespace {

// What is to be done at the next start of this machine: a line for each, the path and, behind a tab, the
// new one, which is missing for a delete.
BOOL DelayUntilRestart(const WindowsPath& from, const WindowsPath* to) {
  std::string file = ThisMachine().folder + "/pending-renames.txt";
  std::string line = from.Utf8();
  if (to) line += '\t' + to->Utf8();
  line += '\n';
  Descriptor descriptor(open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666));
  if (!descriptor) return Fail(ErrorFromErrno(errno));
  bool isWritten = write(descriptor.Get(), line.data(), line.size()) == static_cast<ssize_t>(line.size());
  return isWritten || Fail(ErrorFromErrno(errno));
}

constexpr size_t kLongestBlock = 1 << 20;

// Copies the content. False with the last error.
bool CopyContent(const File& source, const File& target, const volatile BOOL* cancel) {
  const size_t block = std::clamp<size_t>(source.facts.size, 1, kLongestBlock);
  auto buffer = std::make_unique_for_overwrite<char[]>(block);
  for (;;) {
    if (cancel && *cancel) return Fail(ERROR_REQUEST_ABORTED);
    ssize_t size = read(source.Get(), buffer.get(), block);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return Fail(ErrorFromErrno(errno));
    if (size == 0) return true;
    CountChange();
    auto room = static_cast<size_t>(TakeDiskSpace(static_cast<uint64_t>(size)));
    for (size_t written = 0; written < room;) {
      ssize_t part = write(target.Get(), buffer.get() + written, room - written);
      if (part < 0 && errno == EINTR) continue;
      if (part < 0) return Fail(ErrorFromErrno(errno));
      written += static_cast<size_t>(part);
    }
    if (room < static_cast<size_t>(size)) return Fail(ERROR_DISK_FULL);
  }
}

// The link itself, in the place of a link or of nothing.
bool CopyLink(Location& source, Location& target) {
  std::string text;
  FileFacts present;
  if (!ReadLink(source.parent, source.name.c_str(), text)) return Fail(ErrorFromErrno(errno));
  if (LookUp(target, Links::kKeep, present)) {
    if (!present.IsLink()) return Fail(ERROR_FILE_EXISTS);
    if (!MayRemove(target, present) || !RemoveEntry(target, present)) return false;
  }
  DirectoryId parent = target.ParentId();
  OwnChange change;
  if (symlinkat(text.c_str(), target.parent, target.name.c_str()) != 0) return Fail(ErrorFromErrno(errno));
  change.Added(parent, target.path.Name());
  return true;
}

// Attributes and the time of the last writing go along; the creation time is the new file's own.
bool CopyFacts(const FileFacts& facts, File& target) {
  CountChange();
  uint32_t attributes = facts.attributes & kSettableAttributes;
  bool isDone = target.hasAttributes && (target.facts.attributes & kSettableAttributes) == attributes;
  if (!isDone) {
    isDone = WriteAttributes(target.Get(), "", target.facts, attributes, target.facts.created);
  }
  return (isDone && WriteTimes(target.Get(), "", 0, facts.written)) || Fail(ErrorFromErrno(errno));
}

bool CopyPlain(Location source, const FileFacts& facts, Location target, const volatile BOOL* cancel,
               bool failsIfExists) {
  if (facts.IsDirectory()) return Fail(ERROR_ACCESS_DENIED);
  OpenRequest reading;
  reading.access = GENERIC_READ;
  reading.share = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  std::shared_ptr<File> from = OpenFileAt(std::move(source), reading);
  if (!from) return false;
  OpenRequest writing;
  writing.access = GENERIC_WRITE | DELETE;
  writing.disposition = failsIfExists ? CREATE_NEW : CREATE_ALWAYS;
  writing.attributes = facts.attributes & kSettableAttributes;
  std::shared_ptr<File> to = OpenFileAt(std::move(target), writing);
  if (!to) return false;
  // The two may be one file under two paths.
  if (to->facts.inode == from->facts.inode && to->facts.device == from->facts.device) {
    return Fail(ERROR_SHARING_VIOLATION);
  }
  to->deletesOnClose = true;  // until it is whole
  if (!CopyContent(*from, *to, cancel) || !CopyFacts(facts, *to)) {
    DWORD error = GetLastError();
    to.reset();
    return Fail(error);
  }
  to->deletesOnClose = false;
  return true;
}

}  // namespace

BOOL WINAPI MoveFileExW(LPCWSTR fromPath, LPCWSTR toPath, DWORD flags) {
  EnterCall();
  constexpr DWORD kKnown = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH | MOVEFILE_DELAY_UNTIL_REBOOT;
  if (flags & ~kKnown) Unsupported("MoveFileExW", "a flag");
  bool isDelayed = flags & MOVEFILE_DELAY_UNTIL_REBOOT;
  if (!toPath && !isDelayed) return Fail(ERROR_INVALID_PARAMETER);
  WindowsPath fromParsed, toParsed;
  if (!ParsePath(fromPath, fromParsed) || (toPath && !ParsePath(toPath, toParsed))) return FALSE;
  // Faults go by the new name, which is the one that matters to whoever looks for the file.
  if (HasFault("MoveFileExW", Effect::kChanges, toPath ? toParsed : fromParsed)) return FALSE;
  Location from, to;
  FileFacts facts;
  if (!FindParent(std::move(fromParsed), from) || !LookUp(from, Links::kKeep, facts, false)) return FALSE;
  if (isDelayed) return DelayUntilRestart(from.path, toPath ? &toParsed : nullptr);
  return FindParent(std::move(toParsed), to) &&
         RenameEntry(from, facts, to, flags & MOVEFILE_REPLACE_EXISTING);
}

BOOL WINAPI CopyFileExW(LPCWSTR fromPath, LPCWSTR toPath, LPPROGRESS_ROUTINE progress, LPVOID, LPBOOL cancel,
                        DWORD flags) {
  EnterCall();
  constexpr DWORD kKnown = COPY_FILE_FAIL_IF_EXISTS | COPY_FILE_COPY_SYMLINK | COPY_FILE_NO_BUFFERING;
  if (progress) Unsupported("CopyFileExW", "a progress routine");
  if (flags & ~kKnown) Unsupported("CopyFileExW", "a flag");
  Location source, target;
  FileFacts facts;
  WindowsPath toParsed;
  if (!ParsePath(toPath, toParsed) || HasFault("CopyFileExW", Effect::kChanges, toParsed)) return FALSE;
  WindowsPath fromParsed;
  if (!ParsePath(fromPath, fromParsed) || !FindParent(std::move(fromParsed), source)) return FALSE;
  bool copiesLink = flags & COPY_FILE_COPY_SYMLINK;
  if (!LookUp(source, copiesLink ? Links::kKeep : Links::kFollow, facts)) return FALSE;
  if (!FindParent(std::move(toParsed), target) || !IsWritable(target.path)) return FALSE;
  if (facts.IsLink()) return CopyLink(source, target);
  return CopyPlain(std::move(source), facts, std::move(target), cancel, flags & COPY_FILE_FAIL_IF_EXISTS);
}
