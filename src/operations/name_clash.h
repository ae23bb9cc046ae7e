// name_clash.h
//
// Two names of a source folder that are one place at the target: names that differ in case alone, which a
// case-sensitive folder may hold, and the short name of one file as the name of another. The first one gets
// the place; the other is told, and neither replaces nor removes it.
#pragma once
#include <cstdint>
#include <vector>

#include "operations/copy_walk.h"

// The names of a folder so far, four bytes each.
class SeenNames {
 public:
  // Whether a name was seen that may be the same but for its case. Now and then that is true of one that
  // isn't; it never is false of one that is.
  bool Add(const wchar_t* name);

 private:
  bool Put(uint32_t hash);

  std::vector<uint32_t> slots_;  // 0 where there is none
  uint32_t count_ = 0;
};

// Whether what stands at the place of an entry, if anything, is another entry's: it bears a name that is
// not just this one in another case, or the source has two such names.
bool IsClash(const FileInHand& file, const OperationContext& context);

// Tells that the place of the file is another one's.
void ReportClash(const FileInHand& file, OperationContext& context);
