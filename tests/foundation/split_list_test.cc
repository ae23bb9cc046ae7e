#include "foundation/split_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/array_rows.h"

namespace {

using ::testing::ElementsAre;

std::vector<std::string> Pieces(const SplitList& list) {
  std::vector<std::string> pieces;
  for (uint32_t piece = 0; piece < list.count; ++piece) pieces.push_back(Utf8(list.pieces[piece]));
  return pieces;
}

// A piece too many at the end makes an empty last folder of each mask, a piece too few loses a line.
TEST(SplitList, CutsAtDelimiters) {
  struct Case {
    const wchar_t* text;
    const wchar_t* delimiter;
    bool isWhole;
    std::vector<std::string> pieces;
  };
  const Case cases[] = {
      {L"a\r\n\r\nb\r\n", L"\r\n", true, {"a", "", "b"}},
      {L"a\rb\nc", L"\r\n", true, {"a\rb\nc"}},
      {L"a\r\r\nb", L"\r\n", true, {"a\r", "b"}},
      {L"aXXXb", L"XX", true, {"a", "Xb"}},  // from left to right
      {L"axXb", L"X", true, {"ax", "b"}},    // with regard to case
      {L"\r\n", L"\r\n", true, {""}},
      {L"1.2,3", L".,", false, {"1", "2", "3"}},
      {L".1..2.", L".,", false, {"", "1", "", "2"}},
      {L"abc", L".", false, {"abc"}},
      {L"abc", L"", false, {"abc"}},
      {L"abc", nullptr, true, {"abc"}},
      {L"", L".", false, {""}},
      {nullptr, L".", true, {""}},
  };
  for (const Case& c : cases) {
    SplitList list;
    list.Split(c.text, c.delimiter, c.isWhole);
    EXPECT_THAT(Pieces(list), testing::ElementsAreArray(c.pieces)) << (c.text ? Utf8(c.text) : "(null)");
  }
}

TEST(SplitList, IsSplitAgainFromItsOwnPiece) {
  SplitList list;
  list.Split(L"a=1,2,3;b", L";", false);
  list.Split(list.pieces[0] + 2, L",", true);
  EXPECT_THAT(Pieces(list), ElementsAre("1", "2", "3"));
}

// Rows that move by a wrong number would mix up the lines of a document, and a row that comes back after a
// shorter list must not hold what it held before.
TEST(WStringArray, MovesRowsAndMakesEmptyOnes) {
  WStringArray rows;
  for (const wchar_t* text : {L"a", L"b", L"c"}) rows.Add(text);
  rows.Insert(1, rows[2].CStr());
  rows.Insert(0, L"first");
  rows.Insert(5, L"last");
  EXPECT_THAT(ArrayRows(rows), ElementsAre("first", "a", "c", "b", "c", "last"));
  rows.Remove(1, 3);
  EXPECT_THAT(ArrayRows(rows), ElementsAre("first", "c", "last"));
  rows.Remove(2, 9);
  rows.Remove(7);
  EXPECT_THAT(ArrayRows(rows), ElementsAre("first", "c"));
  rows.Resize(1);
  rows.Resize(3, 8);
  EXPECT_THAT(ArrayRows(rows), ElementsAre("first", "", ""));
  EXPECT_EQ(rows[1].buffer, nullptr);
  rows.Clear();
  rows.Add(L"again");
  EXPECT_THAT(ArrayRows(rows), ElementsAre("again"));
}

}  // namespace
