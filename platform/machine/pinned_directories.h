// pinned_directories.h
//
// Directories that a handle keeps in their place. On Windows a directory that is open without
// FILE_SHARE_DELETE can't be renamed or deleted, nor can one above it, so its path keeps its meaning for
// as long as the handle is open. Paths below it are resolved from its descriptor.
#pragma once
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "machine/descriptor.h"
#include "machine/directory_memory.h"
#include "machine/windows_path.h"

namespace machine {

class PinnedDirectory : public std::enable_shared_from_this<PinnedDirectory> {
 public:
  std::shared_ptr<Descriptor> descriptor;
  std::u16string folded;  // its path
  DirectoryId id;
  bool passedLink = false;  // a link stands in its path, which could be exchanged

  ~PinnedDirectory();

  // Its security descriptor, read once; empty if it has none.
  std::vector<uint8_t> Security();
  void ForgetSecurity();

 private:
  std::mutex lock_;
  std::optional<std::vector<uint8_t>> security_;
};

// The directory is pinned until the last owner of what this gives lets go.
std::shared_ptr<PinnedDirectory> PinDirectory(std::shared_ptr<Descriptor> descriptor,
                                              std::u16string_view folded, DirectoryId id, bool passedLink);

// Of the first `most` components of a path, as many as a pinned directory stands for; their number goes
// to `components`. Null if none does.
std::shared_ptr<PinnedDirectory> LongestPin(const WindowsPath& path, size_t most, size_t& components);

// A link was made, deleted or renamed by this process: paths that passed one are resolved anew.
void DropPinsThroughLinks();

// The access list of this directory was changed by this process.
void ForgetPinnedSecurity(const DirectoryId& id);

}  // namespace machine
