#include "utf8_text.h"

#include <gtest/gtest.h>

#include "json_line.h"
#include "progress_line.h"
#include "support/test_place.h"

namespace {

using namespace std::string_literals;

// A name that comes back changed names no file, or another one.
TEST(Utf8Text, NamesSurviveTheWayThereAndBack) {
  for (const wchar_t* name : {L"plain", L"\u00e4\u20ac\u65e5", L"\U0001F600\U0010ffff", L"lone \xd83d high",
                              L"lone \xde00", L"\xde00\xd83d wrong order", L"\xffff\xf001"}) {
    EXPECT_EQ(FromUtf8Text(ToUtf8Text(name)), name) << ToUtf8Text(name);
  }
  EXPECT_EQ(ToUtf8Text(L"\xd83d"), "\xed\xa0\xbd");
}

// Bytes that are no UTF-8 must not be read beyond the text's end, nor turn into another character.
TEST(Utf8Text, OtherBytesBecomeReplacementCharacters) {
  struct Case {
    std::string bytes;
    const wchar_t* text;
  };
  const Case cases[] = {
      {"a\xff"
       "b",
       L"a\xfffd"
       L"b"},
      {"\xc3", L"\xfffd"},
      {"\xe2\x82", L"\xfffd\xfffd"},
      {"\xf0\x9f\x98", L"\xfffd\xfffd\xfffd"},
      {"\xc0\xaf", L"\xfffd\xfffd"},  // a slash in two bytes
      {"\xe0\x80\xaf", L"\xfffd\xfffd\xfffd"},
      {"\xf5\x80\x80\x80", L"\xfffd\xfffd\xfffd\xfffd"},
      {"a\0b"s, L"a"},
  };
  for (const Case& c : cases) EXPECT_EQ(FromUtf8Text(c.bytes), c.text) << c.bytes;
}

// A file's name must not move the cursor, colour the screen or turn the rest of the line around.
TEST(Utf8Text, EscapesWhatActsOnATerminal) {
  EXPECT_EQ(Escaped(L"a\x1b[2Jb\r\n\x7f\x9b"), "a\\x1b[2Jb\\x0d\\x0a\\x7f\\x9b");
  EXPECT_EQ(Escaped(L"txt.\u202egpj"), "txt.\\u202egpj");
  EXPECT_EQ(Escaped(L"\xd83d \u00e4"), "\\ud83d \xc3\xa4");
  EXPECT_EQ(Escaped("a\tb\xc3\xa4"), "a\\x09b\xc3\xa4");
  EXPECT_EQ(EscapedLines(L"one\r\ntwo\nthree\r"), "one\ntwo\nthree\\x0d");
  EXPECT_EQ(JsonLine("x").Text("name", L"\u202e\x9b\"\n").Build(),
            R"({"event":"x","name":"\u202e\u009b\"\n"})");
}

TEST(ProgressLine, WritesAmountsAndTimes) {
  EXPECT_EQ(BytesText(1023), "1023 B");
  EXPECT_EQ(BytesText(1024), "1.0 KiB");
  EXPECT_EQ(BytesText(1024 * 1024 - 1), "1.0 MiB");
  EXPECT_EQ(BytesText(INT64_MAX), "8192.0 PiB");
  EXPECT_EQ(DurationText(59), "0:59");
  EXPECT_EQ(DurationText(3661), "1:01:01");
}

// A line that is wider than the terminal breaks and can't be drawn over.
TEST(ProgressLine, FitsTheTerminal) {
  ProgressState state;
  state.phase = "C:\\Users\\Anna\\Documents\\\xc3\xa4\xc3\xa4\xc3\xa4";
  state.perMille = 505;
  state.items = 12;
  state.itemsTotal = 34;
  state.bytesTotal = 2048;
  state.bytesPerSecond = 1024;
  state.secondsLeft = 75;
  EXPECT_EQ(ProgressText(state, 200),
            state.phase + "   50.5%  12/34 entries  0 B/2.0 KiB  1.0 KiB/s  1:15 left");
  for (int columns : {0, 1, 2, 10, 40, 60, 70, 75}) {
    size_t width = 0;
    for (char byte : ProgressText(state, columns)) width += (byte & 0xc0) != 0x80;
    EXPECT_LT(width, std::max<size_t>(1, static_cast<size_t>(columns))) << columns;
  }
  const std::string numbers = ProgressText(state, 200).substr(state.phase.size());
  EXPECT_EQ(ProgressText(state, static_cast<int>(numbers.size()) + 7),
            "...\xc3\xa4\xc3\xa4\xc3\xa4" + numbers);
  state.isCounting = true;
  EXPECT_NE(ProgressText(state, 100).find("counting  34 entries"), std::string::npos);
  state.isFlushing = true;
  EXPECT_EQ(ProgressText(state, 100), state.phase + "  writing to disk");
}

// A rate that jumps to zero with every small file shows a time left that nobody believes.
TEST(RateMeter, SmoothsAndBeginsAnew) {
  using std::chrono::milliseconds;
  RateMeter meter;
  auto now = RateMeter::Clock::time_point{};
  meter.Restart(now);
  EXPECT_EQ(meter.SecondsLeft(1000), -1);
  meter.Add(1000, now += milliseconds(1000));
  EXPECT_DOUBLE_EQ(meter.BytesPerSecond(), 1000);
  meter.Add(1000, now += milliseconds(1000));
  EXPECT_GT(meter.BytesPerSecond(), 500);
  EXPECT_LT(meter.BytesPerSecond(), 1000);
  meter.Add(0, now += milliseconds(1000));  // the next tree
  EXPECT_EQ(meter.SecondsLeft(1000), -1);
}

}  // namespace
