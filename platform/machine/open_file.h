// open_file.h
//
// Opening and making files, for CreateFileW and for the calls that open files themselves.
#pragma once
#include <memory>

#include "machine/open_files.h"
#include "machine/path_resolution.h"

namespace machine {

struct OpenRequest {
  uint32_t access = 0;  // as given to CreateFileW, with generic rights
  uint32_t share = 0;
  uint32_t disposition = OPEN_EXISTING;
  uint32_t flags = 0;       // FILE_FLAG_…
  uint32_t attributes = 0;  // of a new file
};

// The file at `location`, opened or made. Null with the last error of CreateFileW. With success the last
// error is ERROR_ALREADY_EXISTS where CREATE_ALWAYS or OPEN_ALWAYS found the file, otherwise 0.
std::shared_ptr<File> OpenFileAt(Location location, const OpenRequest& request);

}  // namespace machine
