#include "support/set_reader.h"

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/utf8_points.h"

namespace set_reader {
namespace {

namespace fs = std::filesystem;

std::string Utf8Of(const fs::path& path) {
  const std::u8string text = path.generic_u8string();
  return std::string(text.begin(), text.end());
}
fs::path PathOf(const std::string& utf8) { return fs::path(std::u8string(utf8.begin(), utf8.end())); }

std::string ReadFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

// UTF-16 of either order, without its mark, as UTF-8. A lone surrogate becomes three bytes.
std::string FromUtf16(const std::string& bytes, bool isLittleEndian) {
  const auto unit = [&](size_t at) {
    const auto first = static_cast<uint8_t>(bytes[at]), second = static_cast<uint8_t>(bytes[at + 1]);
    return static_cast<uint32_t>(isLittleEndian ? first | second << 8 : first << 8 | second);
  };
  std::string text;
  for (size_t at = 2; at + 1 < bytes.size(); at += 2) {
    uint32_t point = unit(at);
    const bool isHigh = (point & 0xfc00) == 0xd800;
    if (isHigh && at + 3 < bytes.size() && (unit(at + 2) & 0xfc00) == 0xdc00) {
      point = 0x10000 + ((point & 0x3ff) << 10 | (unit(at + 2) & 0x3ff));
      at += 2;
    }
    AddPoint(text, point);
  }
  return text;
}

// The ANSI code page of the machines that the tests run on, Windows-1252, as UTF-8.
std::string FromAnsi(const std::string& bytes) {
  constexpr uint16_t kFrom0x80[] = {0x20ac, 0x81,   0x201a, 0x192,  0x201e, 0x2026, 0x2020, 0x2021,
                                    0x2c6,  0x2030, 0x160,  0x2039, 0x152,  0x8d,   0x17d,  0x8f,
                                    0x90,   0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014,
                                    0x2dc,  0x2122, 0x161,  0x203a, 0x153,  0x9d,   0x17e,  0x178};
  std::string text;
  for (const char byte : bytes) {
    const auto value = static_cast<uint8_t>(byte);
    AddPoint(text, value >= 0x80 && value < 0xa0 ? kFrom0x80[value - 0x80] : value);
  }
  return text;
}

std::string ToUtf16WithTerminator(const std::string& utf8) {
  std::string bytes;
  const auto add = [&](uint32_t unit) {
    bytes += static_cast<char>(unit & 0xff);
    bytes += static_cast<char>(unit >> 8);
  };
  for (size_t at = 0; at < utf8.size();) {
    uint32_t point = NextPoint(utf8, at);
    if (point >= 0x10000) add(0xd7c0 + (point >> 10)), point = 0xdc00 | (point & 0x3ff);
    add(point);
  }
  add(0);
  return bytes;
}

std::string Decode(const std::string& bytes) {
  if (bytes.starts_with("\xff\xfe")) return FromUtf16(bytes, true);
  if (bytes.starts_with("\xfe\xff")) return FromUtf16(bytes, false);
  if (bytes.starts_with("\xef\xbb\xbf")) return bytes.substr(3);
  return FromAnsi(bytes);
}

std::string Trim(const std::string& text) {
  const size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

char Lower(char letter) { return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter; }

bool IsSameName(const std::string& a, const std::string& b) {
  if (a.size() != b.size() || a.empty() || a[0] != b[0]) return false;
  for (size_t i = 1; i < a.size(); i++) {
    if (Lower(a[i]) != Lower(b[i])) return false;
  }
  return true;
}

using Keys = std::vector<std::pair<std::string, std::string>>;

class InfoFile {
 public:
  explicit InfoFile(const std::string& bytes) {
    const std::string text = Decode(bytes);
    const std::string end = text.find("\r\n") == std::string::npos ? "\n" : "\r\n";
    for (size_t at = 0; at < text.size();) {
      const size_t stop = std::min(text.find(end, at), text.size());
      AddLine(Trim(text.substr(at, stop - at)));
      at = stop + end.size();
    }
  }

  Keys Section(const std::string& name) const {
    for (const auto& [itsName, keys] : sections_) {
      if (IsSameName(itsName, name)) return keys;
    }
    return {};
  }

  std::string Value(const std::string& section, const std::string& key) const {
    for (const auto& [itsKey, value] : Section(section)) {
      if (IsSameName(itsKey, key)) return value;
    }
    return {};
  }
  int Number(const std::string& section, const std::string& key) const {
    return std::atoi(Value(section, key).c_str());
  }

 private:
  void AddLine(const std::string& line) {
    if (line.starts_with("[")) {
      const size_t close = line.find(']', 2);
      if (close != std::string::npos) sections_.push_back({line.substr(1, close - 1), {}});
      return;
    }
    const size_t equals = line.find('=');
    if (line.starts_with(";") || equals == std::string::npos || equals == 0 || sections_.empty()) return;
    sections_.back().second.push_back({Trim(line.substr(0, equals)), Trim(line.substr(equals + 1))});
  }

  std::vector<std::pair<std::string, Keys>> sections_;
};

bool IsInTheMaking(const std::string& name) {
  return name.starts_with("~{5B1F0C8E-6D0A-4E57-9C43-2A7E1D9F6B34}.");
}

std::map<std::string, std::string> Files(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_directory() || IsInTheMaking(Utf8Of(entry.path().filename()))) continue;
    files[Utf8Of(entry.path().lexically_relative(folder))] = ReadFile(entry.path());
  }
  return files;
}

bool IsName(const std::string& text) {
  return text.find_first_of("\\/:") == std::string::npos && text.find_first_not_of(". ") != std::string::npos;
}

void ReadAccounts(const InfoFile& info, const fs::path& set, ReadSet& result) {
  for (const auto& [name, value] : info.Section("Users")) {
    const fs::path folder = set / "Users" / PathOf(name);
    if (!IsName(name) || !fs::is_directory(folder)) continue;
    ReadAccount account;
    account.name = name;
    const size_t bar = value.find('|');
    if (bar != std::string::npos) account.level = std::atoi(value.c_str());
    account.displayName = bar == std::string::npos ? value : value.substr(bar + 1);
    account.isOfLastBackup = !info.Value("BackupUsers", name).empty();
    account.files = Files(folder);
    result.accounts.push_back(account);
  }
}

void ReadExtraFolders(const InfoFile& info, const fs::path& set, ReadSet& result) {
  for (const auto& [path, value] : info.Section("ExtraFolders")) {
    ReadExtraFolder extra;
    extra.sourcePath = path;
    extra.nameInSet = Md5(ToUtf16WithTerminator(path));
    const fs::path folder = set / "ExtraFolders" / extra.nameInSet;
    if (!fs::is_directory(folder)) continue;
    extra.isOfLastBackup = value == "1";
    extra.files = Files(folder);
    result.extraFolders.push_back(extra);
  }
}

}  // namespace

ReadSet Read(const std::string& folder) {
  ReadSet result;
  const fs::path set = PathOf(folder);
  fs::path file = set / "BackupInfo.nvsav";
  if (!fs::exists(file)) file = set / "BackupInfo.grxsv";
  if (!fs::exists(file)) {
    result.problem = "no info file in " + folder;
    return result;
  }
  const InfoFile info(ReadFile(file));
  result.folderMask = info.Number("Settings", "UserFolders");
  result.options = info.Number("Settings", "BackupOptions");
  result.skippedAttributes = info.Number("Settings", "SkipAttributes");
  ReadAccounts(info, set, result);
  ReadExtraFolders(info, set, result);
  return result;
}

}  // namespace set_reader
