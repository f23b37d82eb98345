// Timestamps counted from 1904 in local time, with the limits of the calendar.
#include "platform/clock.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace qm::platform {
namespace {

TEST(Clock, CalendarMomentsAndTheirLimits) {
  EXPECT_EQ(StampFromCivil({1904, 1, 1, 0, 0, 0}), 0u);
  EXPECT_EQ(StampFromCivil({1904, 1, 1, 0, 0, 1}), 1u);
  EXPECT_EQ(StampFromCivil({2000, 1, 1, 0, 0, 0}), 3029529600u);
  EXPECT_EQ(StampFromCivil({1904, 3, 1, 0, 0, 0}), 60u * 86400) << "1904 is a leap year";
  EXPECT_EQ(StampFromCivil({2040, 2, 6, 6, 28, 14}), 0xFFFFFFFEu);
  EXPECT_EQ(StampFromCivil({2040, 2, 7, 0, 0, 0}), 0u) << "more than 49710 days";
  EXPECT_EQ(StampFromCivil({2041, 1, 1, 0, 0, 0}), 0u);
  EXPECT_EQ(StampFromCivil({1903, 12, 31, 0, 0, 0}), 0u);
  EXPECT_EQ(StampFromCivil({2000, 13, 1, 0, 0, 0}), kNoStamp);
  EXPECT_EQ(StampFromCivil({2000, 0, 1, 0, 0, 0}), kNoStamp);
  EXPECT_EQ(StampFromCivil({2000, 1, 32, 0, 0, 0}), kNoStamp);

  const CivilTime t = CivilFromStamp(3082852000u);
  EXPECT_EQ(t.year, 2001);
  EXPECT_EQ(t.month, 9);
  EXPECT_EQ(t.day, 9);
  EXPECT_EQ(t.hour, 3);
  EXPECT_EQ(t.minute, 46);
  EXPECT_EQ(t.second, 40);
  for (std::uint32_t s : {0u, 86399u, 3029529600u, 4000000000u}) {
    EXPECT_EQ(StampFromCivil(CivilFromStamp(s)), s);
  }
}

// Berlin is one hour ahead of UTC in winter, two in summer.
TEST(Clock, SystemTimeIsCountedInLocalTime) {
  ASSERT_EQ(setenv("TZ", "Europe/Berlin", 1), 0);
  tzset();
  EXPECT_EQ(StampFromSystemTime(0), 2082844800u + 3600);
  EXPECT_EQ(StampFromSystemTime(1000000000), 3082852000u);  // 2001-09-09 03:46:40 CEST
  EXPECT_GT(Clock::System().Now(), 3029529600u);
}

}  // namespace
}  // namespace qm::platform
