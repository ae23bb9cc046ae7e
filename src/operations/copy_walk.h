// copy_walk.h
//
// What both copy paths have in common: the walk through source and target side by side, with progress,
// the stop flag, and what is told of links and of folders that can't be read or made.
#pragma once
#include "operations/operation_context.h"
#include "operations/walk_path.h"

// A file that the walk has come to. Both paths are those of the file.
struct FileInHand {
  const WIN32_FIND_DATAW& entry;
  int64_t size;
  const WalkPath& source;
  const WalkPath& target;
  int32_t targetFolderLength;  // of the target's folder in `target`
  WalkPath& temporary;         // scratch: the path of the file in the making
  bool& isFolderProven;        // the target's folder was looked at with something in it
  bool& needsSweep;            // to be set where something is left in the target's folder
  bool isFolderNew;            // this walk has made the target's folder; all in it comes from the source
  bool mayHaveTwin;            // the source's folder may have the name in another case, too; see SeenNames

  // To be asked when the file in the making stands: whether the target's folder is still itself.
  bool IsTargetFolderIntact();

  // Removes the file in the making.
  void DropTemporary();
};

struct CopyMethod {
  // Makes one directory of the target (`isNew`), or finds it there. False with the reason in
  // GetLastError(). Whether what is there is a directory and no link, the walk looks at itself.
  bool (*makeDirectory)(const wchar_t* source, const wchar_t* target, bool& isNew);
  // Whether a directory stays out; `depth` is that of the folder that holds it, 0 for the root. May be
  // null.
  bool (*isLeftOut)(const wchar_t* name, uint32_t depth);
  // Copies or moves the file; tells of its failures itself.
  void (*transferFile)(FileInHand& file, OperationContext& context);
};

// False if the target's directory or one below it couldn't be made. `depth` is that of the root.
bool CopyTree(const wchar_t* source, const wchar_t* target, OperationContext& context,
              const CopyMethod& method, uint32_t depth = 0);

// Both raise a counter and work out `context.progress` anew.
void CountItemDone(OperationContext& context);
void CountBytesDone(OperationContext& context, int64_t bytes);

// A whole file has got to its place.
void CountFileCopied(OperationContext& context, int64_t bytes);

inline bool IsStopped(const OperationContext& context) {
  return context.stop.load(std::memory_order_relaxed) != 0;
}
