// path_resolution.cc
#include "machine/path_resolution.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>

#include "machine/call.h"
#include "machine/faults.h"
#include "machine/kernel_calls.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/reparse_points.h"

namespace machine {
namespace {

constexpr int kMostLinks = 63;
constexpr int kHold = O_PATH | O_DIRECTORY | O_CLOEXEC;

void Forget() {
  ForgetDirectories();
  ForgetDevices();
  SetCurrentFolder({});
}

std::shared_ptr<Descriptor> OpenDrive(const WindowsPath& path) {
  [[maybe_unused]] static const bool isAsked = (OnLeaveMachine(Forget), true);
  std::string folder = ThisMachine().DriveFolder(static_cast<char>(path.text[0]));
  int descriptor = folder.empty() ? -1 : open(folder.c_str(), kHold);
  if (descriptor < 0) {
    SetLastError(ERROR_PATH_NOT_FOUND);
    return nullptr;
  }
  return std::make_shared<Descriptor>(descriptor);
}

// `rest`, the names below the drive's folder with a '/' before each, as a Windows path.
std::u16string PathBelowDrive(char letter, std::string_view rest) {
  std::u16string result = {static_cast<char16_t>(letter), u':'};
  while (!rest.empty()) {
    const size_t start = rest.find_first_not_of('/');
    if (start == rest.npos) break;
    rest.remove_prefix(start);
    result += u'\\';
    result += WindowsName(rest.substr(0, rest.find('/')));
    rest.remove_prefix(std::min(rest.find('/'), rest.size()));
  }
  if (result.size() == 2) result += u'\\';
  return result;
}

enum class Step { kDone, kLink, kFailed };

// Opens the directory that `path`'s components from `first` up to the last but one name below `start`,
// one after the other. At a link `path` becomes where the whole leads, and `asked` keeps what it was.
Step WalkDown(const std::shared_ptr<Descriptor>& start, size_t first, WindowsPath& path,
              std::u16string& asked, std::shared_ptr<Descriptor>& parent) {
  parent = start;
  for (size_t i = first; i + 1 < path.Count(); ++i) {
    std::u16string_view component = path.Component(i);
    std::string name = DiskName(component);
    int next = OpenBelow(parent->Get(), name.c_str(), kHold);
    if (next < 0 && errno == ENOENT && FindVariant(parent->Get(), nullptr, component, name)) {
      next = OpenBelow(parent->Get(), name.c_str(), kHold);
    }
    if (next >= 0) {
      parent = std::make_shared<Descriptor>(next);
      continue;
    }
    int error = errno;
    std::string text;
    if (error == ELOOP && ReadLink(parent->Get(), name.c_str(), text)) {
      WindowsPath link = WindowsPath::FromText(path.text.substr(0, path.ends[i + 1]));
      WindowsPath target;
      if (LinkTarget(link, text, target)) {
        std::u16string rest = path.text.substr(path.ends[i + 1]);
        if (asked.empty()) asked = path.folded;
        if (target.IsRoot()) target.text.pop_back();
        path = WindowsPath::FromText(target.text + rest);
        return Step::kLink;
      }
      error = ENOENT;
    }
    SetLastError(error == ENOENT || error == ENOTDIR ? ERROR_PATH_NOT_FOUND : ErrorFromErrno(error));
    return Step::kFailed;
  }
  return Step::kDone;
}

// Opens the parent of `path` from `start`, which stands for its first `first` components.
Step OpenParent(const std::shared_ptr<Descriptor>& start, size_t first, WindowsPath& path,
                std::u16string& asked, std::shared_ptr<Descriptor>& parent) {
  if (first + 1 >= path.Count()) {
    parent = start;
    return Step::kDone;
  }
  std::string below;
  for (size_t i = first; i + 1 < path.Count(); ++i) {
    if (!below.empty()) below += '/';
    below += DiskName(path.Component(i));
  }
  int descriptor = OpenBelow(start->Get(), below.c_str(), kHold);
  if (descriptor >= 0) {
    parent = std::make_shared<Descriptor>(descriptor);
    return Step::kDone;
  }
  return WalkDown(start, first, path, asked, parent);
}

}  // namespace

const DirectoryId& Location::ParentId() {
  if (pin) return pin->id;
  if (id_ == DirectoryId{}) IdOf(parent, id_);
  return id_;
}

bool FindParent(WindowsPath path, Location& location) {
  for (;;) {
    size_t first = 0;
    location.pin = path.Count() > 1 ? LongestPin(path, path.Count() - 1, first) : nullptr;
    std::shared_ptr<Descriptor> start = location.pin ? location.pin->descriptor : OpenDrive(path);
    if (!start) return false;
    if (location.pin && location.pin->passedLink) location.passedLink = true;
    Step step = OpenParent(start, first, path, location.asked, location.holder);
    if (step == Step::kFailed) return false;
    if (step == Step::kLink) {
      location.passedLink = true;
      if (++location.links > kMostLinks) return Fail(ERROR_CANT_RESOLVE_FILENAME);
      continue;
    }
    if (location.holder != start) location.pin = nullptr;
    location.parent = location.holder->Get();
    location.name = path.IsRoot() ? "." : DiskName(path.Name());
    location.path = std::move(path);
    return !location.name.empty() || Fail(ERROR_INVALID_NAME);
  }
}

bool HasFault(const char* call, Effect effect, const WindowsPath& path) {
  if (!FaultsAreSet()) return false;
  return effect == Effect::kChanges ? FaultHitsChange(call, path.Utf8()) : FaultHits(call, path.Utf8());
}

bool IsWritable(char drive) {
  const Machine& machine = ThisMachine();
  bool isReadOnly = !machine.settings.readOnlyDrives.empty() && machine.IsReadOnlyDrive(drive);
  return !isReadOnly || Fail(ERROR_WRITE_PROTECT);
}

bool Locate(const char* call, Effect effect, const wchar_t* path, Location& location, PathUse use) {
  WindowsPath parsed;
  if (!ParsePath(path, parsed, use) || HasFault(call, effect, parsed)) return false;
  if (!FindParent(std::move(parsed), location)) return false;
  return effect == Effect::kReads || IsWritable(location.path);
}

bool TakeVariant(Location& location) {
  if (location.path.IsRoot()) return Fail(ERROR_FILE_NOT_FOUND);
  const DirectoryId* id = location.pin ? &location.pin->id : nullptr;
  std::string name;
  if (!FindVariant(location.parent, id, location.path.Name(), name)) return Fail(ErrorFromErrno(errno));
  location.name = name;
  return true;
}

bool FollowLink(Location& location) {
  std::string text;
  if (!ReadLink(location.parent, location.name.c_str(), text)) return Fail(ErrorFromErrno(errno));
  if (++location.links > kMostLinks) return Fail(ERROR_CANT_RESOLVE_FILENAME);
  WindowsPath target;
  if (!LinkTarget(location.path, text, target)) return Fail(ERROR_PATH_NOT_FOUND);
  target.wantsDirectory = location.path.wantsDirectory;
  Location next;
  next.passedLink = true;
  next.asked = location.asked.empty() ? location.path.folded : location.asked;
  next.links = location.links;
  if (!FindParent(std::move(target), next)) return false;
  location = std::move(next);
  return true;
}

bool LookUp(Location& location, Links links, FileFacts& facts, bool withAttributes) {
  for (;;) {
    const char* name = location.name.c_str();
    if (!ReadStatus(location.parent, name, facts)) {
      if (errno != ENOENT) return Fail(ErrorFromErrno(errno));
      if (!TakeVariant(location)) return false;
      name = location.name.c_str();
      if (!ReadStatus(location.parent, name, facts)) return Fail(ErrorFromErrno(errno));
    }
    if (facts.IsLink() && links == Links::kFollow) {
      if (!FollowLink(location)) return false;
      continue;
    }
    if (withAttributes && !ReadAttributes(location.parent, name, facts)) {
      return Fail(ErrorFromErrno(errno));
    }
    return true;
  }
}

std::u16string PathOfDisk(const std::string& linuxPath) {
  const Machine& here = ThisMachine();
  char letter = 0;
  size_t longest = 0;
  const auto look = [&](char drive, const std::string& base) {
    if (base.size() <= longest || !linuxPath.starts_with(base)) return;
    if (base.size() < linuxPath.size() && linuxPath[base.size()] != '/') return;
    letter = drive;
    longest = base.size();
  };
  // The drive inside the machine folder is no link, so that its letter stands in the path.
  if (const size_t at = here.folder.size() + 1; linuxPath.size() > at && linuxPath[at - 1] == '/') {
    const char drive = linuxPath[at];
    if (drive >= 'A' && drive <= 'Z' && !here.IsAttachedDrive(drive)) look(drive, here.DriveFolder(drive));
  }
  for (const auto& [drive, folder] : here.settings.drives) {
    look(drive, here.DriveFolder(drive));
    // The folder may itself be named by way of a link.
    char* real = realpath(folder.c_str(), nullptr);
    if (real) look(drive, real);
    free(real);
  }
  return letter ? PathBelowDrive(letter, std::string_view(linuxPath).substr(longest)) : std::u16string();
}

std::u16string PathOfDescriptor(int descriptor) {
  std::string path;
  std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  struct stat status;
  if (fstat(descriptor, &status) != 0 || status.st_nlink == 0) return {};
  return ReadLink(AT_FDCWD, link.c_str(), path) ? PathOfDisk(path) : std::u16string();
}

}  // namespace machine
