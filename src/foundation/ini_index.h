// ini_index.h
//
// What an INI document remembers of its rows, so that looking up n keys costs no n walks: where sections
// lie, and for a section that is asked often, which row has which key. All of it can be found again from
// the rows; it is dropped as soon as anybody else has changed them.
#pragma once
#include <cstdint>
#include <vector>

#include "foundation/wstring.h"
#include "foundation/wstring_array.h"

struct IniSection {
  WString name;         // as it was asked for
  uint32_t first, end;  // as FindSection gives them; a `first` of 0 stands for a section that isn't there
  uint32_t lookups;     // of keys, so far
  std::vector<uint32_t> slots;  // a hash table of rows, counted from `first` - 1; 0 is free
  uint32_t used;                // slots that aren't
};

class IniIndex {
 public:
  // The section if its place is known, valid until the next call of another operation here. Null if not.
  IniSection* Find(const WStringArray& lines, const wchar_t* name);
  void Remember(const WStringArray& lines, const wchar_t* name, uint32_t first, uint32_t end);

  // Whether looking for `key`, which is trimmed, is worth a table, or there is one. `row` is the first
  // row with the key then, or the section's end.
  bool FindKey(const WStringArray& lines, IniSection& section, const WString& key, uint32_t& row);

  // To be told right behind the change, by whoever made it: a row of this section has become another one
  // (`isSameKey`: with a key that matches as the old one did), or was inserted at the section's end.
  void RowReplaced(const WStringArray& lines, IniSection& section, bool isSameKey);
  void RowInserted(const WStringArray& lines, IniSection& section);

 private:
  void BuildTable(const WStringArray& lines, IniSection& section);

  std::vector<IniSection> sections_;
  uint32_t changes_ = 0;  // of the lines that all of this is about
};
