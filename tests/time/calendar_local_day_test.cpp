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

// The day of the spring change is 23 hours long, that of the autumn change
// 25, and both passes through its repeated hour 02:00-03:00 belong to it.
TEST(TimeLocalDay, DaysAroundTheChangesInBerlin) {
  SKIP_UNLESS_BERLIN_ZONE();
  const struct {
    __int64 t, day, next, prev;
  } cases[] = {
      {1616842800, 1616799600, 1616886000, 1616713200},  // 2021-03-27 12:00 CET
      {1616925600, 1616886000, 1616968800, 1616799600},  // 2021-03-28 12:00 CEST
      {1617012000, 1616968800, 1617055200, 1616886000},  // 2021-03-29 12:00 CEST
      {1635638400, 1635631200, 1635721200, 1635544800},  // 2021-10-31 02:00 CEST
      {1635642000, 1635631200, 1635721200, 1635544800},  // 2021-10-31 02:00 CET
      {1635678000, 1635631200, 1635721200, 1635544800},  // 2021-10-31 12:00 CET
      {1635764400, 1635721200, 1635807600, 1635631200},  // 2021-11-01 12:00 CET
  };
  for (const auto& c : cases) {
    const _time_t t(c.t);
    EXPECT_EQ(static_cast<__int64>(t.trunc2localday()), c.day) << c.t;
    EXPECT_EQ(static_cast<__int64>(t.nextlocalday()), c.next) << c.t;
    EXPECT_EQ(static_cast<__int64>(t.prevlocalday()), c.prev) << c.t;
  }
}

}  // namespace
