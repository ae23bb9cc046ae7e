// Where the file of a hive lies on the disk, and whether it may be changed.
#include <unistd.h>

#include <climits>

#include "machine/hive_store.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/path_resolution.h"

namespace machine {

DWORD LocateHiveFile(const wchar_t* path, std::string& file, bool& isWritable) {
  WindowsPath parsed;
  Location location;
  FileFacts facts;
  if (!ParsePath(path, parsed) || !FindParent(std::move(parsed), location)) return GetLastError();
  if (!LookUp(location, Links::kFollow, facts, false) && GetLastError() != ERROR_FILE_NOT_FOUND) {
    return GetLastError();
  }
  // A path of its own, since the hive is written long after this descriptor is closed.
  char parent[PATH_MAX];
  const std::string link = "/proc/self/fd/" + std::to_string(location.parent);
  const ssize_t length = readlink(link.c_str(), parent, sizeof parent);
  if (length <= 0 || length == PATH_MAX) return ERROR_PATH_NOT_FOUND;
  const std::string folder(parent, static_cast<size_t>(length));
  file = folder + "/" + location.name;

  const Machine& here = ThisMachine();
  const char drive = static_cast<char>(location.path.text[0]);
  isWritable = !here.IsAttachedDrive(drive) && !here.IsReadOnlyDrive(drive) &&
               (folder + "/").starts_with(here.folder + "/");
  return ERROR_SUCCESS;
}

}  // namespace machine
