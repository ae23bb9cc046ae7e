// settings_text.h
//
// The text form of machine.ini, accounts.ini and faults.ini: UTF-8, sections in brackets, a key and a
// value on each line, comments behind ";" or "#". Keys and sections are found without regard to case,
// and stand in the order of the file.
#pragma once
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace machine {

struct SettingsSection {
  std::string name;
  std::vector<std::pair<std::string, std::string>> values;

  // The value of the first such key, or null.
  const std::string* Find(std::string_view key) const;
  void Add(std::string_view key, std::string_view value) { values.emplace_back(key, value); }
};

struct SettingsText {
  std::vector<SettingsSection> sections;

  const SettingsSection* Find(std::string_view name) const;

  // False with a sentence in `error` that names the file and the line.
  bool Read(const std::string& file, std::string* error);

  // By a temporary file beside it and a rename, so that the file is whole at each moment. A line break
  // or another control character in a value becomes a blank.
  bool Write(const std::string& file, std::string_view comment, std::string* error) const;
};

// The bytes of a file of at most `limit`, and the whole replacement of one. The errors name the file
// and the system's reason.
bool ReadWholeFile(const std::string& file, size_t limit, std::string& bytes, std::string* error);
bool ReplaceWholeFile(const std::string& file, std::string_view bytes, std::string* error);

}  // namespace machine
