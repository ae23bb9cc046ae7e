#include "foundation/wstring.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/test_place.h"

namespace {

WString Made(const wchar_t* text) { return text == nullptr ? WString() : WString(text); }

// Code that lets a system call write into the buffer would go on with the old length.
TEST(WString, CountsAgainAfterTheBufferWasWritten) {
  WString text;
  wchar_t* room = text.Reserve(8, L"abcdefghijk");
  EXPECT_EQ(text.Length(), 8);
  room[3] = 0;
  text.length = 0;
  EXPECT_EQ(text.Length(), 3);
  EXPECT_EQ(text, L"abc");

  text.Reserve(4, nullptr, true)[0] = L'x';
  EXPECT_EQ(text.Length(), 1);
}

// A null buffer handed to a system call, or a copy that shares one, would end the program.
TEST(WString, NeverGivesANullText) {
  WString null;
  const WString copy(null);
  EXPECT_NE(null.buffer, nullptr);
  EXPECT_NE(copy.buffer, null.buffer);
  EXPECT_EQ(copy.Length(), 0);
  null.Clear();
  EXPECT_EQ(null.buffer, nullptr);
  EXPECT_NE(null.CStr(), nullptr);
  null.Truncate(0);
  null.RemoveLeft(1);
  EXPECT_TRUE(null.EqualsNoCase(WString()));
  const WString& same = null;
  null = same;
  EXPECT_EQ(null, L"");
}

// Freeing the old text before the parts are copied would join freed memory.
TEST(WString, JoinsPartsOfItself) {
  WString text(L"abc");
  text.Concat(text.CStr() + 1, nullptr, L"-", text.CStr(), L"1", L"2", L"3", L"4", L"5", L"6", L"7");
  EXPECT_EQ(text, L"bc-abc1234567");
  text.AssignMid(text.CStr(), 4, 3);
  EXPECT_EQ(text, L"abc");
  text.Prepend(L"<", text.CStr());
  EXPECT_EQ(text, L"<abcabc");
  text.Append(text.CStr());
  EXPECT_EQ(text, L"<abcabc<abcabc");
  EXPECT_EQ(text.Length(), 14);
  text = text.CStr() + 11;
  EXPECT_EQ(text, L"abc");
}

// A copy of a middle part must not read behind the terminator, whatever the numbers are.
TEST(WString, AssignMidStaysInsideTheText) {
  struct Case {
    const wchar_t* text;
    int32_t start, count;
    const wchar_t* result;
    bool ok;
  };
  const Case cases[] = {
      {L"abcdef", 2, 3, L"bcd", true}, {L"abcdef", 2, 0, L"bcdef", true}, {L"abcdef", -4, 2, L"ab", true},
      {L"abcdef", 5, 9, L"ef", true},  {L"abcdef", 7, 2, L"", true},      {L"abcdef", 70, -1, L"", true},
      {L"", 1, 1, L"", false},         {nullptr, 1, 1, L"", false},
  };
  for (const Case& c : cases) {
    WString output(L"old");
    output.AssignMid(c.text, c.start, c.count);
    EXPECT_EQ(output, c.result) << c.start << " " << c.count;
    EXPECT_EQ(output.ok, c.ok) << c.start << " " << c.count;
  }
}

// Clamping is what keeps these two from writing outside of the text.
TEST(WString, CutsAtBothEnds) {
  WString text(L"abcdef");
  text.RemoveLeft(-1);
  text.RemoveLeft(2);
  EXPECT_EQ(text, L"cdef");
  text.Truncate(5);
  EXPECT_FALSE(text.ok);
  text.Truncate(-1);
  EXPECT_FALSE(text.ok);
  EXPECT_EQ(text, L"cdef");
  text.Truncate(4);
  EXPECT_TRUE(text.ok);
  text.Truncate(1);
  EXPECT_TRUE(text.ok);
  EXPECT_EQ(text, L"c");
  text.RemoveLeft(9);
  EXPECT_EQ(text, L"");
}

// Off by one in a position cuts every path of the program in the wrong place.
TEST(WString, FindsTheWantedMatch) {
  struct Case {
    const wchar_t* text;
    const wchar_t* needle;
    bool caseSensitive;
    int32_t occurrence, start, span;
    int32_t position;
  };
  const Case cases[] = {
      {L"aaa", L"aa", true, 2, 1, 0, 2},  // matches overlap
      {L"aaa", L"aa", true, -2, 1, 0, 1},
      {L"aaa", L"aa", true, -3, 1, 0, 0},
      {L"aaa", L"aa", true, 3, 1, 0, 0},
      {L"aaa", L"aa", true, 0, 0, 0, 1},  // 0 counts as the first, position 0 as 1
      {nullptr, L"a", true, -1, 1, 0, 0},
      {L"abc", L"", true, -1, 1, 0, 0},
      {L"abc", nullptr, true, 1, 1, 0, 0},
      {L"abc", L"abcd", true, 1, 1, 0, 0},
      {L"abcabc", L"abc", true, 1, 5, 0, 0},
      {L"abcabc", L"abc", true, 1, 2, 4, 0},  // the span ends in front of the match's last unit
      {L"abcabc", L"abc", true, 1, 2, 5, 4},
      {L"abcabc", L"abc", true, -1, 1, 1, 0},
      {L"abcabc", L"abc", true, -1, 1, 5, 1},  // the last place where it fits inside the span
      {L"abcabc", L"abc", true, -1, 2, 0, 4},
      {L"abcabc", L"abc", true, -2, 2, 0, 0},  // not in front of the start
      {L"abcabc", L"abc", true, 1, 1, 700, 1},
      {L"C:\\Program Files", L"PROGRAM", false, 1, 1, 0, 4},
      {L"C:\\Program Files", L"PROGRAM", true, 1, 1, 0, 0},
      {L"xÄy", L"ä", false, 1, 1, 0, 0},  // only A to Z are folded
      {L"@[", L"`{", false, 1, 1, 0, 0},  // the neighbours of A and Z aren't
  };
  for (const Case& c : cases) {
    const WString text = Made(c.text);
    EXPECT_EQ(text.Find(c.needle, c.caseSensitive, c.occurrence, c.start, c.span), c.position)
        << Utf8(text) << " / " << Utf8(c.needle != nullptr ? c.needle : L"(null)") << " " << c.occurrence
        << " " << c.start << " " << c.span;
  }
}

TEST(WString, ReplacesInPlaceAndGrowing) {
  struct Case {
    const wchar_t* text;
    const wchar_t* needle;
    const wchar_t* replacement;
    int32_t occurrence;
    bool caseSensitive;
    const wchar_t* result;
    bool ok;
  };
  const Case cases[] = {
      {L"aaaa", L"aa", L"b", 0, true, L"bb", true},
      {L"aaaaa", L"aa", L"aaa", 0, true, L"aaaaaaa", true},  // not looked for inside a replaced part
      {L"a.b.c", L".", L"--", 0, true, L"a--b--c", true},
      {L"a.b.c", L".", nullptr, 0, true, L"abc", true},
      {L"a.b.c", L".", L"_", 2, true, L"a.b_c", true},
      {L"a.b.c", L".", L"<>", -2, true, L"a<>b.c", true},
      {L"aXbx", L"x", L"y", 0, false, L"ayby", true},
      {L"aXbx", L"x", L"y", 0, true, L"aXby", true},
      {L"abc", L"b", L"y", 2, true, L"abc", true},  // no match: only the text counts
      {L"abc", L"", L"y", 0, true, L"abc", true},
      {L"", L"a", L"y", 0, true, L"", false},
  };
  for (const Case& c : cases) {
    WString text(c.text);
    text.Replace(c.needle, c.replacement, c.occurrence, c.caseSensitive);
    EXPECT_EQ(text, c.result) << Utf8(c.text) << " / " << Utf8(c.needle);
    EXPECT_EQ(text.Length(), UnitCount(c.result));
    EXPECT_EQ(text.ok, c.ok) << Utf8(c.text) << " / " << Utf8(c.needle);
  }
  WString own(L"ab.ab");  // in place, with the needle and the replacement inside of the text itself
  own.Replace(own.CStr() + 3, own.CStr() + 4);
  EXPECT_EQ(own, L"b.b");
  own = L"aaaaa";
  own.Replace(own.CStr() + 3, own.CStr() + 4);
  EXPECT_EQ(own, L"aaa");
}

// The search for each match from the text's start would make this take minutes.
TEST(WString, ReplacesAMillionMatchesInOneGo) {
  const int32_t count = 2000000;
  WString text;
  wchar_t* units = text.Reserve(count);
  for (int32_t index = 0; index < count; ++index) units[index] = index % 2 == 0 ? L'a' : L'b';
  text.Replace(L"b", L"cc");
  EXPECT_EQ(text.Length(), count / 2 * 3);
  text.Replace(L"cc", L"");
  EXPECT_EQ(text.Length(), count / 2);
  EXPECT_EQ(text.Find(L"b"), 0);
}

TEST(WString, ComparesWithoutCase) {
  EXPECT_TRUE(WString(L"Anna").EqualsNoCase(L"aNNA"));
  EXPECT_FALSE(WString(L"Anna").EqualsNoCase(L"Ann"));
  EXPECT_FALSE(WString(L"Ann").EqualsNoCase(L"Anna"));
  EXPECT_FALSE(WString(L"Änne").EqualsNoCase(L"änne"));
}

TEST(WString, TrimsByFlags) {
  struct Case {
    const wchar_t* text;
    uint32_t flags;
    const wchar_t* result;
  };
  const Case cases[] = {
      {L" \t a b\r\n", 3, L"a b"}, {L" \t a b\r\n", 1, L"a b\r\n"}, {L" \t a b\r\n", 2, L" \t a b"},
      {L"a \t b", 4, L"a b"},      {L"a\t\n\tb  ", 4, L"a\tb "},    {L"  a \t b  ", 7, L"a b"},
      {L" a\tb\r c\n", 8, L"abc"}, {L" a\tb ", 15, L"ab"},          {L" \t ", 3, L""},
      {L" \t\n", 4, L"\n"},        {L"\va\xa0", 3, L"\va\xa0"},     {L" a ", 0, L" a "},
  };
  for (const Case& c : cases) {
    WString text(c.text);
    text.Trim(c.flags);
    EXPECT_EQ(text, c.result) << c.flags;
    EXPECT_EQ(text.length, UnitCount(c.result)) << c.flags;
    EXPECT_TRUE(text.ok);
  }
  WString empty(L"");
  empty.Trim(3);
  EXPECT_FALSE(empty.ok);
}

// A component cut off wrongly names another folder; a prefix in front of a UNC path or a relative one makes
// a path that no call takes.
TEST(WString, TakesPathsApart) {
  struct Case {
    const wchar_t* path;
    const wchar_t* parent;
    const wchar_t* parentWithBackslash;
    const wchar_t* last;
    const wchar_t* prefixed;
  };
  const Case cases[] = {
      {L"C:\\Users\\Bob", L"C:\\Users", L"C:\\Users\\", L"Bob", L"\\\\?\\C:\\Users\\Bob"},
      {L"C:\\Users\\Bob\\", L"C:\\Users", L"C:\\Users\\", L"", L"\\\\?\\C:\\Users\\Bob\\"},
      {L"C:\\a\\\\\\", L"C:", L"C:\\", L"", L"\\\\?\\C:\\a\\\\\\"},
      {L"C:\\", L"C:", L"C:\\", L"", L"\\\\?\\C:\\"},
      {L"C:", L"C:", L"C:\\", L"", L"\\\\?\\C:"},
      {L"C", L"C", L"C\\", L"C", L"C"},
      {L"abc", L"abc", L"abc\\", L"abc", L"abc"},
      {L"ab\\c", L"ab", L"ab\\", L"c", L"ab\\c"},
      {L"\\\\server", L"\\\\server", L"\\\\server\\", L"server", L"\\\\server"},
      {L"\\\\?\\C:\\a", L"\\\\?\\C:", L"\\\\?\\C:\\", L"a", L"\\\\?\\C:\\a"},
      {L"\\", L"", L"\\", L"", L"\\"},
      {L"", L"", L"\\", L"", L""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(WString(c.path).ParentPath(false), c.parent) << Utf8(c.path);
    EXPECT_EQ(WString(c.path).ParentPath(true), c.parentWithBackslash) << Utf8(c.path);
    EXPECT_EQ(WString(c.path).LastComponent(), c.last) << Utf8(c.path);
    EXPECT_EQ(WString(c.path).AddLongPathPrefix(), c.prefixed) << Utf8(c.path);
  }
  EXPECT_FALSE(WString(L"abc").LastComponent().ok);
  EXPECT_TRUE(WString(L"a\\b").LastComponent().ok);
}

// An info file may hold anything where a number should be.
TEST(WString, ReadsNumbersAsTheRuntimeDoes) {
  struct Case {
    const wchar_t* text;
    uint32_t narrow;
    uint64_t wide;
    bool ok;
  };
  const Case cases[] = {
      {L"12ab", 12, 12, true},
      {L" \t+7", 7, 7, true},
      {L"-1", 0xffffffffu, ~0ull, true},
      {L"4294967295", 0xffffffffu, 4294967295u, true},
      {L"4294967296", 0xffffffffu, 4294967296u, true},
      {L"99999999999999999999999", 0xffffffffu, ~0ull, true},
      {L"abc", 0, 0, true},
      {L"0x10", 0, 0, true},
      {L"", 0, 0, false},
      {nullptr, 0, 0, false},
  };
  for (const Case& c : cases) {
    WString text = Made(c.text);
    EXPECT_EQ(text.ToUInt32(), c.narrow) << Utf8(text);
    EXPECT_EQ(text.ok, c.ok) << Utf8(text);
    text = Made(c.text);
    EXPECT_EQ(text.ToUInt64(), c.wide) << Utf8(text);
    EXPECT_EQ(text.ok, c.ok) << Utf8(text);
  }
}

TEST(WString, DecodesBytes) {
  WString text(L"old");
  text.FromUtf8("\xc3\x84\xe2\x82\xac\xf0\x9f\x98\x80");
  EXPECT_EQ(text, L"\u00c4\u20ac\U0001F600");
  EXPECT_EQ(text.Length(), 4);
  EXPECT_TRUE(text.ok);
  text.FromUtf8("a\xff!");  // no byte may be lost in silence
  EXPECT_EQ(text, L"a\ufffd!");
  text.FromAnsi("\xc4x");  // one byte, one unit, in whatever code page the system has
  EXPECT_EQ(text.Length(), 2);
  for (const char* nothing : {static_cast<const char*>(nullptr), ""}) {
    text.FromAnsi(nothing);
    EXPECT_EQ(text, L"");
    EXPECT_NE(text.buffer, nullptr);
    EXPECT_FALSE(text.ok);
  }
}

// Two accounts or temporary files of the same name would come of a repeated identifier.
TEST(WString, MakesNewIdentifiersInBraces) {
  WString first, second;
  first.NewGuid();
  second.NewGuid();
  EXPECT_TRUE(first.ok);
  EXPECT_EQ(first.Length(), 38);
  EXPECT_EQ(first.Find(L"{"), 1);
  EXPECT_EQ(first.Find(L"}"), 38);
  EXPECT_FALSE(first == second);
}

// A size that wraps in 32 bits would come back as a small buffer, and be written far beyond its end.
TEST(WStringDeathTest, EndsTheProgramInsteadOfWrapping) {
  EXPECT_DEATH(AllocateUnits(0x7fffffff), "out of memory");
  EXPECT_DEATH(AllocateUnits(0x80000001), "out of memory");
}

}  // namespace
