// open_files.cc
#include "machine/open_files.h"

#include <algorithm>
#include <unordered_map>

#include "machine/call.h"
#include "machine/delete_entry.h"
#include "machine/names.h"
#include "machine/path_resolution.h"

namespace machine {
namespace {

struct IdHash {
  size_t operator()(const DirectoryId& id) const { return id.inode * 0x9E3779B97F4A7C15 ^ id.device; }
};

struct OpenTable {
  std::mutex lock;
  std::unordered_multimap<DirectoryId, File*, IdHash> files;
};

// Never destructed: threads may still call while the process ends.
OpenTable& Table() {
  static OpenTable& table = *new OpenTable;
  return table;
}

DirectoryId IdOf(const FileFacts& facts) { return {facts.device, facts.inode}; }

constexpr uint32_t kReading = FILE_READ_DATA | FILE_EXECUTE;
constexpr uint32_t kWriting = FILE_WRITE_DATA | FILE_APPEND_DATA;

// A handle that asks for none of the three neither minds others nor is minded.
bool TakesPart(const File& file) { return file.access & (kReading | kWriting | DELETE); }

bool LetsIn(const File& open, const File& other) {
  return (!(other.access & kReading) || (open.share & FILE_SHARE_READ)) &&
         (!(other.access & kWriting) || (open.share & FILE_SHARE_WRITE)) &&
         (!(other.access & DELETE) || (open.share & FILE_SHARE_DELETE));
}

}  // namespace

WindowsPath File::Path() const {
  std::lock_guard hold(lock_);
  return path_;
}

char File::Drive() const {
  std::lock_guard hold(lock_);
  return static_cast<char>(path_.text[0]);
}

void File::SetPath(WindowsPath path) {
  std::lock_guard hold(lock_);
  path_ = std::move(path);
}

File::~File() {
  {
    std::lock_guard hold(Table().lock);
    auto [first, last] = Table().files.equal_range(IdOf(facts));
    auto entry = std::find_if(first, last, [&](const auto& one) { return one.second == this; });
    if (entry != last) Table().files.erase(entry);
  }
  if (deletesOnClose) DeleteOpened(*this);
}

bool EnterOpenFile(File* file) {
  OpenTable& table = Table();
  std::lock_guard hold(table.lock);
  auto [first, last] = table.files.equal_range(IdOf(file->facts));
  if (TakesPart(*file)) {
    for (auto i = first; i != last; ++i) {
      const File& other = *i->second;
      if (TakesPart(other) && (!LetsIn(other, *file) || !LetsIn(*file, other))) {
        return Fail(ERROR_SHARING_VIOLATION);
      }
    }
  }
  table.files.emplace(IdOf(file->facts), file);
  return true;
}

bool SharesDelete(const FileFacts& facts) {
  std::lock_guard hold(Table().lock);
  auto [first, last] = Table().files.equal_range(IdOf(facts));
  return std::all_of(first, last, [](const auto& one) {
    return !TakesPart(*one.second) || (one.second->share & FILE_SHARE_DELETE);
  });
}

bool IsOpen(const FileFacts& facts) {
  std::lock_guard hold(Table().lock);
  return Table().files.contains(IdOf(facts));
}

bool HasOpenBelow(const WindowsPath& directory) {
  std::u16string start = directory.folded + u'\\';
  std::lock_guard hold(Table().lock);
  return std::any_of(Table().files.begin(), Table().files.end(), [&](const auto& one) {
    const File& file = *one.second;
    // What was reached by way of a link lies elsewhere than its path says.
    std::u16string real = file.passedLink ? Fold(PathOfDescriptor(file.Get())) : std::u16string();
    return real.starts_with(start) || file.Path().folded.starts_with(start);
  });
}

void MoveOpenFiles(const FileFacts& facts, const WindowsPath& path) {
  std::lock_guard hold(Table().lock);
  auto [first, last] = Table().files.equal_range(IdOf(facts));
  for (auto i = first; i != last; ++i) i->second->SetPath(path);
}

}  // namespace machine
