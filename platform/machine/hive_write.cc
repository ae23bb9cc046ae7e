// How a hive reaches its file.
#include <fcntl.h>
#include <hivex.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "machine/call.h"
#include "machine/hive.h"
#include "machine/hive_file.h"
#include "machine/names.h"
#include "machine/settings_text.h"

namespace machine {
namespace {

constexpr size_t kMostAttributes = 65536;

// Attributes, times of creation and access lists lie in extended attributes, and the new file is to
// have those of the old one.
bool CopyExtendedAttributes(const std::string& from, const std::string& to) {
  std::string names(kMostAttributes, '\0'), value(kMostAttributes, '\0');
  const ssize_t length = listxattr(from.c_str(), names.data(), names.size());
  if (length < 0) return errno == ENOTSUP;
  for (ssize_t at = 0; at < length; at += static_cast<ssize_t>(strlen(names.data() + at) + 1)) {
    const char* name = names.data() + at;
    const ssize_t size = getxattr(from.c_str(), name, value.data(), value.size());
    if (size < 0 || setxattr(to.c_str(), name, value.data(), static_cast<size_t>(size), 0) != 0) return false;
  }
  return true;
}

bool Sync(const std::string& file) {
  const int handle = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (handle < 0) return false;
  const bool done = fdatasync(handle) == 0;
  close(handle);
  return done;
}

std::string Units(std::string_view text) {
  const std::u16string units = ToUtf16(text);
  return std::string(reinterpret_cast<const char*>(units.c_str()), (units.size() + 1) * 2);
}

}  // namespace

HivePlan& HivePlan::Key(std::string_view path) {
  const size_t end = std::min(path.find('\\'), path.size());
  const std::string_view first = path.substr(0, end);
  const std::string folded = FoldUtf8(first);
  size_t place = 0;
  while (place < keys.size() && FoldUtf8(keys[place].name) != folded) ++place;
  if (place == keys.size()) keys.push_back({std::string(first), {}, {}});
  return end == path.size() ? keys[place] : keys[place].Key(path.substr(end + 1));
}

void HivePlan::Text(std::string_view value, std::string_view text, uint32_t type) {
  values.push_back({std::string(value), type, Units(text)});
}

void HivePlan::Number(std::string_view value, uint32_t number) {
  values.push_back({std::string(value), REG_DWORD, std::string(reinterpret_cast<const char*>(&number), 4)});
}

void HivePlan::Binary(std::string_view value, std::string_view data, uint32_t type) {
  values.push_back({std::string(value), type, std::string(data)});
}

void Hive::TakeIdentity(int file) {
  struct stat status;
  if (fstat(file, &status) != 0) return;
  device_ = status.st_dev;
  number_ = status.st_ino;
  size_ = static_cast<uint64_t>(status.st_size);
  changeTime_ = static_cast<uint64_t>(status.st_mtim.tv_sec) * 1000000000u +
                static_cast<uint64_t>(status.st_mtim.tv_nsec);
}

DWORD Hive::Flush() {
  if (!isChanged_) return ERROR_SUCCESS;
  struct stat status;
  if (lstat(file_.c_str(), &status) != 0) return ErrorFromErrno(errno);
  const uint64_t time = static_cast<uint64_t>(status.st_mtim.tv_sec) * 1000000000u +
                        static_cast<uint64_t>(status.st_mtim.tv_nsec);
  if (!IsFile(status.st_dev, status.st_ino) || size_ != static_cast<uint64_t>(status.st_size) ||
      changeTime_ != time) {
    return ERROR_SHARING_VIOLATION;
  }
  const std::string temporary = file_ + ".new" + std::to_string(getpid());
  if (hivex_commit(hive_, temporary.c_str(), 0) != 0) {
    const DWORD error = ErrorFromErrno(errno);
    unlink(temporary.c_str());
    return error;
  }
  const bool done = chmod(temporary.c_str(), status.st_mode & 07777) == 0 &&
                    CopyExtendedAttributes(file_, temporary) && Sync(temporary) &&
                    rename(temporary.c_str(), file_.c_str()) == 0;
  if (!done) {
    const DWORD error = ErrorFromErrno(errno);
    unlink(temporary.c_str());
    return error;
  }
  isChanged_ = false;
  const int handle = open(file_.c_str(), O_RDONLY | O_CLOEXEC);
  TakeIdentity(handle);
  if (handle >= 0) close(handle);
  return ERROR_SUCCESS;
}

DWORD Hive::Make(const std::string& file, const HivePlan& plan) {
  const std::string temporary = file + ".new" + std::to_string(getpid());
  if (!ReplaceWholeFile(temporary, EmptyHive(), nullptr)) return ErrorFromErrno(errno);
  std::shared_ptr<Hive> hive;
  DWORD error = Open(temporary, true, hive);
  if (error == ERROR_SUCCESS) error = hive->Add(hive->Root(), plan);
  const bool isWritten = error == ERROR_SUCCESS && hivex_commit(hive->hive_, temporary.c_str(), 0) == 0 &&
                         rename(temporary.c_str(), file.c_str()) == 0;
  if (isWritten) return ERROR_SUCCESS;
  if (error == ERROR_SUCCESS) error = ErrorFromErrno(errno);
  unlink(temporary.c_str());
  return error;
}

}  // namespace machine
