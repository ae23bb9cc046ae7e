#include "foundation/ini_document.h"

#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

#include <cstring>
#include <utility>

#include "foundation/file_object.h"
#include "foundation/split_list.h"

namespace {

bool HasText(const wchar_t* text) { return text != nullptr && text[0] != 0; }

bool IsBlank(wchar_t unit) { return unit == L' ' || unit == L'\t'; }

// The first "=" of a key line, or null. At the row's start it makes no key line.
const wchar_t* EqualsSign(const WString& row) {
  if (row.IsEmpty()) return nullptr;
  const wchar_t* place = row.buffer + 1;
  while (*place != 0 && *place != L'=') ++place;
  return *place != 0 ? place : nullptr;
}

// Whether `row` begins with `name`: its first unit exactly, the rest regardless of case.
bool BeginsWith(const wchar_t* row, const wchar_t* name) {
  if (*row != *name) return false;
  for (; *name != 0; ++row, ++name) {
    if (*row != *name && LowerUnit(*row) != LowerUnit(*name)) return false;
  }
  return true;
}

// Whether `row` begins the section whose name and closing bracket `inBrackets` is.
bool IsLineOfSection(const WString& row, const wchar_t* inBrackets) {
  return !row.IsEmpty() && row.buffer[0] == L'[' && BeginsWith(row.buffer + 1, inBrackets);
}

WString Trimmed(const wchar_t* key) {
  WString trimmed(key);
  trimmed.Trim(kTrimLeading | kTrimTrailing);
  return trimmed;
}

}  // namespace

IniDocument::IniDocument() : saveOnDestroy(false), sectionPattern(nullptr) {
  int error = 0;
  PCRE2_SIZE offset = 0;
  sectionPattern = pcre2_compile(reinterpret_cast<PCRE2_SPTR>(LR"(^\[(.+)\].*)"), PCRE2_ZERO_TERMINATED,
                                 PCRE2_CASELESS, &error, &offset, nullptr);
  if (sectionPattern == nullptr) EndOutOfMemory();  // the pattern itself is sound
}

IniDocument::IniDocument(const wchar_t* filePath) : IniDocument() { Load(filePath, false); }

IniDocument::~IniDocument() {
  if (saveOnDestroy) Save();
  pcre2_code_free(sectionPattern);
}

bool IniDocument::Load(const wchar_t* filePath, bool saveFirst) {
  const WString newPath(filePath);  // may be the path that is about to be cleared
  if (saveFirst || saveOnDestroy) Save();
  if (lines.count != 0) {
    lines.Clear();
    path.Clear();
  }
  FileObject file;
  const bool isOpen = file.Open(newPath.CStr(), 0) != nullptr;
  path = newPath;
  WString text;
  if (!isOpen || file.ReadAllText(text) == 0) return false;

  SplitList pieces;
  pieces.Split(text.CStr(), L"\r\n", true);
  if (pieces.count == 1 && text.Find(L"\r\n") == 0 && text.Find(L"\n") != 0) {
    pieces.Split(text.CStr(), L"\n", true);
  }
  text.Clear();  // a large file needn't be held twice
  lines.Resize(0, pieces.count);
  for (uint32_t piece = 0; piece < pieces.count; ++piece) {
    const wchar_t* line = pieces.pieces[piece];
    if (*line == 0 || *line == L'\r') continue;
    lines.Add(line);
    WString& row = lines[lines.count - 1];
    row.Trim(kTrimLeading | kTrimTrailing);
    if (row.IsEmpty()) lines.Remove(lines.count - 1);
  }
  return true;
}

const wchar_t* IniDocument::BuildText() {
  int64_t units = 0;
  for (uint32_t row = 0; row < lines.count; ++row) {
    if (!Row(row).IsEmpty()) units += Row(row).Length() + 2;
  }
  wchar_t* text = AllocateUnits(units);
  wchar_t* end = text;
  for (uint32_t row = 0; row < lines.count; ++row) {
    if (Row(row).IsEmpty()) continue;
    const int32_t length = Row(row).Length();
    memcpy(end, Row(row).buffer, static_cast<size_t>(length) * sizeof(wchar_t));
    end += length;
    *end++ = L'\r';
    *end++ = L'\n';
  }
  *end = 0;
  scratch.Attach(text, false);
  return text;
}

bool IniDocument::IsSectionLine(const WString& row) const {
  if (row.IsEmpty() || row.buffer[0] != L'[') return false;
  // The first "]" behind one character decides. Cut there, the match takes no longer for a row of
  // millions of units, which the matcher would otherwise walk backwards through until its limit.
  int32_t bracket = 2;
  if (row.buffer[1] == 0) return false;
  while (row.buffer[bracket] != 0 && row.buffer[bracket] != L']') ++bracket;
  if (row.buffer[bracket] == 0) return false;
  pcre2_match_data* data = pcre2_match_data_create_from_pattern(sectionPattern, nullptr);
  if (data == nullptr) EndOutOfMemory();
  const int result = pcre2_match(sectionPattern, reinterpret_cast<PCRE2_SPTR>(row.buffer),
                                 static_cast<PCRE2_SIZE>(bracket) + 1, 0, 0, data, nullptr);
  pcre2_match_data_free(data);
  return result > 0;
}

void IniDocument::FindSection(const wchar_t* section, uint32_t& first, uint32_t& end) {
  first = 0;
  end = 0;
  if (!HasText(section)) return;
  if (const IniSection* known = index_.Find(lines, section)) {
    first = known->first;
    end = known->end;
    return;
  }
  scratch.Concat(L"[", section, L"]");
  const wchar_t* const inBrackets = scratch.CStr() + 1;
  uint32_t row = 0;
  while (row < lines.count && !IsLineOfSection(Row(row), inBrackets)) ++row;
  if (row < lines.count) {
    first = row + 1;
    end = first;
    while (end < lines.count && !IsSectionLine(Row(end))) ++end;
  }
  index_.Remember(lines, section, first, end);
}

// `key` is trimmed. The row of the first match, or `end` with `found` false.
uint32_t IniDocument::FindKeyRow(const wchar_t* section, const WString& key, uint32_t first, uint32_t end,
                                 bool& found) {
  found = false;
  if (key.IsEmpty() || key.buffer[0] == L'[') return end;
  IniSection* const known = index_.Find(lines, section);
  uint32_t indexed = end;
  if (known != nullptr && index_.FindKey(lines, *known, key, indexed)) {
    found = indexed != end;
    return indexed;
  }
  const int32_t length = key.Length();
  for (uint32_t row = first; row < end; ++row) {
    const wchar_t* line = Row(row).buffer;
    if (line == nullptr || !BeginsWith(line, key.buffer)) continue;
    line += length;
    while (IsBlank(*line)) ++line;
    if (*line != L'=') continue;
    found = true;
    return row;
  }
  return end;
}

const wchar_t* IniDocument::GetValue(const wchar_t* section, const wchar_t* key, const wchar_t* fallback) {
  if (!HasText(section) || !HasText(key)) return fallback;
  uint32_t first, end;
  FindSection(section, first, end);
  if (first == 0) return fallback;
  bool found;
  const uint32_t row = FindKeyRow(section, Trimmed(key), first, end, found);
  if (!found) return fallback;
  const wchar_t* value = Row(row).buffer;
  while (*value != L'=') ++value;
  ++value;
  while (IsBlank(*value)) ++value;
  return value;
}

uint32_t IniDocument::GetNumber(const wchar_t* section, const wchar_t* key) {
  return WString(GetValue(section, key, L"")).ToUInt32();
}

uint32_t IniDocument::SetValue(const wchar_t* section, const wchar_t* key, const wchar_t* value) {
  if (!HasText(section) || !HasText(key)) return 0;
  WString line;
  line.Concat(key, L"=", value);
  uint32_t first, end;
  FindSection(section, first, end);
  if (first == 0) {
    WString sectionLine;
    sectionLine.Concat(L"[", section, L"]");
    lines.Add(sectionLine.CStr());
    lines.Add(line.CStr());
    return lines.count - 1;  // the old number of rows + 1
  }
  const WString trimmed = Trimmed(key);
  bool found;
  const uint32_t row = FindKeyRow(section, trimmed, first, end, found);
  IniSection* const known = index_.Find(lines, section);
  if (found) {
    lines[row] = std::move(line);
    if (known != nullptr) index_.RowReplaced(lines, *known, trimmed == key);
    return row + 1;
  }
  lines.Insert(end, line.CStr());
  if (known != nullptr) index_.RowInserted(lines, *known);
  return end;
}

uint32_t IniDocument::DeleteKey(const wchar_t* section, const wchar_t* key) {
  if (!HasText(section) || !HasText(key)) return 0;
  uint32_t first, end;
  FindSection(section, first, end);
  if (first == 0) return 2;
  bool found;
  const uint32_t row = FindKeyRow(section, Trimmed(key), first, end, found);
  if (!found) return 2;
  lines.Remove(row);
  return 1;
}

void IniDocument::RemoveSection(const wchar_t* section) {
  uint32_t first, end;
  FindSection(section, first, end);
  if (first != 0) lines.Remove(first - 1, end - (first - 1));
}

void IniDocument::RemoveSections(const wchar_t* section) {
  if (!HasText(section)) return;
  WString inBrackets;
  inBrackets.Concat(section, L"]");
  uint32_t kept = 0;
  bool isInside = false;
  for (uint32_t row = 0; row < lines.count; ++row) {
    if (IsLineOfSection(Row(row), inBrackets.CStr())) {
      isInside = true;
    } else if (isInside && IsSectionLine(Row(row))) {
      isInside = false;
    }
    if (isInside) continue;
    if (kept != row) lines[kept] = std::move(lines[row]);
    ++kept;
  }
  lines.Remove(kept, lines.count - kept);
}

uint32_t IniDocument::NextKeyLine(uint32_t start, uint32_t end) {
  if (end == 0 || end > lines.count) end = lines.count;
  for (uint32_t row = start; row < end; ++row) {
    const WString& line = Row(row);
    if (IsSectionLine(line)) return 0;
    const wchar_t* const units = line.buffer;
    if (units == nullptr || units[0] == 0 || units[1] == 0 || units[2] == 0) continue;
    if (units[0] == L';' || units[0] == L'[') continue;
    if (EqualsSign(line) != nullptr) return row + 1;
  }
  return 0;
}

bool IniDocument::ParseKeyLine(uint32_t line, WString& key, WString& value) {
  if (line == 0 || line > lines.count) return false;
  const WString& row = Row(line - 1);
  const wchar_t* const sign = EqualsSign(row);
  if (sign == nullptr) return false;
  key.AssignMid(row.buffer, 1, static_cast<int32_t>(sign - row.buffer));
  key.Trim(kTrimTrailing);
  value = sign + 1;
  value.Trim(kTrimLeading);
  return true;
}
