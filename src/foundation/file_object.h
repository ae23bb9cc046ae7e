// file_object.h
//
// A file that knows the encoding of its text. Every file that the program opens by itself goes
// through it.
#pragma once
#include "foundation/wstring.h"

enum : uint32_t {
  kFileKeepContent = 1,   // read and write, open or create; the position ends at the end of the file
  kFileCreateAlways = 2,  // read and write, any content goes
  kFileExclusive = 4,     // no sharing; without it others may read
  kFileMakeFolders = 8,   // first make the file's folder and its parents
  kFileRaw = 0x10,        // bytes: no byte order mark, no conversion
  kFileUtf16LE = 0x20,
  kFileUtf16BE = 0x40,
  kFileUtf8Mark = 0x80,
  kFileUtf8 = 0x100,  // without a byte order mark
};

class FileObject {
 public:
  HANDLE handle;   // INVALID_HANDLE_VALUE when closed
  uint32_t flags;  // the open flags; the encoding follows a byte order mark that was found

  FileObject();
  FileObject(const wchar_t* path, uint32_t openFlags);
  FileObject(const FileObject&) = delete;
  FileObject& operator=(const FileObject&) = delete;
  ~FileObject();

  // Closes any open file first. Without a flag: read only, the file must exist, text is in the ANSI
  // code page unless a mark says otherwise. `attributes` goes to CreateFileW as flags and
  // attributes. Gives the handle, or null with the reason in GetLastError().
  HANDLE Open(const wchar_t* path, uint32_t openFlags, uint32_t attributes = 0);
  void Close();
  bool IsOpen() const { return handle != INVALID_HANDLE_VALUE; }

  // The text from the current position on, decoded. Its length in units. 0 if there is none, with
  // NO_ERROR as the last error where the file was read and is empty, and otherwise the reason: a file
  // of 2 GiB or more is ERROR_FILE_TOO_LARGE. A zero unit in the file ends the text.
  int32_t ReadAllText(WString& output);

  // Encodes and writes `text` without its terminator. False for an empty text, too.
  bool WriteText(const wchar_t* text);

  bool Seek(int64_t distance, uint32_t origin);
};

// Makes the directory `path` and all its parents, through the long path prefix. True if it exists
// afterwards, otherwise the reason is in GetLastError(). Folders made on the way stay.
bool MakeDirectoryPath(const wchar_t* path);

// Makes the folder that the file `path` lies in. True if there is none to make.
bool MakeFolderOfFile(const wchar_t* path);

// `path` as it is, or with the long path prefix where the system's calls would find it too long.
WString PathForCalls(const wchar_t* path);
