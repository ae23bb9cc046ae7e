#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace {

std::u16string ToWide(UINT codePage, const std::string& bytes, DWORD flags = 0) {
  wchar_t units[100];
  int count = MultiByteToWideChar(codePage, flags, bytes.data(), static_cast<int>(bytes.size()), units, 100);
  EXPECT_EQ(MultiByteToWideChar(codePage, flags, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0),
            count);
  return std::u16string(reinterpret_cast<const char16_t*>(units), static_cast<size_t>(count));
}

std::string FromWide(UINT codePage, const std::u16string& text, DWORD flags = 0) {
  char bytes[100];
  auto* units = reinterpret_cast<const wchar_t*>(text.data());
  int length = static_cast<int>(text.size());
  int count = WideCharToMultiByte(codePage, flags, units, length, bytes, 100, nullptr, nullptr);
  EXPECT_EQ(WideCharToMultiByte(codePage, flags, units, length, nullptr, 0, nullptr, nullptr), count);
  return std::string(bytes, static_cast<size_t>(count));
}

}  // namespace

// A damaged info file would lose text behind the damage, or read as another text than on Windows.
TEST(TextConversion, ReadsUtf8AndMarksWhatIsNone) {
  struct {
    std::string bytes;
    std::u16string text;
  } const cases[] = {
      {"Anna", u"Anna"},
      {"\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80", u"\u00e4\u20ac\U0001f600"},
      {std::string("a\0b", 3), std::u16string(u"a\0b", 3)},
      {"a\x80z", u"a\ufffdz"},                      // a byte that follows nothing
      {"a\xc3", u"a\ufffd"},                        // cut off at the end
      {"\xe2\x82z", u"\ufffdz"},                    // cut off in the middle: one mark
      {"\xc0\xaf", u"\ufffd\ufffd"},                // long form of "/"
      {"\xed\xa0\x80", u"\ufffd\ufffd"},            // a surrogate
      {"\xf4\x90\x80\x80", u"\ufffd\ufffd\ufffd"},  // above the last character
      {"\xff", u"\ufffd"},
  };
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(ToWide(CP_UTF8, bytes), text) << testing::PrintToString(bytes);
    if (text.find(u'\ufffd') == std::u16string::npos) {
      EXPECT_EQ(FromWide(CP_UTF8, text), bytes);
      continue;
    }
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(bytes.size()),
                                  nullptr, 0),
              0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_UNICODE_TRANSLATION));
  }
}

// A name with a surrogate alone would make bytes that no reader takes.
TEST(TextConversion, WritesAMarkForASurrogateAlone) {
  EXPECT_EQ(FromWide(CP_UTF8, u"a\xd800z"), "a\xef\xbf\xbdz");
  EXPECT_EQ(FromWide(CP_UTF8, u"\xdc00"), "\xef\xbf\xbd");
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, L"\xd800", 1, nullptr, 0, nullptr, nullptr),
            0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_UNICODE_TRANSLATION));
}

// An old INI file in the ANSI code page would show other letters than on Windows.
TEST(TextConversion, AnsiCodePageIs1252) {
  EXPECT_EQ(ToWide(CP_ACP, "\x80\x8a\x9f\xe4\xff\x81"), u"\u20ac\u0160\u0178\u00e4\u00ff\u0081");
  EXPECT_EQ(FromWide(CP_ACP, u"\u20ac\u0160\u0178\u00e4\u00ff\u0081"), "\x80\x8a\x9f\xe4\xff\x81");
  // What it doesn't have: something like it, or a question mark for each unit.
  EXPECT_EQ(FromWide(CP_ACP, u"\u0100\u2212\uff21\u0416\U0001f600"), "A-A???");
  EXPECT_EQ(FromWide(CP_ACP, u"\u0100", WC_NO_BEST_FIT_CHARS), "?");
  char byte;
  BOOL usedDefault = FALSE;
  EXPECT_EQ(WideCharToMultiByte(CP_ACP, 0, L"\x416", 1, &byte, 1, "#", &usedDefault), 1);
  EXPECT_EQ(byte, '#');
  EXPECT_TRUE(usedDefault);
}

// The terminator would be lost or counted twice, or a buffer that is too small would pass for enough.
TEST(TextConversion, LengthsAndRoom) {
  wchar_t units[4] = {9, 9, 9, 9};
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", -1, nullptr, 0), 3);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", -1, units, 3), 3);
  EXPECT_EQ(units[2], 0);
  EXPECT_EQ(units[3], 9);
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", -1, units, 2), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, L"\x20ac", -1, nullptr, 0, nullptr, nullptr), 4);
  char bytes[2];
  EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, L"\x20ac", 1, bytes, 2, nullptr, nullptr), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "ab", 0, units, 4), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
  EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0x100, "ab", 2, units, 4), 0);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_FLAGS));
}

// Two spellings of one path would pass for two folders.
TEST(TextComparison, OrdinalFoldsBeyondAscii) {
  EXPECT_EQ(CompareStringOrdinal(L"C:\\\x00c4rzte", -1, L"c:\\\x00e4RZTE", -1, TRUE), CSTR_EQUAL);
  EXPECT_EQ(CompareStringOrdinal(L"C:\\\x00c4rzte", -1, L"c:\\\x00e4RZTE", -1, FALSE), CSTR_LESS_THAN);
  EXPECT_EQ(CompareStringOrdinal(L"ab", 1, L"ac", 1, FALSE), CSTR_EQUAL);
  EXPECT_EQ(CompareStringOrdinal(L"ab", -1, L"a", -1, TRUE), CSTR_GREATER_THAN);
  EXPECT_EQ(CompareStringOrdinal(nullptr, 0, L"a", -1, TRUE), 0);
}
