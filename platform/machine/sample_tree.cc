#include "machine/sample_tree.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "machine/descriptor.h"
#include "machine/file_attributes.h"
#include "machine/names.h"
#include "machine/reparse_points.h"

namespace machine {
namespace {

constexpr time_t kFirstTime = 1262304000;               // 2010-01-01
constexpr uint64_t kSpanOfTimes = 14ull * 365 * 86400;  // fourteen years from there

uint64_t Next(uint64_t& state) {
  state ^= state << 13;
  state ^= state >> 7;
  return state ^= state << 17;
}

std::string Content(uint64_t seed, uint64_t size) {
  std::string bytes((size + 7) & ~7ull, '\0');
  for (size_t at = 0; at < bytes.size(); at += 8) {
    const uint64_t number = Next(seed);
    memcpy(bytes.data() + at, &number, 8);
  }
  bytes.resize(size);
  return bytes;
}

void SetTime(const std::string& disk, std::string_view name) {
  const uint64_t number = SampleNumber(name);
  const timespec time = {static_cast<time_t>(kFirstTime + number % kSpanOfTimes),
                         static_cast<long>(number >> 20 & 0xFFFFF) * 100};
  const timespec times[] = {time, time};
  utimensat(AT_FDCWD, disk.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

bool WriteAll(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

}  // namespace

uint64_t SampleNumber(std::string_view text) {
  uint64_t number = 14695981039346656037ull;
  for (const char c : text) number = (number ^ static_cast<unsigned char>(c)) * 1099511628211ull;
  Next(number);
  return number | 1;
}

std::string SampleTree::Disk(std::string_view path) const {
  std::string disk = folder_ + "/" + std::string(path.substr(0, 1));
  for (size_t start = 3; start < path.size();) {
    const size_t end = std::min(path.find('\\', start), path.size());
    disk += "/" + DiskName(ToUtf16(path.substr(start, end - start)));
    start = end + 1;
  }
  return disk;
}

void SampleTree::Fail(const std::string& disk, const char* what) {
  if (failure_.empty()) failure_ = "\"" + disk + "\" " + what + ": " + strerror(errno) + ".";
}

bool SampleTree::MakeParent(const std::string& disk) {
  const std::string parent = disk.substr(0, disk.rfind('/'));
  if (parent == lastParent_) return true;
  std::vector<std::string> missing;
  struct stat status;
  for (std::string at = parent; lstat(at.c_str(), &status) != 0; at.resize(at.rfind('/')))
    missing.push_back(at);
  for (auto folder = missing.rbegin(); folder != missing.rend(); ++folder) {
    if (mkdir(folder->c_str(), 0777) != 0) {
      Fail(*folder, "can't be made");
      return false;
    }
    folders_.push_back(*folder);
  }
  lastParent_ = parent;
  return true;
}

void SampleTree::SetAttributes(const std::string& disk, uint32_t attributes) {
  FileFacts facts;
  if (!ReadStatus(AT_FDCWD, disk.c_str(), facts) ||
      !WriteAttributes(AT_FDCWD, disk.c_str(), facts, attributes, 0)) {
    Fail(disk, "can't be given its attributes");
  }
}

void SampleTree::Folder(std::string_view path, uint32_t attributes) {
  const std::string disk = Disk(path);
  if (!failure_.empty() || !MakeParent(disk + "/x")) return;
  if (attributes != 0) SetAttributes(disk, attributes);
}

void SampleTree::Write(std::string_view path, std::string_view bytes, uint32_t attributes) {
  const std::string disk = Disk(path);
  if (!failure_.empty() || !MakeParent(disk)) return;
  const Descriptor file(open(disk.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666));
  if (!file || !WriteAll(file.Get(), bytes)) return Fail(disk, "can't be written");
  if (attributes != 0) SetAttributes(disk, attributes | FILE_ATTRIBUTE_ARCHIVE);
  SetTime(disk, path);
  ++files_;
  bytes_ += bytes.size();
}

void SampleTree::File(std::string_view path, uint64_t size, uint32_t attributes) {
  Write(path, Content(SampleNumber(path), size), attributes);
}

void SampleTree::Text(std::string_view path, std::string_view text, uint32_t attributes) {
  Write(path, text, attributes);
}

void SampleTree::Junction(std::string_view path, std::string_view target) {
  const std::string disk = Disk(path);
  if (!failure_.empty() || !MakeParent(disk)) return;
  const std::string text = LinkText(ToUtf16(target), true, true);
  if (symlink(text.c_str(), disk.c_str()) != 0) return Fail(disk, "can't be made as a link");
  SetTime(disk, path);
}

bool SampleTree::Finish(std::string* error) {
  // A folder's time moves with each entry that is made in it, so they come last.
  for (auto folder = folders_.rbegin(); folder != folders_.rend(); ++folder) {
    SetTime(*folder, std::string_view(*folder).substr(folder_.size()));
  }
  if (error) *error = failure_;
  return failure_.empty();
}

}  // namespace machine
