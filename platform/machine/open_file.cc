// open_file.cc
#include "machine/open_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <mutex>

#include "machine/access_check.h"
#include "machine/call.h"

namespace machine {
namespace {

constexpr uint32_t kReadData = FILE_READ_DATA | FILE_EXECUTE;
constexpr uint32_t kWriteData = FILE_WRITE_DATA | FILE_APPEND_DATA;
constexpr uint32_t kAlwaysKept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

// One open on its way.
class Opening {
 public:
  Opening(Location location, const OpenRequest& request) : location_(std::move(location)), request_(request) {
    access_ = MapGenericRights(request.access);
    if (request.flags & FILE_FLAG_DELETE_ON_CLOSE) access_ |= DELETE;
    isBackup_ = request.flags & FILE_FLAG_BACKUP_SEMANTICS;
    keepsLink_ = request.flags & FILE_FLAG_OPEN_REPARSE_POINT;
    empties_ = request.disposition == CREATE_ALWAYS || request.disposition == TRUNCATE_EXISTING;
  }

  std::shared_ptr<File> Run();

 private:
  enum class Outcome { kDone, kMissing, kFailed };

  Outcome OpenExisting();
  Outcome MakeNew();
  bool SetUpNew(Descriptor& descriptor);
  Outcome Descend();
  int KernelFlags() const;
  bool MayOpenFound();
  bool LockAgainstOthers(bool& isGone);
  bool Empty();
  void Finish(Descriptor descriptor);
  void PinIfItKeepsItsPlace();

  Location location_;
  const OpenRequest& request_;
  uint32_t access_;
  bool isBackup_, keepsLink_, empties_;
  FileFacts facts_;
  std::shared_ptr<File> file_;
};

int Opening::KernelFlags() const {
  constexpr int kAlways = O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  bool writes = (access_ & kWriteData) || empties_;
  if (writes) {
    bool appends = (access_ & kWriteData) == FILE_APPEND_DATA && !empties_;
    return kAlways | O_RDWR | (appends ? O_APPEND : 0);
  }
  if (access_ & (kReadData | FILE_WRITE_ATTRIBUTES)) return kAlways | O_RDONLY;
  return O_PATH | O_NOFOLLOW | O_CLOEXEC;
}

// Opens what is there, of any kind, behind links.
Opening::Outcome Opening::Descend() {
  int flags = KernelFlags();
  for (;;) {
    int descriptor = openat(location_.parent, location_.name.c_str(), flags);
    if (descriptor < 0 && errno == ENOENT) {
      if (!TakeVariant(location_)) {
        return GetLastError() == ERROR_FILE_NOT_FOUND ? Outcome::kMissing : Outcome::kFailed;
      }
      continue;
    }
    if (descriptor < 0 && errno == EISDIR) {
      flags = (flags & ~(O_ACCMODE | O_APPEND)) | O_RDONLY;
      continue;
    }
    if (descriptor < 0 && errno == ELOOP) {
      if (keepsLink_) {
        flags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
      } else if (!FollowLink(location_)) {
        return Outcome::kFailed;
      }
      continue;
    }
    if (descriptor < 0) {
      SetLastError(ErrorFromErrno(errno));
      return Outcome::kFailed;
    }
    Descriptor opened(descriptor);
    if (!ReadStatus(descriptor, "", facts_)) {
      SetLastError(ErrorFromErrno(errno));
      return Outcome::kFailed;
    }
    if (facts_.IsLink() && !keepsLink_) {
      if (!FollowLink(location_)) return Outcome::kFailed;
      continue;
    }
    Finish(std::move(opened));
    return Outcome::kDone;
  }
}

Opening::Outcome Opening::OpenExisting() {
  Outcome outcome = Descend();
  if (outcome != Outcome::kDone) return outcome;
  if (MayOpenFound() && EnterOpenFile(file_.get()) && (!empties_ || Empty())) return Outcome::kDone;
  // Another process may have deleted it since it was found.
  bool isGone = GetLastError() == ERROR_FILE_NOT_FOUND;
  file_ = nullptr;
  return isGone ? Outcome::kMissing : Outcome::kFailed;
}

// Sets up the file object; whether it may be opened comes later.
void Opening::Finish(Descriptor descriptor) {
  file_ = std::make_shared<File>();
  file_->descriptor = std::make_shared<Descriptor>(std::move(descriptor));
  file_->access = access_;
  file_->share = request_.share;
  file_->flags = request_.flags;
  file_->facts = facts_;
  file_->isReparsePoint = keepsLink_ && facts_.IsLink();
  file_->passedLink = location_.passedLink;
  file_->isSizeFixed = !(access_ & kWriteData) && !(request_.share & FILE_SHARE_WRITE);
}

bool Opening::MayOpenFound() {
  if (facts_.IsDirectory()) {
    if (!isBackup_) return Fail(ERROR_ACCESS_DENIED);
    if (empties_) return Fail(ERROR_FILE_EXISTS);
  } else if (location_.path.wantsDirectory) {
    return Fail(ERROR_INVALID_NAME);
  } else if (!facts_.IsPlain() && !facts_.IsLink()) {
    return Fail(ERROR_NOT_SUPPORTED);  // a device, a pipe or a socket of Linux
  }
  uint32_t wanted = access_ | SYNCHRONIZE | FILE_READ_ATTRIBUTES;
  if (empties_) wanted |= FILE_WRITE_DATA;
  bool changes = (wanted & kWriteData) || (request_.flags & FILE_FLAG_DELETE_ON_CLOSE);
  if (changes && !IsWritable(location_.path)) return false;
  if (changes && !facts_.IsDirectory()) {
    if (!ReadAttributes(location_.parent, location_.name.c_str(), facts_)) {
      return Fail(ErrorFromErrno(errno));
    }
    file_->facts = facts_;
    file_->hasAttributes = true;
    if (facts_.attributes & FILE_ATTRIBUTE_READONLY) return Fail(ERROR_ACCESS_DENIED);
    // Hidden and system files are only replaced by such.
    uint32_t lost = facts_.attributes & ~request_.attributes & kAlwaysKept;
    if (request_.disposition == CREATE_ALWAYS && lost != 0) return Fail(ERROR_ACCESS_DENIED);
  }
  return facts_.IsLink() || MayOpen(location_, wanted, isBackup_);
}

// A file that is opened for oneself alone and goes with its handle is how programs keep each other out.
// This table knows one process only, so the kernel's lock holds it for others. `isGone` is set if it was
// deleted before it was locked.
bool Opening::LockAgainstOthers(bool& isGone) {
  if (request_.share != 0 || !(request_.flags & FILE_FLAG_DELETE_ON_CLOSE)) return true;
  if (flock(file_->Get(), LOCK_EX | LOCK_NB) != 0) {
    return Fail(errno == EWOULDBLOCK ? ERROR_SHARING_VIOLATION : ErrorFromErrno(errno));
  }
  FileFacts now;
  isGone = !ReadStatus(file_->Get(), "", now) || now.links == 0;
  return !isGone;
}

bool Opening::Empty() {
  int descriptor = file_->Get();
  if (facts_.size != 0 && ftruncate(descriptor, 0) != 0) return Fail(ErrorFromErrno(errno));
  file_->facts.size = 0;
  if (request_.disposition != CREATE_ALWAYS) return true;
  uint32_t attributes = (request_.attributes & kSettableAttributes) | FILE_ATTRIBUTE_ARCHIVE;
  if (attributes == (facts_.attributes & kSettableAttributes)) return true;
  file_->facts.attributes = attributes;
  return WriteAttributes(descriptor, "", facts_, attributes, facts_.created) || Fail(ErrorFromErrno(errno));
}

Opening::Outcome Opening::MakeNew() {
  auto failed = [](DWORD error) {
    SetLastError(error);
    return Outcome::kFailed;
  };
  if (location_.path.IsRoot()) return failed(ERROR_ACCESS_DENIED);
  if (location_.path.wantsDirectory) return failed(ERROR_INVALID_NAME);
  if (!IsWritable(location_.path) || !MayAdd(location_, FILE_ADD_FILE)) return Outcome::kFailed;
  if (request_.disposition == CREATE_NEW &&
      !(location_.pin && IsKnownAbsent(location_.pin->id, location_.path.Name()))) {
    FileFacts present;
    if (LookUp(location_, Links::kKeep, present, false)) return failed(ERROR_FILE_EXISTS);
    if (GetLastError() != ERROR_FILE_NOT_FOUND) return Outcome::kFailed;
  }
  DirectoryId parent = location_.ParentId();
  const char* name = location_.name.c_str();
  OwnChange change;
  Descriptor descriptor(openat(location_.parent, name, (KernelFlags() & ~O_PATH) | O_CREAT | O_EXCL, 0666));
  if (!descriptor) return failed(errno == EEXIST ? ERROR_FILE_EXISTS : ErrorFromErrno(errno));
  change.Added(parent, location_.path.Name());
  if (SetUpNew(descriptor)) return Outcome::kDone;
  file_ = nullptr;
  // Whoever was quicker to open it has it by now.
  if (GetLastError() == ERROR_SHARING_VIOLATION) return Outcome::kFailed;
  OwnChange removal;
  if (unlinkat(location_.parent, name, 0) == 0) removal.Removed(parent, location_.path.Name());
  return Outcome::kFailed;
}

bool Opening::SetUpNew(Descriptor& descriptor) {
  if (!ReadStatus(descriptor.Get(), "", facts_)) return Fail(ErrorFromErrno(errno));
  facts_.attributes = (request_.attributes & kSettableAttributes) | FILE_ATTRIBUTE_ARCHIVE;
  if (facts_.attributes != FILE_ATTRIBUTE_ARCHIVE &&
      !WriteAttributes(descriptor.Get(), "", facts_, facts_.attributes, facts_.created)) {
    return Fail(ErrorFromErrno(errno));
  }
  if (!InheritSecurity(location_, false)) return false;
  Finish(std::move(descriptor));
  file_->hasAttributes = true;
  return EnterOpenFile(file_.get());
}

void Opening::PinIfItKeepsItsPlace() {
  constexpr uint32_t kTakesPart = kReadData | kWriteData | DELETE;
  bool keeps = facts_.IsDirectory() && (access_ & kTakesPart) && !(request_.share & FILE_SHARE_DELETE);
  if (!keeps || location_.path.IsRoot()) return;
  DirectoryId id{facts_.device, facts_.inode};
  file_->pin = PinDirectory(file_->descriptor, location_.path.folded, id, location_.passedLink);
  if (location_.asked.size() > 3) {
    file_->pinAsAsked = PinDirectory(file_->descriptor, location_.asked, id, true);
  }
}

// A walk holds several directories for each level of a tree, and trees are deep.
void RaiseFileLimit() {
  rlimit limit;
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  rlimit wanted = {std::max<rlim_t>(limit.rlim_max, 65536), std::max<rlim_t>(limit.rlim_max, 65536)};
  if (setrlimit(RLIMIT_NOFILE, &wanted) == 0) return;  // more than the hard limit is for root
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

std::shared_ptr<File> Opening::Run() {
  static std::once_flag isRaised;
  std::call_once(isRaised, RaiseFileLimit);
  constexpr int kMostTries = 8;  // something else makes and deletes the file all the time
  bool mayMake = request_.disposition != OPEN_EXISTING && request_.disposition != TRUNCATE_EXISTING;
  bool mayExist = request_.disposition != CREATE_NEW;
  for (int tries = 0; tries < kMostTries; ++tries) {
    Outcome outcome = mayExist ? OpenExisting() : Outcome::kMissing;
    bool isFound = outcome == Outcome::kDone;
    if (outcome == Outcome::kMissing && mayMake) {
      outcome = MakeNew();
      if (outcome == Outcome::kFailed && mayExist && GetLastError() == ERROR_FILE_EXISTS) continue;
    }
    if (outcome == Outcome::kMissing) SetLastError(ERROR_FILE_NOT_FOUND);
    if (outcome != Outcome::kDone) return nullptr;
    bool isGone = false;
    if (!LockAgainstOthers(isGone)) {
      file_ = nullptr;
      if (isGone) continue;
      return nullptr;
    }
    PinIfItKeepsItsPlace();
    file_->deletesOnClose = request_.flags & FILE_FLAG_DELETE_ON_CLOSE;
    file_->SetPath(std::move(location_.path));
    SetLastError(isFound && mayMake ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return file_;
  }
  SetLastError(ERROR_SHARING_VIOLATION);
  return nullptr;
}

}  // namespace

std::shared_ptr<File> OpenFileAt(Location location, const OpenRequest& request) {
  return Opening(std::move(location), request).Run();
}

}  // namespace machine
