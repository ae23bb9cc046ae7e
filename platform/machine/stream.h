// stream.h
//
// The standard streams of this process behind handles. ReadFile, WriteFile and GetFileType take them,
// beside files.
#pragma once
#include "machine/handles.h"

namespace machine {

struct Stream : Object {
  int descriptor;  // 0, 1 or 2; never closed
  explicit Stream(int descriptor) : descriptor(descriptor) {}
};

// Writes all of it, whatever the pieces in which the system takes it. False with the last error set.
bool WriteAll(const Stream& stream, const void* bytes, size_t count);

}  // namespace machine
