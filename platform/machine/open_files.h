// open_files.h
//
// What a handle of a file or directory holds, and the table of all of them by the file's identity, which
// keeps the rules of sharing within this process.
#pragma once
#include <windows.h>

#include <memory>
#include <mutex>
#include <string>

#include "machine/file_attributes.h"
#include "machine/handles.h"
#include "machine/pinned_directories.h"
#include "machine/windows_path.h"

namespace machine {

class File : public Object {
 public:
  std::shared_ptr<Descriptor> descriptor;
  uint32_t access = 0;  // FILE_… and standard rights, no generic ones
  uint32_t share = 0;
  uint32_t flags = 0;           // FILE_FLAG_… of the open
  FileFacts facts;              // as the open found them; without attributes
  bool isSizeFixed = false;     // nobody but this handle may write, and it hasn't
  bool hasAttributes = false;   // whether `facts` holds attributes and creation time, too
  bool isReparsePoint = false;  // opened as such: a link, or FILE_FLAG_OPEN_REPARSE_POINT
  bool deletesOnClose = false;
  bool passedLink = false;
  // Of a directory that this handle keeps in its place: under its real path, and under the one that was
  // asked for where that leads through links.
  std::shared_ptr<PinnedDirectory> pin, pinAsAsked;

  ~File() override;

  int Get() const { return descriptor->Get(); }
  bool IsDirectory() const { return facts.IsDirectory(); }

  // Its path, which a rename in this process changes under an open handle.
  WindowsPath Path() const;
  char Drive() const;  // of the path
  void SetPath(WindowsPath path);

 private:
  mutable std::mutex lock_;
  WindowsPath path_;
};

// Enters an open file whose fields are set. False with ERROR_SHARING_VIOLATION if another handle and
// this one don't let each other.
bool EnterOpenFile(File* file);

// Whether the file may be deleted or renamed as far as open handles go.
bool SharesDelete(const FileFacts& facts);
bool IsOpen(const FileFacts& facts);

// Whether a file or directory below this one is open, which keeps it from being renamed.
bool HasOpenBelow(const WindowsPath& directory);

// The open handles of a file that was renamed go on under its new path.
void MoveOpenFiles(const FileFacts& facts, const WindowsPath& path);

// The file behind a handle; null with ERROR_INVALID_HANDLE.
inline std::shared_ptr<File> FileOf(HANDLE handle) { return HandleTo<File>(handle); }

}  // namespace machine
