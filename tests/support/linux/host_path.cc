#include "support/host_path.h"

#include "machine/machine.h"
#include "support/test_place.h"

std::string HostPath(const WString& path) {
  const std::string text = Utf8(path);
  std::string relative = text.substr(2);
  for (char& letter : relative) {
    if (letter == '\\') letter = '/';
  }
  return machine::ThisMachine().DriveFolder(text[0]) + relative;
}
