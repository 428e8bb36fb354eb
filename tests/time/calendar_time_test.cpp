#include "berlin_zone.h"

#include <qz/time/time.h>

#include <gtest/gtest.h>

namespace {

// 2020-01-02 03:04:05 UTC.
const __int64 kJan2nd2020 = 1577934245;

tm fields(int year, int month, int day, int hour, int minute, int second) {
  return tm{second, minute, hour, day, month - 1, year - 1900, 0, 0, -1};  // daylight saving unknown
}

TEST(TimeValue, MkgmtimeConvertsUtcFieldsAndNormalisesTheCallersStructure) {
  EXPECT_EQ(static_cast<__int64>(_time_t::mkgmtime(fields(2020, 1, 2, 3, 4, 5))), kJan2nd2020);
  tm overflowing = fields(2019, 13, 2, 3, 4, 5);  // month 13 is January of the next year
  EXPECT_EQ(static_cast<__int64>(_time_t::mkgmtime(&overflowing)), kJan2nd2020);
  EXPECT_EQ(overflowing.tm_year, 120);
  EXPECT_EQ(overflowing.tm_mon, 0);
  EXPECT_EQ(overflowing.tm_wday, 4);  // a Thursday
  EXPECT_EQ(_time_t::mkgmtime(static_cast<const tm*>(nullptr)), _time_t::invalid);
}

// The local producers apply the zone with its daylight saving; the tm forms
// normalise the caller's structure in place (assignment from a tm forwards to
// them).
TEST(TimeValue, LocalProducersApplyTheZoneAndNormaliseTheTmInPlace) {
  SKIP_UNLESS_BERLIN_ZONE();
  EXPECT_EQ(static_cast<__int64>(_time_t::mktime(2021, 1, 1, 0, 0, 0)), 1609455600);  // CET
  tm january32nd = fields(2021, 1, 32, 12, 0, 0);
  EXPECT_EQ(static_cast<__int64>(_time_t(january32nd)), 1612177200);  // 2021-02-01 12:00 CET
  EXPECT_EQ(january32nd.tm_mon, 1);
  EXPECT_EQ(january32nd.tm_mday, 1);
  EXPECT_EQ(january32nd.tm_isdst, 0);
  tm summer = fields(2021, 7, 1, 12, 0, 0);
  EXPECT_EQ(static_cast<__int64>(_time_t(&summer)), 1625133600);
  EXPECT_EQ(summer.tm_isdst, 1);
  EXPECT_EQ(_time_t(static_cast<const tm*>(nullptr)), _time_t::invalid);
}

}  // namespace
