// Any bytes are a name on the disk, and a name that was shown finds its file again.
#include <string>

#include "fuzz_machine.h"
#include "machine/names.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string name(reinterpret_cast<const char*>(data), size);
  for (char& letter : name) {
    if (letter == '/' || letter == 0) letter = '_';
  }
  if (name.empty() || name == "." || name == "..") return 0;
  const std::u16string shown = machine::WindowsName(name);
  Require(machine::DiskName(shown) == name, "a name that was shown finds its file");
  Require(shown.find_first_of(u"\\/:*?\"<>|") == shown.npos, "Windows can spell each name that is shown");
  Require(machine::SameName(machine::Fold(shown), shown), "folding doesn't change which name it is");
  return 0;
}
