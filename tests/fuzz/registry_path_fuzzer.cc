// A registry path can be any text. It is taken apart within bounds, and no text but a root's own opens
// anything.
#include "foundation/registry.h"
#include "foundation/unique_handle.h"
#include "fuzz_machine.h"
#include "machine/names.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzDrive();
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::u16string units = machine::ToUtf16(text.substr(0, text.find('\0')));
  WString path(machine::AsWide(units));
  REGSAM access = KEY_READ;
  const HKEY root = ParseRegistryPath(path, access);
  const WString whole(machine::AsWide(units));
  Require(path.Length() <= whole.Length(), "what is left is no longer than the whole");
  const UniqueKey key(OpenKey(whole.CStr(), KEY_READ));
  Require(root != nullptr || !key, "nothing is opened without a root");
  Require(!key || KeyExists(whole.CStr()), "a key that can be opened exists");
  WString value;
  if (key) QueryStringValue(key.Get(), whole.CStr(), value);
  return 0;
}
