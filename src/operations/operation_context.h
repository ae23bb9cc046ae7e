// operation_context.h
//
// The record that ties the thread of an operation to whoever started it. A screen or the console fills
// it, a worker runs on it, and nothing else is shared between the two: the starter sets `stop` and
// polls `progress` and the thread's handle.
#pragma once
#include <windows.h>

#include <atomic>
#include <cstdint>

#include "foundation/file_object.h"
#include "foundation/ini_document.h"
#include "foundation/wstring_array.h"
#include "operations/file_placement.h"

class AppObject;
struct OperationContext;

enum : uint32_t {
  kCopyOnlyNewer = 1,    // only new and outdated files
  kCopyOnlyMissing = 2,  // only files that are missing at the target; wins over kCopyOnlyNewer
};

enum OperationKind : int32_t {
  kBackupOperation = 0,
  kRestoreOperation = 1,
  kRestoreFromOperation = 2,
  kCopyMoveOperation = 3,
};

enum class OperationOutcome : int32_t { kNotStarted, kStopped, kFailures, kComplete };

enum : uint32_t { kCopyBufferSize = 0x200000 };

// Told on the worker's thread, between two files. Null members are passed over.
struct OperationObserver {
  void* owner = nullptr;  // handed back to the functions
  void (*phaseBegins)(void* owner, const wchar_t* source, const wchar_t* target) = nullptr;
  void (*copyingBegins)(void* owner, int64_t items, int64_t bytes) = nullptr;  // counting has ended
  // What the system has held back goes to the target's disk now, which may take minutes.
  void (*flushBegins)(void* owner) = nullptr;
  // `text` is the log's line, `error` the system's code, 0 where there is none.
  void (*itemFailed)(void* owner, const wchar_t* text, uint32_t error) = nullptr;
  void (*ended)(void* owner, OperationOutcome outcome) = nullptr;
};

struct OperationContext {
  std::atomic<LONG> stop;  // 1 ends the run; one aligned word, whose address CopyFileExW reads
  AppObject* app;
  uint32_t copyOptions;
  uint32_t attributeMask;                      // files with any of these attributes are left out
  std::atomic<int32_t> progress;               // per mille of the tree in hand
  int32_t kind;                                // OperationKind
  double sourceVersion;                        // Windows version of the source, 0.0 where it doesn't matter
  HWND firstLine, secondLine, bar, thirdLine;  // null on the console
  std::atomic<int64_t> itemsDone, itemsTotal;  // directory entries of the tree in hand
  std::atomic<int64_t> errors;                 // of the whole operation
  std::atomic<int64_t> bytesDone, bytesTotal;  // file bytes of the tree in hand
  int64_t sourceTime, targetValue;             // scratch of the update test
  IniDocument* document;                       // the selection; owned by whoever fills the record
  uint8_t* copyBuffer;                         // owned here, made with new[]
  uint32_t copyBufferSize;
  FileObject sourceFile, targetFile;
  bool moveFiles;

  // What a run tells.
  std::atomic<int64_t> failures;      // every item that failed, each with its line in the log
  std::atomic<int64_t> linksSkipped;  // links and junctions left out
  std::atomic<int64_t> filesCopied;   // of the whole operation
  std::atomic<int64_t> bytesCopied;   // of the whole operation
  OperationOutcome outcome;           // set by the worker as its last act
  bool targetFull;                    // the target's disk was full at least once
  Patience patience;                  // left for waiting in vain for files in use
  bool logFailed;                     // at least one line couldn't be written to the log
  WStringArray createdAccounts;       // those that a restore has made; they have no password
  // Accounts of the source that a restore may make administrators, because a person said so. Null: none.
  const WStringArray* administrators;
  // Targets of extra folders, as the document has them, that a person chose although a restore doesn't write
  // there of its own accord. Null: none.
  const WStringArray* chosenPlaces;
  const OperationObserver* observer;  // null in screens

  OperationContext();
  OperationContext(const OperationContext&) = delete;
  OperationContext& operator=(const OperationContext&) = delete;
  ~OperationContext();  // frees `copyBuffer`, closes the files, leaves `document` alone
};

// Start routines of CreateThread with the record as parameter. A null record or a record without an
// `app` gives 0 and does nothing. The starter doesn't read the exit code.
DWORD WINAPI BackupEntry(void* context);
DWORD WINAPI RestoreEntry(void* context);  // for both kinds of restore
DWORD WINAPI CopyMoveEntry(void* context);
