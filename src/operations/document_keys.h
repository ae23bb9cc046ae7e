// document_keys.h
//
// What every reader and every writer of a selection does with its document.
#pragma once
#include <cstdint>
#include <vector>

#include "operations/backup_set.h"

// Calls `visit(key, value)` for each key of a section, in file order. The visitor doesn't change the
// document.
template <typename Visit>
void VisitKeys(IniDocument& document, const wchar_t* section, Visit visit) {
  uint32_t first = 0, end = 0;
  document.FindSection(section, first, end);
  if (first == 0) return;
  WString key, value;
  for (uint32_t line = document.NextKeyLine(first, end); line != 0; line = document.NextKeyLine(line, end)) {
    if (document.ParseKeyLine(line, key, value)) visit(key, value);
  }
}

struct KeyEntry {
  WString key, value;
};

// The keys of a section, in file order.
inline std::vector<KeyEntry> ReadKeys(IniDocument& document, const wchar_t* section) {
  std::vector<KeyEntry> entries;
  VisitKeys(document, section, [&entries](const WString& key, const WString& value) {
    entries.push_back({key, value});
  });
  return entries;
}

// A decimal number in the section Settings.
inline void SetNumber(IniDocument& document, const wchar_t* key, uint32_t number) {
  WString text;
  text.FromUInt32(number);
  document.SetValue(kSettingsSection, key, text.CStr());
}
