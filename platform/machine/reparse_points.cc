// reparse_points.cc
#include "machine/reparse_points.h"

#include <cerrno>
#include <cstring>

#include "machine/kernel_calls.h"
#include "machine/machine.h"
#include "machine/names.h"

namespace machine {
namespace {

constexpr char kReparseData[] = "user.norvane.reparse";
constexpr char kNtfsReparseData[] = "system.ntfs_reparse_data";  // begins with the tag, too
constexpr std::string_view kJunctionMark = "\\??\\";

bool IsSlash(char unit) { return unit == '/' || unit == '\\'; }
bool HasDrive(std::string_view text) {
  return text.size() >= 2 && text[1] == ':' && (text[0] | 0x20) >= 'a' && (text[0] | 0x20) <= 'z' &&
         (text.size() == 2 || IsSlash(text[2]));
}

// The text without its mark, if it is a path of Windows with a drive.
std::string_view DrivePath(std::string_view text) {
  if (text.starts_with(kJunctionMark) || text.starts_with("\\\\?\\")) text.remove_prefix(4);
  return HasDrive(text) ? text : std::string_view();
}

bool IsWindowsText(std::string_view text) {
  return text.find('\\') != text.npos && text.find('/') == text.npos;
}

// Takes "." and ".." out of a path of Linux, by its text alone.
std::string CleanDiskPath(std::string_view path) {
  std::string result;
  while (!path.empty()) {
    size_t end = path.find('/');
    std::string_view part = path.substr(0, end);
    path.remove_prefix(end == path.npos ? path.size() : end + 1);
    if (part.empty() || part == ".") continue;
    if (part == "..") {
      size_t cut = result.rfind('/');
      result.resize(cut == result.npos ? 0 : cut);
      continue;
    }
    result += '/';
    result += part;
  }
  return result;
}

bool ParseTarget(const std::u16string& text, WindowsPath& target) {
  if (text.empty()) return false;
  return ParsePath(AsWide(u"\\\\?\\" + text), target);
}

}  // namespace

bool LinkTarget(const WindowsPath& link, const std::string& text, WindowsPath& target) {
  if (std::string_view path = DrivePath(text); !path.empty()) {
    return ParseTarget(FullPath(ToUtf16(path)), target);
  }
  if (text.starts_with("\\\\") || link.IsRoot()) return false;  // a server, which this machine can't reach
  std::u16string folder = link.text.substr(0, link.ends[link.Count() - 1]);  // "C:" where it is the root
  if (IsWindowsText(text)) {
    std::u16string base = text[0] == '\\' ? folder.substr(0, 2) : folder;
    return ParseTarget(FullPath(base + u'\\' + ToUtf16(text)), target);
  }
  std::string path;
  if (text[0] != '/') {
    path = ThisMachine().DriveFolder(static_cast<char>(folder[0]));
    for (size_t i = 0; i + 1 < link.Count(); ++i) path += '/' + DiskName(link.Component(i));
    path += '/';
  }
  return ParseTarget(PathOfDisk(CleanDiskPath(path + text)), target);
}

std::string LinkText(std::u16string_view target, bool isDirectory, bool isJunction) {
  std::string text;
  std::u16string_view path = target;
  if (path.starts_with(u"\\??\\") || path.starts_with(u"\\\\?\\")) path.remove_prefix(4);
  std::string plain = ToUtf8(path);
  if (HasDrive(plain) || isJunction || plain.starts_with("\\")) {
    text = isJunction ? std::string(kJunctionMark) + plain : plain;
    if (isDirectory && !isJunction && !IsSlash(text.back())) text += '\\';
    return text;
  }
  while (!path.empty()) {
    size_t end = path.find_first_of(u"\\/");
    std::u16string_view part = path.substr(0, end);
    path.remove_prefix(end == path.npos ? path.size() : end + 1);
    if (part.empty()) continue;
    if (!text.empty()) text += '/';
    text += DiskName(part);
  }
  return isDirectory ? text + '/' : text;
}

uint32_t DescribeReparsePoint(const Location& location, FileFacts& facts) {
  if (!(facts.attributes & FILE_ATTRIBUTE_REPARSE_POINT)) return 0;
  uint32_t tag = 0;
  std::vector<uint8_t> data;
  if (!facts.IsLink()) return ReadReparseData(location.parent, location.name.c_str(), tag, data) ? tag : 0;
  // An NTFS driver shows other reparse points as links, too; the disk has their real tag.
  bool hasTag = ReadReparseData(location.parent, location.name.c_str(), tag, data);
  std::string text;
  if (!ReadLink(location.parent, location.name.c_str(), text)) return hasTag ? tag : 0;
  bool isJunction = text.starts_with(kJunctionMark);
  bool isDirectory = isJunction || IsSlash(text.back());
  if (!isDirectory) {
    Location target = location;
    FileFacts targetFacts;
    DWORD error = GetLastError();
    isDirectory = LookUp(target, Links::kFollow, targetFacts, false) && targetFacts.IsDirectory();
    SetLastError(error);
  }
  if (isDirectory) facts.attributes |= FILE_ATTRIBUTE_DIRECTORY;
  if (hasTag) return tag;
  return isJunction ? IO_REPARSE_TAG_MOUNT_POINT : IO_REPARSE_TAG_SYMLINK;
}

bool ReadReparseData(int directory, const char* name, uint32_t& tag, std::vector<uint8_t>& data) {
  for (const char* attribute : {kReparseData, kNtfsReparseData}) {
    data.resize(MAXIMUM_REPARSE_DATA_BUFFER_SIZE);
    ssize_t size = GetAttribute(directory, name, attribute, data.data(), data.size());
    if (size < 4) continue;
    std::memcpy(&tag, data.data(), 4);
    data.erase(data.begin() + size, data.end());
    data.erase(data.begin(), data.begin() + 4);
    return true;
  }
  return false;
}

bool WriteReparseData(int directory, const char* name, uint32_t tag, const std::vector<uint8_t>& data) {
  std::vector<uint8_t> value(4 + data.size());
  std::memcpy(value.data(), &tag, 4);
  if (!data.empty()) std::memcpy(value.data() + 4, data.data(), data.size());
  return SetAttribute(directory, name, kReparseData, value.data(), value.size()) == 0;
}

}  // namespace machine
