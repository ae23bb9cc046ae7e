#include "core/format_date_time.h"

#include <gtest/gtest.h>

#include "core/taken_times.h"
#include "support/test_place.h"

namespace {

std::string Formatted(const SYSTEMTIME& time) {
  WString text(L"earlier contents");
  FormatDateTime(time, text);
  EXPECT_EQ(text.Length(), 23);
  return Utf8(text);
}

// A stamp of another width moves the "=" of every entry, and a reader takes half of it for the message.
TEST(FormatDateTime, GivesEachFieldItsWidth) {
  EXPECT_EQ(Formatted({2024, 3, 2, 5, 7, 8, 9, 45}), "2024/03/05 07:08:09:045");
  EXPECT_EQ(Formatted({1999, 12, 5, 31, 23, 59, 59, 999}), "1999/12/31 23:59:59:999");
  EXPECT_EQ(Formatted({7, 0, 0, 123, 0, 0, 0, 1234}), "0007/00/23 00:00:00:234");
}

// The next free millisecond is looked for over the ends of seconds and days, and in a run of any length
// with a hole in it.
TEST(TakenTimes, FindTheNextFreeMillisecond) {
  TakenTimes times;
  SYSTEMTIME last = {2024, 2, 0, 28, 23, 59, 59, 999};
  EXPECT_EQ(Formatted(times.NextFree(last)), "2024/02/28 23:59:59:999");
  times.AddStamp(L"2024/02/28 23:59:59:999");
  EXPECT_EQ(Formatted(times.NextFree(last)), "2024/02/29 00:00:00:000");
  for (int i = 0; i < 500; i++) times.Add(times.NextFree(last));
  EXPECT_EQ(Formatted(times.NextFree(last)), "2024/02/29 00:00:00:500");
  times.AddStamp(L"2024/02/29 00:00:00:501");
  EXPECT_EQ(Formatted(times.NextFree(last)), "2024/02/29 00:00:00:500");
  times.Add(times.NextFree(last));
  EXPECT_EQ(Formatted(times.NextFree(last)), "2024/02/29 00:00:00:502");

  SYSTEMTIME earlier = {2024, 2, 0, 28, 12, 0, 0, 0};  // the clock was set back
  EXPECT_EQ(Formatted(times.NextFree(earlier)), "2024/02/28 12:00:00:000");
}

}  // namespace
