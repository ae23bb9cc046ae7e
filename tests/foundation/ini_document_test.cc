#include "foundation/ini_document.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/changed_document.h"
#include "foundation/file_object.h"
#include "support/array_rows.h"

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

std::vector<std::string> Rows(const IniDocument& document) { return ArrayRows(document.lines); }

void Fill(IniDocument& document, const std::vector<const wchar_t*>& rows) {
  for (const wchar_t* row : rows) document.lines.Add(row);
}

// Comments, unknown lines and order belong to whoever wrote the file by hand.
TEST(IniDocument, KeepsLinesAndDropsBlankOnes) {
  TestPlace place;
  IniDocument document(
      place.File("x.ini", "; note\r\n  [Settings]\t\r\n\r\n \t \r\n a = 1 \r\nunknown\r\n[b]").CStr());
  EXPECT_THAT(Rows(document), ElementsAre("; note", "[Settings]", "a = 1", "unknown", "[b]"));
  EXPECT_EQ(Utf8(document.GetValue(L"Settings", L"a")), "1");
  EXPECT_TRUE(document.Save());
  EXPECT_EQ(place.Read("x.ini"), SavedBytes("; note\r\n[Settings]\r\na = 1\r\nunknown\r\n[b]\r\n"));
  EXPECT_NE(document.SetValue(L"Settings", L"a", L"2"), 0u);
  EXPECT_THAT(Rows(document), ElementsAre("; note", "[Settings]", "a=2", "unknown", "[b]"));
}

TEST(IniDocument, SplitsByTheLineEndsOfTheFile) {
  struct Case {
    std::string bytes;
    std::vector<std::string> rows;
  };
  const Case cases[] = {
      {"a=1\nb=2\n\nc=3", {"a=1", "b=2", "c=3"}},
      {"a=1\r\nb=2\nc=3\r\n", {"a=1", "b=2\nc=3"}},  // mixed: at CR LF only
      {"a=1\r\n\rb=2\r\nc=3", {"a=1", "c=3"}},       // a piece that begins with CR is dropped
      {"a=1\rb=2", {"a=1\rb=2"}},
  };
  TestPlace place;
  for (const Case& c : cases) {
    IniDocument document(place.File("x.ini", c.bytes).CStr());
    EXPECT_THAT(Rows(document), ElementsAreArray(c.rows)) << c.bytes;
  }
}

// A section or key that is taken for another one writes one account's choices over another's.
TEST(IniDocument, MatchesSectionsAndKeys) {
  struct Case {
    std::vector<const wchar_t*> rows;
    const wchar_t* section;
    const wchar_t* key;
    const wchar_t* value;  // null: not found
  };
  const Case cases[] = {
      {{L"[Settings] ; comment", L"a=1"}, L"Settings", L"a", L"1"},
      {{L"[SETTINGS]", L"a=1"}, L"Settings", L"a", L"1"},
      {{L"[settings]", L"a=1"}, L"Settings", L"a", nullptr},  // the first unit counts exactly
      {{L"[Settings2]", L"a=1"}, L"Settings", L"a", nullptr},
      {{L"[Settings", L"a=1"}, L"Settings", L"a", nullptr},
      {{L"[s]", L"a=1", L"[s]", L"b=2"}, L"s", L"b", nullptr},  // only the first section of a name
      {{L"[s]", L"[x", L"a=1"}, L"s", L"a", L"1"},              // no "]": ends no section
      {{L"[s]", L"[]", L"a=1"}, L"s", L"a", L"1"},              // nothing between the brackets
      {{L"[s]", L"[]]", L"a=1"}, L"s", L"a", nullptr},
      {{L"[s]", L"PathName=1"}, L"s", L"Path", nullptr},
      {{L"[s]", L"PATH \t= 1"}, L"s", L" Path ", L"1"},
      {{L"[s]", L"path=1"}, L"s", L"Path", nullptr},
      {{L"[s]", L"a=1", L"a=2"}, L"s", L"a", L"1"},
      {{L"[s]", L"a="}, L"s", L"a", L""},
      {{L"[s]", L"a = \t "}, L"s", L"a", L""},
      {{L"[s]", L"a"}, L"s", L"a", nullptr},
      {{L"[s]", L"C:\\a=b=1"}, L"s", L"C:\\a=b", L"b=1"},  // cut at the first sign
      {{L"[s]", L"[x=1"}, L"s", L"[x", nullptr},
      {{L"[s]", L";a=1"}, L"s", L"a", nullptr},
      {{L"[s]", L"a=1"}, L"s", L"  ", nullptr},
      {{L"[s]", L"a=1"}, nullptr, L"a", nullptr},
      {{L"[s]", L"a=1"}, L"s", nullptr, nullptr},
  };
  for (const Case& c : cases) {
    IniDocument document;
    Fill(document, c.rows);
    EXPECT_EQ(Utf8(document.GetValue(c.section, c.key, L"(none)")), c.value ? Utf8(c.value) : "(none)")
        << Utf8(c.rows[0]) << " " << (c.key ? Utf8(c.key) : "");
  }
}

TEST(IniDocument, SetValueAddsKeyBeforeNextSection) {
  IniDocument document;
  EXPECT_EQ(document.SetValue(L"one", L"a", L"1"), 1u);
  EXPECT_EQ(document.SetValue(L"two", L"b", nullptr), 3u);
  EXPECT_EQ(document.SetValue(L"one", L"c", L"3"), 2u);
  EXPECT_EQ(document.SetValue(L"two", L"d", L"4"), 5u);
  EXPECT_THAT(Rows(document), ElementsAre("[one]", "a=1", "c=3", "[two]", "b=", "d=4"));
  EXPECT_EQ(document.SetValue(L"one", L"a", document.GetValue(L"one", L"a")), 2u);
  EXPECT_EQ(document.SetValue(L"one", L" c", L"x"), 3u);  // found trimmed, written as given
  EXPECT_THAT(Rows(document), ElementsAre("[one]", "a=1", " c=x", "[two]", "b=", "d=4"));
  EXPECT_EQ(document.SetValue(L"", L"a", L"1"), 0u);
  EXPECT_EQ(document.SetValue(L"one", nullptr, L"1"), 0u);
}

TEST(IniDocument, DeletesKeysAndSections) {
  IniDocument document;
  Fill(document, {L"; head", L"[one]", L"a=1", L"; note", L"[two]", L"b=2"});
  EXPECT_EQ(document.DeleteKey(L"two", L"b"), 1u);
  EXPECT_EQ(document.DeleteKey(L"two", L"b"), 2u);
  EXPECT_EQ(document.DeleteKey(L"none", L"b"), 2u);
  EXPECT_EQ(document.DeleteKey(L"one", L""), 0u);
  EXPECT_THAT(Rows(document), ElementsAre("; head", "[one]", "a=1", "; note", "[two]"));
  document.RemoveSection(L"one");
  document.RemoveSection(L"none");
  EXPECT_THAT(Rows(document), ElementsAre("; head", "[two]"));
  document.SetValue(L"one", L"a", L"9");  // comes back at the end
  EXPECT_THAT(Rows(document), ElementsAre("; head", "[two]", "[one]", "a=9"));
}

// A second section of a stranger's file would come to light once the first is gone, and be taken for what a
// person chose. A file of nothing else mustn't hold the run up.
TEST(IniDocument, RemovesAllSectionsOfAName) {
  IniDocument document;
  Fill(document,
       {L"[one]", L"a=1", L"[two]", L"b=2", L"[oNE] more", L"c=3", L"[", L"[one", L"[One2]", L"d=4"});
  EXPECT_STREQ(document.GetValue(L"one", L"a"), L"1");
  document.RemoveSections(L"one");
  EXPECT_THAT(Rows(document), ElementsAre("[two]", "b=2", "[One2]", "d=4"));
  EXPECT_STREQ(document.GetValue(L"one", L"c", L"gone"), L"gone");
  document.RemoveSections(L"none");
  document.RemoveSections(nullptr);
  EXPECT_EQ(document.lines.count, 4u);
  for (int i = 0; i < 100000; i++) {
    document.lines.Add(L"[one]");
    document.lines.Add(L"[two]");
  }
  document.RemoveSections(L"one");
  EXPECT_EQ(document.lines.count, 100004u);
}

TEST(IniDocument, VisitsTheKeysOfASection) {
  IniDocument document;
  Fill(document,
       {L"[s]", L"a=1", L";b=2", L"[x=3", L"=4", L"c d \t= 5 =6", L"==7", L"x=", L"no", L"[t]", L"e=8"});
  uint32_t first, end;
  document.FindSection(L"s", first, end);
  EXPECT_EQ(first, 1u);
  EXPECT_EQ(end, 9u);
  std::vector<std::string> seen;
  WString key, value;
  for (uint32_t line = document.NextKeyLine(first, end); line != 0; line = document.NextKeyLine(line, end)) {
    ASSERT_TRUE(document.ParseKeyLine(line, key, value));
    seen.push_back(Utf8(key) + "|" + Utf8(value));
  }
  EXPECT_THAT(seen, ElementsAre("a|1", "c d|5 =6", "=|7"));  // rows of two units aren't visited
  EXPECT_TRUE(document.ParseKeyLine(8, key, value));
  EXPECT_EQ(value, L"");
  EXPECT_EQ(document.NextKeyLine(9, 0), 0u);
  EXPECT_EQ(document.NextKeyLine(10, 0), 11u);
  EXPECT_EQ(document.NextKeyLine(70, 0), 0u);
  for (uint32_t line : {0u, 5u, 9u, 12u}) EXPECT_FALSE(document.ParseKeyLine(line, key, value)) << line;
}

// A document that can't be read must be told apart from an empty one before anything is saved over it.
TEST(IniDocument, LoadTellsEmptyFromUnreadable) {
  TestPlace place;
  IniDocument document;
  EXPECT_FALSE(document.Load(place.File("empty.ini", "").CStr(), false));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(NO_ERROR));
  EXPECT_FALSE(document.Load(place.File("mark.ini", "\xff\xfe").CStr(), false));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(NO_ERROR));
  EXPECT_FALSE(document.Load((place / "none.ini").CStr(), false));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(document.path, place / "none.ini");
  document.SetValue(L"s", L"a", L"1");
  EXPECT_TRUE(document.Save());
  EXPECT_EQ(place.Read("none.ini"), SavedBytes("[s]\r\na=1\r\n"));
}

// Without a path there is nothing to save to, and of an empty document the mark alone stays.
TEST(IniDocument, SavesNoTextWithoutAPathOrRows) {
  ChangedDocument test;
  test.document.RemoveSection(L"s");
  EXPECT_FALSE(test.document.Save());
  EXPECT_EQ(test.place.Read("x.ini"), SavedBytes(""));
  EXPECT_THAT(test.place.List(), ElementsAre("x.ini"));
  IniDocument inMemory;
  inMemory.SetValue(L"s", L"a", L"1");
  EXPECT_FALSE(inMemory.Save());
}

// A leftover of a program that ended in the middle of a save must not stop all later ones, and a
// folder or a file that is being saved at this moment must not be harmed.
TEST(IniDocument, SavesBesideLeftovers) {
  ChangedDocument test;
  test.place.Folder("x.ini.norvane-save");
  const WString torn = test.place.File("x.ini.norvane-save2", "torn");
  EXPECT_TRUE(test.document.Save()) << GetLastError();
  EXPECT_THAT(test.place.List(), ElementsAre("x.ini", "x.ini.norvane-save"));
  EXPECT_EQ(test.place.Read("x.ini"), test.after);

  FileObject other(torn.CStr(), kFileCreateAlways | kFileExclusive);
  test.document.SetValue(L"s", L"a", L"3");
  EXPECT_TRUE(test.document.Save()) << GetLastError();
  EXPECT_THAT(test.place.List(), ElementsAre("x.ini", "x.ini.norvane-save", "x.ini.norvane-save2"));
  EXPECT_EQ(test.place.Read("x.ini"), SavedBytes("[s]\r\na=3\r\n"));
}

// The old file stays whole where the new one can't take its place, and nothing lies beside it.
TEST(IniDocument, KeepsTheOldFileWhenItCannotSave) {
  ChangedDocument test;
  SetAttributes(test.path.CStr(), FILE_ATTRIBUTE_READONLY);
  EXPECT_FALSE(test.document.Save());
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_ACCESS_DENIED));
  SetAttributes(test.path.CStr(), FILE_ATTRIBUTE_NORMAL);
  EXPECT_EQ(test.place.Read("x.ini"), test.before);
  {
    FileObject reader(test.path.CStr(), 0);
    EXPECT_FALSE(test.document.Save());
  }
  EXPECT_EQ(test.place.Read("x.ini"), test.before);
  EXPECT_THAT(test.place.List(), ElementsAre("x.ini"));
  test.document.path = test.place.Folder("folder");
  EXPECT_FALSE(test.document.Save());
}

TEST(IniDocument, AHiddenFileStaysHidden) {
  ChangedDocument test;
  constexpr uint32_t kHidden = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
  SetAttributes(test.path.CStr(), kHidden);
  EXPECT_TRUE(test.document.Save()) << GetLastError();
  EXPECT_EQ(test.place.Read("x.ini"), test.after);
  EXPECT_EQ(Attributes(test.path.CStr()) & kHidden, kHidden);
}

// Files from outside are of any size: lines of ten megabytes, and rows without end.
TEST(IniDocument, StandsHugeLinesAndManyKeys) {
  TestPlace place;
  std::string bytes = "[";
  bytes.resize(10'000'000, 'x');
  bytes += "\r\n[";
  bytes.resize(11'000'000, '[');
  bytes += "]\r\n[s]\r\n";
  for (uint32_t key = 0; key < 200'000; ++key) bytes += "key" + std::to_string(key) + "=1\r\n";
  IniDocument document(place.File("huge.ini", bytes).CStr());
  EXPECT_EQ(document.lines.count, 200'003u);
  EXPECT_EQ(Utf8(document.GetValue(L"s", L"key199999")), "1");
  document.RemoveSection(L"s");
  EXPECT_EQ(document.lines.count, 2u);
  EXPECT_TRUE(document.Save());
}

}  // namespace
