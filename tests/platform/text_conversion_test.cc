#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace {

std::u16string ToWide(UINT codePage, const std::string& bytes) {
  wchar_t units[100];
  int count = MultiByteToWideChar(codePage, 0, bytes.data(), static_cast<int>(bytes.size()), units, 100);
  EXPECT_EQ(MultiByteToWideChar(codePage, 0, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0),
            count);
  return std::u16string(reinterpret_cast<const char16_t*>(units), static_cast<size_t>(count));
}

std::string FromWide(UINT codePage, const std::u16string& text) {
  char bytes[100];
  auto* units = reinterpret_cast<const wchar_t*>(text.data());
  int length = static_cast<int>(text.size());
  int count = WideCharToMultiByte(codePage, 0, units, length, bytes, 100, nullptr, nullptr);
  EXPECT_EQ(WideCharToMultiByte(codePage, 0, units, length, nullptr, 0, nullptr, nullptr), count);
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
    }
  }
}

// A name with a surrogate alone would make bytes that no reader takes.
TEST(TextConversion, WritesAMarkForASurrogateAlone) {
  EXPECT_EQ(FromWide(CP_UTF8, u"a\xd800z"), "a\xef\xbf\xbdz");
  EXPECT_EQ(FromWide(CP_UTF8, u"\xdc00"), "\xef\xbf\xbd");
}

// An old INI file in the ANSI code page would show other letters than on Windows.
TEST(TextConversion, AnsiCodePageIs1252) {
  EXPECT_EQ(ToWide(CP_ACP, "\x80\x8a\x9f\xe4\xff\x81"), u"\u20ac\u0160\u0178\u00e4\u00ff\u0081");
  EXPECT_EQ(FromWide(CP_ACP, u"\u20ac\u0160\u0178\u00e4\u00ff\u0081"), "\x80\x8a\x9f\xe4\xff\x81");
  // What it doesn't have: something like it, or a question mark for each unit.
  EXPECT_EQ(FromWide(CP_ACP, u"\u0100\u2212\uff21\u0416\U0001f600"), "A-A???");
}
