// kernel_calls.cc
#include "machine/kernel_calls.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace machine {
namespace {

// Kernel 6.13 and later; older headers don't have them.
constexpr long kSetAttributeAt = 463, kGetAttributeAt = 464;
struct AttributeArguments {
  uint64_t value;
  uint32_t size;
  uint32_t flags;
};
std::atomic<bool> hasAttributesAt{true};

// The road of older kernels: the directory's descriptor has a name in /proc.
class ProcPath {
 public:
  ProcPath(int directory, const char* name) {
    if (directory == AT_FDCWD || name[0] == '/') {
      std::snprintf(text_, sizeof text_, "%s", name);
    } else if (name[0] == 0) {
      std::snprintf(text_, sizeof text_, "/proc/self/fd/%d", directory);
    } else {
      std::snprintf(text_, sizeof text_, "/proc/self/fd/%d/%s", directory, name);
    }
  }
  const char* Get() const { return text_; }

 private:
  char text_[PATH_MAX];
};

bool IsGone() {
  if (errno != ENOSYS) return false;
  hasAttributesAt = false;
  return true;
}

}  // namespace

ssize_t GetAttribute(int directory, const char* name, const char* attribute, void* value, size_t size) {
  if (name[0] == 0) {
    ssize_t result = fgetxattr(directory, attribute, value, size);
    if (result >= 0 || errno != EBADF) return result;
    return getxattr(ProcPath(directory, name).Get(), attribute, value, size);
  }
  if (hasAttributesAt) {
    AttributeArguments arguments{reinterpret_cast<uint64_t>(value), static_cast<uint32_t>(size), 0};
    long result = syscall(kGetAttributeAt, directory, name, AT_SYMLINK_NOFOLLOW, attribute, &arguments,
                          sizeof arguments);
    if (result >= 0 || !IsGone()) return result;
  }
  return lgetxattr(ProcPath(directory, name).Get(), attribute, value, size);
}

int SetAttribute(int directory, const char* name, const char* attribute, const void* value, size_t size) {
  if (name[0] == 0) {
    int result = fsetxattr(directory, attribute, value, size, 0);
    if (result == 0 || errno != EBADF) return result;
    return setxattr(ProcPath(directory, name).Get(), attribute, value, size, 0);
  }
  if (hasAttributesAt) {
    AttributeArguments arguments{reinterpret_cast<uint64_t>(value), static_cast<uint32_t>(size), 0};
    long result = syscall(kSetAttributeAt, directory, name, AT_SYMLINK_NOFOLLOW, attribute, &arguments,
                          sizeof arguments);
    if (result >= 0 || !IsGone()) return static_cast<int>(result);
  }
  return lsetxattr(ProcPath(directory, name).Get(), attribute, value, size, 0);
}

int OpenBelow(int directory, const char* path, int flags) {
  open_how how{};
  how.flags = static_cast<uint64_t>(flags | O_CLOEXEC);
  how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
  long result;
  do {
    result = syscall(SYS_openat2, directory, path, &how, sizeof how);
  } while (result < 0 && (errno == EAGAIN || errno == EINTR));
  return static_cast<int>(result);
}

int Stat(int directory, const char* name, struct statx& result) {
  int flags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | (name[0] == 0 ? AT_EMPTY_PATH : 0);
  return statx(directory, name, flags, STATX_BASIC_STATS | STATX_BTIME, &result);
}

bool ReadLink(int directory, const char* name, std::string& text) {
  text.resize(256);
  for (;;) {
    ssize_t length = readlinkat(directory, name, text.data(), text.size());
    if (length < 0) return false;
    if (static_cast<size_t>(length) < text.size()) {
      text.resize(static_cast<size_t>(length));
      return true;
    }
    text.resize(text.size() * 2);
  }
}

int RenameNew(int fromDirectory, const char* from, int toDirectory, const char* to) {
  int result = renameat2(fromDirectory, from, toDirectory, to, RENAME_NOREPLACE);
  if (result == 0 || (errno != EINVAL && errno != ENOSYS)) return result;
  // Some mounts can't do it in one step.
  struct statx present;
  if (Stat(toDirectory, to, present) == 0) {
    errno = EEXIST;
    return -1;
  }
  return renameat(fromDirectory, from, toDirectory, to);
}

namespace {
constexpr size_t kReadSize = 32768;
struct KernelEntry {
  uint64_t inode;
  int64_t offset;
  uint16_t length;
  uint8_t type;
  char name[];
};
}  // namespace

bool DirectoryReader::Open(int directory, const char* name) {
  descriptor_ = openat(directory, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  return descriptor_ >= 0;
}

DirectoryReader::~DirectoryReader() {
  if (descriptor_ >= 0) close(descriptor_);
  std::free(buffer_);
}

const char* DirectoryReader::Next() {
  for (;;) {
    if (position_ >= filled_) {
      if (!buffer_) buffer_ = static_cast<char*>(std::malloc(kReadSize));
      long size = buffer_ ? syscall(SYS_getdents64, descriptor_, buffer_, kReadSize) : -1;
      error_ = size < 0 ? errno : 0;
      if (size <= 0) return nullptr;
      position_ = 0;
      filled_ = static_cast<size_t>(size);
    }
    auto* entry = reinterpret_cast<KernelEntry*>(buffer_ + position_);
    position_ += entry->length;
    const char* name = entry->name;
    if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0))) continue;
    return name;
  }
}

}  // namespace machine
