// directory_memory.h
//
// What is remembered of directories, so that looking for a name in another case costs no reading of the
// directory: a hash of each folded name. Exact names are always asked of the kernel; this is for the
// question behind it, which every new file raises: is there one that differs in case alone?
//
// It holds for as long as the directory's change time is what this process left it at. Our own creates,
// deletes and renames keep it true. Since one of those could hide a change that another program made a
// moment before, what we changed is read anew once in a while (a second, or fifty times what reading it
// takes). What is remembered is bounded; a directory that was dropped is read again when asked about.
#pragma once
#include <time.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace machine {

struct DirectoryId {
  uint64_t device = 0;
  uint64_t inode = 0;
  bool operator==(const DirectoryId&) const = default;
};

// False with errno if the descriptor's directory can't be asked.
bool IdOf(int directory, DirectoryId& id);

// The entry of `directory` that is `name` without regard to case, as it is spelled on the disk. False if
// there is none (errno ENOENT) or the directory can't be read (another errno). No call of the kernel is
// made where `id` is given and the directory was looked at a moment ago (2 ms).
bool FindVariant(int directory, const DirectoryId* id, std::u16string_view name, std::string& diskName);

// True if the directory was looked at a moment ago and holds the name in no case. Makes no call of the
// kernel; false means to ask.
bool IsKnownAbsent(const DirectoryId& id, std::u16string_view name);

// Stands around a call of ours that adds or removes names: the directory's change time moves to a moment
// between the two, and what is remembered goes on to hold. A change that another program makes within the
// same few milliseconds hides behind that, until the next reading; with `Settle` it doesn't.
class OwnChange {
 public:
  OwnChange();
  void Added(const DirectoryId& id, std::u16string_view name) const { Note(id, name, {}); }
  void Removed(const DirectoryId& id, std::u16string_view name) const { Note(id, {}, name); }
  void Renamed(const DirectoryId& from, std::u16string_view oldName, const DirectoryId& to,
               std::u16string_view newName) const;

  // Behind one of the above: asks the kernel for the change time, one call more. For changes that don't
  // come by the thousand.
  static void Settle(int directory, const DirectoryId& id);

 private:
  void Note(const DirectoryId& id, std::u16string_view added, std::u16string_view removed) const;
  timespec before_;
};

void ForgetDirectories();

// How many directories were read for their names since the process began, for tests.
uint64_t DirectoryReadings();

}  // namespace machine
