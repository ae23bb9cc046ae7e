#include "support/place_root.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <system_error>

#include "machine/machine.h"
#include "support/test_place.h"

namespace {

// The place on the disk. Straight to the disk and not through the calls, since a test may have asked for
// faults or denied itself the access.
std::filesystem::path OnDisk(const WString& path) {
  std::string relative = Utf8(path).substr(3);
  for (char& letter : relative) {
    if (letter == '\\') letter = '/';
  }
  return std::filesystem::path(machine::ThisMachine().DriveFolder('C')) / relative;
}

}  // namespace

WString PlaceRoot() { return L"C:\\Test"; }

void RemovePlace(const WString& path) {
  // A test may go on to a machine of its own, which takes the folder with it.
  std::error_code error;
  std::filesystem::remove_all(OnDisk(path), error);
  if (error) ADD_FAILURE() << "left behind: " << Utf8(path) << ": " << error.message();
}

void MakeDirectoryLink(const WString& path, const WString& target) {
  std::error_code error;
  std::filesystem::create_directory_symlink(OnDisk(target), OnDisk(path), error);
  if (error) ADD_FAILURE() << "no link at " << Utf8(path) << ": " << error.message();
}
