// windows_path.cc
#include "machine/windows_path.h"

#include <algorithm>
#include <array>
#include <mutex>

#include "machine/call.h"
#include "machine/machine.h"
#include "machine/names.h"

namespace machine {
namespace {

struct CurrentFolderText {
  std::mutex lock;
  std::u16string folder;
};
CurrentFolderText& Current() {
  static CurrentFolderText& current = *new CurrentFolderText;
  return current;
}

constexpr size_t kLongestPath = 32767;
constexpr size_t kLongestName = 255;

bool IsSlash(char16_t unit) { return unit == u'\\' || unit == u'/'; }
bool IsLetter(char16_t unit) { return (unit | 0x20) >= u'a' && (unit | 0x20) <= u'z'; }
bool HasDrive(std::u16string_view path) { return path.size() >= 2 && path[1] == u':' && IsLetter(path[0]); }

// Old device names stand for the device in each folder, with any extension.
bool IsDeviceName(std::u16string_view name) {
  size_t length = name.find_first_of(u".:");
  if (length == name.npos) length = name.size();
  while (length > 0 && name[length - 1] == u' ') --length;
  std::u16string folded = Fold(name.substr(0, length));
  if (folded == u"CON" || folded == u"PRN" || folded == u"AUX" || folded == u"NUL" || folded == u"CONIN$" ||
      folded == u"CONOUT$") {
    return true;
  }
  return folded.size() == 4 && (folded.starts_with(u"COM") || folded.starts_with(u"LPT")) &&
         folded[3] >= u'1' && folded[3] <= u'9';
}

bool IsName(std::u16string_view name) {
  return !name.empty() && name.size() <= kLongestName && name != u"." && name != u"..";
}

enum class Kind : uint8_t { kPlain, kBackslash, kWildcard, kRefused };

// What each unit below 0x80 is in a path behind its drive; all others are plain.
constexpr auto kKinds = [] {
  std::array<Kind, 0x80> kinds = {};
  for (size_t unit = 0; unit < 0x20; ++unit) kinds[unit] = Kind::kRefused;
  for (char16_t unit : {u'"', u'<', u'>', u'|', u'/'}) kinds[unit] = Kind::kRefused;
  kinds[u':'] = Kind::kRefused;  // a stream of a file: this machine has none
  kinds[u'*'] = kinds[u'?'] = Kind::kWildcard;
  kinds[u'\\'] = Kind::kBackslash;
  return kinds;
}();

// The parts of `tail` put behind `base`, of which the first `root` units always stay.
std::u16string Join(std::u16string base, std::u16string_view tail, size_t root = 2) {
  while (!tail.empty()) {
    size_t end = 0;
    while (end < tail.size() && !IsSlash(tail[end])) ++end;
    std::u16string_view part = tail.substr(0, end);
    tail.remove_prefix(end < tail.size() ? end + 1 : end);
    if (part.empty() || part == u".") continue;
    if (part == u"..") {
      size_t cut = base.rfind(u'\\');
      if (cut != base.npos && cut >= root) base.resize(cut);
      continue;
    }
    // A dot at the end of a folder on the way goes, too; of the last component all dots and blanks.
    if (!tail.empty()) {
      if (part.back() == u'.') part.remove_suffix(1);
    } else {
      while (!part.empty() && (part.back() == u'.' || part.back() == u' ')) part.remove_suffix(1);
    }
    if (part.empty()) continue;
    base += u'\\';
    base += part;
  }
  return base;
}

std::u16string Root(char16_t letter) { return {static_cast<char16_t>(letter & ~0x20), u':'}; }

// Splits a clean text and folds it, in one go: each call that takes a path comes through here. False if a
// component can't be a name.
bool Split(WindowsPath& path, bool lastMayHoldWildcards) {
  constexpr size_t kUsualDepth = 16;
  path.ends.reserve(kUsualDepth);
  path.ends.assign(1, 2);
  path.folded = path.text;
  const size_t size = path.folded.size();
  char16_t* folded = path.folded.data();
  for (size_t i = 0; i < std::min<size_t>(size, 3); ++i) folded[i] = FoldUnit(folded[i]);
  if (size <= 3) return true;
  bool hasWildcards = false;
  size_t start = 3;
  auto endComponent = [&](size_t end) {
    if (!IsName(std::u16string_view(path.text).substr(start, end - start))) return false;
    path.ends.push_back(static_cast<uint32_t>(end));
    start = end + 1;
    return true;
  };
  for (size_t i = 3; i < size; ++i) {
    char16_t unit = folded[i];
    Kind kind = unit < kKinds.size() ? kKinds[unit] : Kind::kPlain;
    if (kind == Kind::kPlain) [[likely]] {
      folded[i] = FoldUnit(unit);
    } else if (kind == Kind::kRefused) {
      return false;
    } else if (kind == Kind::kWildcard) {
      hasWildcards = true;
    } else if (hasWildcards || !endComponent(i)) {
      return false;
    }
  }
  return endComponent(size) && (!hasWildcards || lastMayHoldWildcards);
}

bool ParseExact(std::u16string_view path, WindowsPath& result, PathUse use) {
  if (path.size() >= 4 && Fold(path.substr(0, 4)) == u"UNC\\") return Fail(ERROR_BAD_NETPATH);
  if (!HasDrive(path)) return Fail(ERROR_PATH_NOT_FOUND);
  if (path.size() > 2 && path[2] != u'\\') return Fail(ERROR_INVALID_NAME);
  result.text = path;
  result.text[0] = Root(path[0])[0];
  result.wantsDirectory = path.size() > 3 && path.back() == u'\\';
  if (result.wantsDirectory) result.text.pop_back();
  if (result.text.size() == 2) result.text += u'\\';
  return Split(result, use == PathUse::kPattern) || Fail(ERROR_INVALID_NAME);
}

}  // namespace

std::u16string_view WindowsPath::Component(size_t index) const {
  size_t start = ends[index] + 1;
  return std::u16string_view(text).substr(start, ends[index + 1] - start);
}

std::u16string_view WindowsPath::Folded(size_t components) const {
  return std::u16string_view(folded).substr(0, ends[components]);
}

std::string WindowsPath::Utf8() const { return ToUtf8(text); }

WindowsPath WindowsPath::FromText(std::u16string text) {
  WindowsPath path;
  path.text = std::move(text);
  Split(path, true);  // a pattern, where a link led on to the folder that it is in
  return path;
}

void SetCurrentFolder(std::u16string folder) {
  std::lock_guard hold(Current().lock);
  Current().folder = std::move(folder);
}

std::u16string CurrentFolder() {
  {
    std::lock_guard hold(Current().lock);
    if (!Current().folder.empty()) return Current().folder;
  }
  std::u16string folder = ToUtf16(ThisMachine().settings.programPath);
  size_t cut = folder.rfind(u'\\');
  if (cut == folder.npos || !HasDrive(folder)) return Root(ThisMachine().settings.systemDrive) + u'\\';
  folder.resize(cut);
  return folder.size() == 2 ? folder + u'\\' : folder;
}

std::u16string FullPath(std::u16string_view path) {
  std::u16string result;
  bool isServer = path.size() >= 2 && IsSlash(path[0]) && IsSlash(path[1]);
  if (isServer) {
    // The server and its share stand for the drive; "\\?\" and "\\.\" keep what follows them.
    size_t end = path.find_first_of(u"\\/", 2);
    bool isDevice = path.size() >= 4 && (path[2] == u'?' || path[2] == u'.') && IsSlash(path[3]);
    size_t rootEnd = end == path.npos ? path.size() : path.find_first_of(u"\\/", end + 1);
    if (rootEnd == path.npos) rootEnd = path.size();
    result = path.substr(0, rootEnd);
    for (char16_t& unit : result) unit = unit == u'/' ? u'\\' : unit;
    std::u16string_view tail = path.substr(rootEnd);
    result = Join(std::move(result), tail, rootEnd);
    if (isDevice && result.size() == rootEnd && !tail.empty()) result += u'\\';
  } else if (HasDrive(path)) {
    bool isRelative = path.size() < 3 || !IsSlash(path[2]);
    std::u16string base = Root(path[0]);
    std::u16string current = isRelative ? CurrentFolder() : std::u16string();
    if (isRelative && Fold(current).starts_with(base)) base = current.size() > 3 ? current : base;
    result = Join(std::move(base), path.substr(2));
    result[0] = path[0];
    if (result.size() == 2) return result + u'\\';
  } else {
    std::u16string current = CurrentFolder();
    if (!path.empty() && IsSlash(path[0])) current.resize(2);
    if (current.size() == 3) current.resize(2);
    result = Join(std::move(current), path);
    if (result.size() == 2) return result + u'\\';
  }
  if (!path.empty() && IsSlash(path.back()) && result.back() != u'\\') result += u'\\';
  return result;
}

bool ParsePath(const wchar_t* path, WindowsPath& result, PathUse use) {
  std::u16string_view text = path ? reinterpret_cast<const char16_t*>(path) : u"";
  if (text.empty()) return Fail(ERROR_PATH_NOT_FOUND);
  if (text.size() > kLongestPath) return Fail(ERROR_FILENAME_EXCED_RANGE);
  if (text.starts_with(u"\\\\?\\") || text.starts_with(u"\\??\\")) {
    return ParseExact(text.substr(4), result, use);
  }
  std::u16string full = FullPath(text);
  if (full.starts_with(u"\\\\.\\") || full.starts_with(u"\\\\?\\")) return Fail(ERROR_FILE_NOT_FOUND);
  if (full.starts_with(u"\\\\")) return Fail(ERROR_BAD_NETPATH);
  if (use == PathUse::kNewDirectory && full.size() >= MAX_PATH - 12) {
    return Fail(ERROR_FILENAME_EXCED_RANGE);
  }
  if (full.size() >= MAX_PATH) return Fail(ERROR_PATH_NOT_FOUND);
  result.wantsDirectory = full.size() > 3 && full.back() == u'\\';
  if (result.wantsDirectory) full.pop_back();
  full[0] = Root(full[0])[0];
  result.text = std::move(full);
  if (!Split(result, use == PathUse::kPattern)) return Fail(ERROR_INVALID_NAME);
  if (!result.IsRoot() && IsDeviceName(result.Name())) return Fail(ERROR_INVALID_NAME);
  return true;
}

}  // namespace machine
