// ini_document.h
//
// An INI file held in memory as a list of lines, which keeps comments, unknown lines and order. It is
// the program's own parser: the settings file and every backup info file go through it.
#pragma once
#include "foundation/ini_index.h"
#include "foundation/wstring.h"
#include "foundation/wstring_array.h"

class IniDocument {
 public:
  bool saveOnDestroy;                  // the destructor and the next Load save first
  WString path;                        // empty for a document that lives only in memory
  WString scratch;                     // working text, so that even GetValue changes the object
  WStringArray lines;                  // one row a line, trimmed and never empty after a load
  pcre2_real_code_16* sectionPattern;  // owned

  IniDocument();
  explicit IniDocument(const wchar_t* filePath);
  IniDocument(const IniDocument&) = delete;
  IniDocument& operator=(const IniDocument&) = delete;
  ~IniDocument();

  // Reads a file in any of the encodings of FileObject. Keeps the path in every case, so that a later
  // Save makes the file. False if there was no text; GetLastError() is NO_ERROR for an empty file, and
  // tells otherwise why the file couldn't be read.
  bool Load(const wchar_t* filePath, bool saveFirst);

  // Writes UTF-16 with a byte order mark, under a temporary name that is then renamed, so that the
  // file is the old or the new one at every moment. False for an empty document, whose file holds
  // only the mark afterwards (NO_ERROR), and when it couldn't be written (GetLastError() tells why).
  // A hidden file stays hidden; a read-only one is left alone (ERROR_ACCESS_DENIED).
  bool Save();

  const wchar_t* BuildText();  // the file's text, in `scratch`

  // The value's text inside the line, valid until the next change, or `fallback`.
  const wchar_t* GetValue(const wchar_t* section, const wchar_t* key, const wchar_t* fallback = L"");
  uint32_t GetNumber(const wchar_t* section, const wchar_t* key);  // 0 if missing

  // Nonzero if the line was written; 0 if section or key is null or empty.
  uint32_t SetValue(const wchar_t* section, const wchar_t* key, const wchar_t* value);

  // 1 deleted, 2 not there, 0 if section or key is null or empty.
  uint32_t DeleteKey(const wchar_t* section, const wchar_t* key);

  // `first` is the row behind the section line, 0 if there is no such section; `end` is the row of
  // the next section line, or the number of rows.
  void FindSection(const wchar_t* section, uint32_t& first, uint32_t& end);
  void RemoveSection(const wchar_t* section);

  // All sections of that name. Once the first has gone, a second one would take its place, with rows that
  // nobody has looked at: whoever writes a section anew over a file from elsewhere removes them all.
  void RemoveSections(const wchar_t* section);

  // Visits the keys of a section: i = NextKeyLine(first, end), then i = NextKeyLine(i, end) until it
  // gives 0. A line number is the row + 1. An `end` of 0 means all rows.
  uint32_t NextKeyLine(uint32_t start, uint32_t end);
  bool ParseKeyLine(uint32_t line, WString& key, WString& value);

 private:
  const WString& Row(uint32_t row) const { return lines[row]; }
  bool IsSectionLine(const WString& row) const;
  uint32_t FindKeyRow(const wchar_t* section, const WString& key, uint32_t first, uint32_t end, bool& found);

  IniIndex index_;  // of `lines`
};
