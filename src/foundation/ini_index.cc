#include "foundation/ini_index.h"

namespace {

constexpr size_t kMostSections = 8;  // a document of ours asks for no more in turn
constexpr uint32_t kFewRows = 32;    // are walked through as fast
constexpr uint32_t kLookupsForATable = 8;
constexpr size_t kFewestSlots = 64;

// The part of a row that a key can match: in front of its first "=", without blanks at its end. Empty for
// a row that no key matches.
int32_t KeyLength(const wchar_t* row) {
  if (row == nullptr || row[0] == L'[') return 0;
  int32_t length = 0;
  while (row[length] != 0 && row[length] != L'=') ++length;
  if (row[length] == 0) return 0;
  while (length > 0 && (row[length - 1] == L' ' || row[length - 1] == L'\t')) --length;
  return length;
}

// Keys match with their first unit exactly, and with the others regardless of case.
size_t HashOf(const wchar_t* key, int32_t length) {
  uint32_t hash = 2166136261u;
  for (int32_t unit = 0; unit < length; ++unit) {
    hash = (hash ^ (unit == 0 ? key[unit] : LowerUnit(key[unit]))) * 16777619u;
  }
  return hash ^ (hash >> 15);
}

bool Matches(const wchar_t* row, const wchar_t* key, int32_t length) {
  if (KeyLength(row) != length || row[0] != key[0]) return false;
  for (int32_t unit = 1; unit < length; ++unit) {
    if (LowerUnit(row[unit]) != LowerUnit(key[unit])) return false;
  }
  return true;
}

// The slot of the key: that of its first row, or a free one.
size_t FindSlot(const WStringArray& lines, const IniSection& section, const wchar_t* key, int32_t length) {
  const size_t mask = section.slots.size() - 1;
  size_t slot = HashOf(key, length) & mask;
  while (section.slots[slot] != 0 &&
         !Matches(lines[section.first - 1 + section.slots[slot]].buffer, key, length)) {
    slot = (slot + 1) & mask;
  }
  return slot;
}

void Enter(const WStringArray& lines, IniSection& section, uint32_t row) {
  const wchar_t* const units = lines[row].buffer;
  const int32_t length = KeyLength(units);
  if (length == 0) return;
  const size_t slot = FindSlot(lines, section, units, length);
  if (section.slots[slot] != 0) return;  // the first row of a key counts
  section.slots[slot] = row - (section.first - 1);
  ++section.used;
}

void DropTable(IniSection& section) {
  section.slots = std::vector<uint32_t>();
  section.used = 0;
}

}  // namespace

IniSection* IniIndex::Find(const WStringArray& lines, const wchar_t* name) {
  if (changes_ != lines.changes) sections_.clear();
  for (IniSection& section : sections_) {
    if (section.name == name) return &section;
  }
  return nullptr;
}

void IniIndex::Remember(const WStringArray& lines, const wchar_t* name, uint32_t first, uint32_t end) {
  if (changes_ != lines.changes || sections_.size() == kMostSections) sections_.clear();
  changes_ = lines.changes;
  sections_.push_back({WString(name), first, end, 0, {}, 0});
}

void IniIndex::BuildTable(const WStringArray& lines, IniSection& section) {
  size_t slots = kFewestSlots;
  while (slots < size_t{section.end - section.first} * 2) slots *= 2;
  section.slots.assign(slots, 0);
  section.used = 0;
  for (uint32_t row = section.first; row < section.end; ++row) Enter(lines, section, row);
}

bool IniIndex::FindKey(const WStringArray& lines, IniSection& section, const WString& key, uint32_t& row) {
  const int32_t length = key.Length();
  // What a key with a "=" matches goes beyond the first one of the row.
  if (length == 0 || key.buffer[0] == L'[' || key.Find(L"=") != 0) return false;
  if (section.slots.empty()) {
    if (section.end - section.first < kFewRows || ++section.lookups < kLookupsForATable) return false;
    BuildTable(lines, section);
  }
  const uint32_t found = section.slots[FindSlot(lines, section, key.buffer, length)];
  row = found == 0 ? section.end : section.first - 1 + found;
  return true;
}

void IniIndex::RowReplaced(const WStringArray& lines, IniSection& section, bool isSameKey) {
  for (IniSection& other : sections_) {
    if (!isSameKey && other.first == section.first) DropTable(other);
  }
  changes_ = lines.changes;
}

void IniIndex::RowInserted(const WStringArray& lines, IniSection& section) {
  const uint32_t row = section.end, first = section.first;
  const wchar_t* const units = lines[row].buffer;
  // It may be a section line itself.
  if (units != nullptr && units[0] == L'[') return sections_.clear();
  for (IniSection& other : sections_) {
    if (other.first == first) {
      // The same section, maybe asked for by another spelling of its name.
      ++other.end;
      if (other.slots.empty()) continue;
      if ((size_t{other.used} + 1) * 2 > other.slots.size()) {
        BuildTable(lines, other);
      } else {
        Enter(lines, other, row);
      }
    } else if (other.first > row) {
      ++other.first;
      ++other.end;
    } else if (other.first != 0 && other.end >= row) {
      return sections_.clear();  // one within the other, by a name with a line end in it
    }
  }
  changes_ = lines.changes;
}
