#include "berlin_zone.h"

#include <qz/time/time.h>

#include <gtest/gtest.h>

namespace {

bool is_local_midnight(const _time_t& t) {
  const tm local = t.localtime();
  return local.tm_hour == 0 && local.tm_min == 0 && local.tm_sec == 0;
}

// Holds in any zone; in one with daylight saving it crosses both changes.
TEST(TimeLocalDay, StepsThroughAYearLandOnEveryLocalMidnight) {
  const _time_t first = _time_t::mktime(2021, 1, 1, 0, 0, 0);
  _time_t day = first;
  for (int step = 1; step <= 365; ++step) {
    const _time_t next = day.nextlocalday();
    ASSERT_TRUE(is_local_midnight(next)) << next.ctime();
    ASSERT_EQ(next.localtime().tm_yday, step % 365) << next.ctime();
    ASSERT_EQ(next.prevlocalday(), day) << next.ctime();
    ASSERT_EQ(_time_t(static_cast<__int64>(next) + 12 * 3600).trunc2localday(), next) << next.ctime();
    day = next;
  }
  EXPECT_EQ(day, _time_t::mktime(2022, 1, 1, 0, 0, 0));
}

TEST(TimeLocalDay, ShortDayOfSpringChange) {
  SKIP_UNLESS_BERLIN_ZONE();
  const _time_t noon(1616925600);  // 2021-03-28 12:00 CEST
  EXPECT_EQ(static_cast<__int64>(noon.trunc2localday()), 1616886000);  // 00:00 CET
  EXPECT_EQ(static_cast<__int64>(noon.nextlocalday()), 1616968800);    // 03-29 00:00 CEST, 23 h later
  EXPECT_EQ(static_cast<__int64>(noon.prevlocalday()), 1616799600);    // 03-27 00:00 CET
  EXPECT_EQ(static_cast<__int64>(_time_t(1617012000).prevlocalday()), 1616886000);  // from 03-29 noon
  EXPECT_EQ(static_cast<__int64>(_time_t(1616842800).nextlocalday()), 1616886000);  // from 03-27 noon
}

TEST(TimeLocalDay, LongDayOfAutumnChange) {
  SKIP_UNLESS_BERLIN_ZONE();
  const _time_t noon(1635678000);  // 2021-10-31 12:00 CET
  EXPECT_EQ(static_cast<__int64>(noon.trunc2localday()), 1635631200);  // 00:00 CEST
  EXPECT_EQ(static_cast<__int64>(noon.nextlocalday()), 1635721200);    // 11-01 00:00 CET, 25 h later
  EXPECT_EQ(static_cast<__int64>(noon.prevlocalday()), 1635544800);    // 10-30 00:00 CEST
  EXPECT_EQ(static_cast<__int64>(_time_t(1635764400).prevlocalday()), 1635631200);  // from 11-01 noon
  // Both passes through the repeated hour 02:00-03:00 belong to the same day.
  for (__int64 t : {1635638400LL, 1635642000LL}) {
    EXPECT_EQ(static_cast<__int64>(_time_t(t).trunc2localday()), 1635631200);
    EXPECT_EQ(static_cast<__int64>(_time_t(t).nextlocalday()), 1635721200);
  }
}

}  // namespace
