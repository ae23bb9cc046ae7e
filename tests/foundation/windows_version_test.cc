#include "foundation/windows_version.h"

#include <gtest/gtest.h>

#include "support/test_place.h"

namespace {

// An update offered for ever, or never, would come of a wrong order.
TEST(WindowsVersion, VersionTextsAreComparedPartByPart) {
  struct Case {
    const wchar_t* a;
    const wchar_t* b;
    int result;
  };
  const Case cases[] = {
      {L"1.2", L"1.2.0", 0},
      {L"1,10", L"1.9", 1},
      {L"3.0.2.0", L"3.0.10", -1},
      {L"1.2.3.4.5", L"1.2.3.4.6", 0},
      {L"", L"0", 0},
      {L"", L"0.0.0.1", -1},
      {L"1.2.3.5", L"1.2.3.4", 1},
      {L"no version", L"0.0", 0},
      {L"4294967296", L"1", 1},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(CompareVersionStrings(c.a, c.b), c.result) << Utf8(c.a) << " and " << Utf8(c.b);
    EXPECT_EQ(CompareVersionStrings(c.b, c.a), -c.result) << Utf8(c.b) << " and " << Utf8(c.a);
  }
}

}  // namespace
