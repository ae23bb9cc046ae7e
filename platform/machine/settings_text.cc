#include "machine/settings_text.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "machine/names.h"

namespace machine {
namespace {

constexpr size_t kLargestSettings = 16 << 20;

std::string_view Trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::string OneLine(std::string_view text) {
  std::string line(text);
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < 0x20) c = ' ';
  }
  return line;
}

bool Complain(std::string* error, const std::string& file, const std::string& reason) {
  if (error) *error = "\"" + file + "\": " + reason + ".";
  return false;
}

bool WriteAll(int handle, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(handle, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

}  // namespace

bool ReadWholeFile(const std::string& file, size_t limit, std::string& bytes, std::string* error) {
  const int handle = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (handle < 0) return Complain(error, file, strerror(errno));
  bytes.clear();
  char block[16384];
  ssize_t count = 0;
  while ((count = read(handle, block, sizeof block)) != 0) {
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 || bytes.size() > limit) break;
    bytes.append(block, static_cast<size_t>(count));
  }
  const int reason = errno;
  close(handle);
  if (count < 0) return Complain(error, file, strerror(reason));
  if (count > 0) return Complain(error, file, "is too large for such a file");
  return true;
}

bool ReplaceWholeFile(const std::string& file, std::string_view bytes, std::string* error) {
  const std::string temporary = file + ".new" + std::to_string(getpid());
  const int handle = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0644);
  if (handle < 0) return Complain(error, file, strerror(errno));
  bool done = WriteAll(handle, bytes);
  int reason = errno;
  if (close(handle) != 0 && done) {
    done = false;
    reason = errno;
  }
  if (done && rename(temporary.c_str(), file.c_str()) != 0) {
    done = false;
    reason = errno;
  }
  if (done) return true;
  unlink(temporary.c_str());
  return Complain(error, file, strerror(reason));
}

const std::string* SettingsSection::Find(std::string_view key) const {
  const std::string folded = FoldUtf8(key);
  for (const auto& [name, value] : values) {
    if (FoldUtf8(name) == folded) return &value;
  }
  return nullptr;
}

const SettingsSection* SettingsText::Find(std::string_view name) const {
  const std::string folded = FoldUtf8(name);
  for (const auto& section : sections) {
    if (FoldUtf8(section.name) == folded) return &section;
  }
  return nullptr;
}

bool SettingsText::Read(const std::string& file, std::string* error) {
  std::string bytes;
  if (!ReadWholeFile(file, kLargestSettings, bytes, error)) return false;
  sections.clear();
  std::string_view rest = bytes;
  if (rest.starts_with("\xEF\xBB\xBF")) rest.remove_prefix(3);
  for (size_t number = 1; !rest.empty(); ++number) {
    const size_t end = rest.find('\n');
    const std::string_view line = Trimmed(rest.substr(0, end));
    rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
    if (line.empty() || line[0] == ';' || line[0] == '#') continue;
    const std::string where = "line " + std::to_string(number) + " ";
    if (line[0] == '[') {
      if (line.back() != ']') return Complain(error, file, where + "begins a section without a \"]\"");
      sections.push_back({std::string(line.substr(1, line.size() - 2)), {}});
      continue;
    }
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos || equals == 0) {
      return Complain(error, file, where + "is neither a section nor \"key=value\"");
    }
    if (sections.empty()) return Complain(error, file, where + "stands before the first section");
    sections.back().Add(Trimmed(line.substr(0, equals)), Trimmed(line.substr(equals + 1)));
  }
  return true;
}

bool SettingsText::Write(const std::string& file, std::string_view comment, std::string* error) const {
  std::string bytes = "; " + OneLine(comment) + "\n";
  for (const auto& section : sections) {
    bytes += "\n[" + OneLine(section.name) + "]\n";
    for (const auto& [key, value] : section.values) bytes += OneLine(key) + "=" + OneLine(value) + "\n";
  }
  return ReplaceWholeFile(file, bytes, error);
}

}  // namespace machine
