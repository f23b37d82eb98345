// Timestamps counted from 1904 in local time, with the limits of the calendar.
#include "platform/clock.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <vector>

namespace qm::platform {
namespace {

TEST(Clock, CalendarMomentsAndTheirLimits) {
  const auto at = [](int y, int mo, int d, int h = 0, int mi = 0, int sec = 0) {
    return StampFromCivil({y, mo, d, h, mi, sec});
  };
  // 1904 is a leap year; past 49710 days or outside 1904 to 2040 is 0; no such day is none.
  EXPECT_EQ((std::vector<std::uint32_t>{at(1904, 1, 1), at(1904, 1, 1, 0, 0, 1), at(2000, 1, 1),
                                        at(1904, 3, 1), at(2040, 2, 6, 6, 28, 14), at(2040, 2, 7),
                                        at(2041, 1, 1), at(1903, 12, 31), at(2000, 13, 1),
                                        at(2000, 0, 1), at(2000, 1, 32)}),
            (std::vector<std::uint32_t>{0, 1, 3029529600u, 60u * 86400, 0xFFFFFFFEu, 0, 0, 0,
                                        kNoStamp, kNoStamp, kNoStamp}));
  const CivilTime t = CivilFromStamp(3082852000u);
  EXPECT_EQ((std::vector<int>{t.year, t.month, t.day, t.hour, t.minute, t.second}),
            (std::vector<int>{2001, 9, 9, 3, 46, 40}));
  for (std::uint32_t s : {0u, 86399u, 3029529600u, 4000000000u}) {
    EXPECT_EQ(StampFromCivil(CivilFromStamp(s)), s);
  }

  // Berlin is one hour ahead of UTC in winter, two in summer.
  ASSERT_EQ(setenv("TZ", "Europe/Berlin", 1), 0);
  tzset();
  EXPECT_EQ(StampFromSystemTime(0), 2082844800u + 3600);
  EXPECT_EQ(StampFromSystemTime(1000000000), 3082852000u);  // 2001-09-09 03:46:40 CEST
  EXPECT_GT(Clock::System().Now(), 3029529600u);
}

}  // namespace
}  // namespace qm::platform
