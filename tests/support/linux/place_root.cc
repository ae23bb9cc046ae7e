#include "support/place_root.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <system_error>

#include "support/host_path.h"
#include "support/test_place.h"

WString PlaceRoot() { return L"C:\\Test"; }

void RemovePlace(const WString& path) {
  // Straight on the disk and not through the calls, since a test may have asked for faults or denied itself
  // the access. A test may go on to a machine of its own, which takes the folder with it.
  std::error_code error;
  std::filesystem::remove_all(HostPath(path), error);
  if (error) ADD_FAILURE() << "left behind: " << Utf8(path) << ": " << error.message();
}

void MakeDirectoryLink(const WString& path, const WString& target) {
  std::error_code error;
  std::filesystem::create_directory_symlink(HostPath(target), HostPath(path), error);
  if (error) ADD_FAILURE() << "no link at " << Utf8(path) << ": " << error.message();
}
