// changed_document.h
//
// A document that isn't saved yet: its file says 1 and it says 2.
#pragma once
#include <string>

#include "foundation/ini_document.h"
#include "support/test_place.h"

// The bytes of a file that the program saves.
inline std::string SavedBytes(const std::string& text) {
  std::string bytes = "\xff\xfe";
  for (char unit : text) bytes += {unit, '\0'};
  return bytes;
}

struct ChangedDocument {
  const std::string before = "[s]\r\na=1\r\n", after = SavedBytes("[s]\r\na=2\r\n");
  TestPlace place;
  WString path = place.File("x.ini", before);
  IniDocument document{path.CStr()};

  ChangedDocument() { document.SetValue(L"s", L"a", L"2"); }
};
