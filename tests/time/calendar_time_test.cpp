#include "berlin_zone.h"

#include <qz/time/time.h>

#include <gtest/gtest.h>

#include <climits>

namespace {

// 2020-01-02 03:04:05 UTC.
const __int64 kJan2nd2020 = 1577934245;

// The protected UTC-or-local producer behind the public ones.
struct TimeProbe : _time_t {
  using _time_t::mktime;
};

tm fields(int year, int month, int day, int hour, int minute, int second) {
  tm t = {};
  t.tm_year = year - 1900;
  t.tm_mon = month - 1;
  t.tm_mday = day;
  t.tm_hour = hour;
  t.tm_min = minute;
  t.tm_sec = second;
  t.tm_isdst = -1;
  return t;
}

TEST(TimeValue, DefaultIsTheValidEpochAndMinusOneIsInvalid) {
  EXPECT_EQ(static_cast<__int64>(_time_t()), 0);
  EXPECT_TRUE(_time_t().valid());
  EXPECT_EQ(static_cast<__int64>(_time_t::invalid), -1);
  EXPECT_FALSE(_time_t::invalid.valid());
  EXPECT_EQ(_time_t(static_cast<__int64>(-1)), _time_t::invalid);
  EXPECT_FALSE(_time_t(-1).valid());
  EXPECT_TRUE(_time_t(-2).valid());
}

TEST(TimeValue, IntConstructorSignExtends) {
  EXPECT_EQ(static_cast<__int64>(_time_t(-5)), -5LL);
  EXPECT_EQ(static_cast<__int64>(_time_t(INT_MIN)), static_cast<__int64>(INT_MIN));
  EXPECT_EQ(static_cast<__int64>(_time_t(0x7fffffff)), 0x7fffffffLL);
}

TEST(TimeValue, CurrentTimeIsTheRuntimeClock) {
  const __int64 before = _time64(nullptr);
  const __int64 now = _time_t::time();
  const __int64 after = _time64(nullptr);
  EXPECT_LE(before, now);
  EXPECT_LE(now, after);
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

TEST(TimeValue, ProtectedProducerSelectsUtcOrLocalConversion) {
  EXPECT_EQ(static_cast<__int64>(TimeProbe::mktime(2020, 1, 2, 3, 4, 5, true)), kJan2nd2020);
  EXPECT_EQ(TimeProbe::mktime(2020, 1, 2, 3, 4, 5, false), _time_t::mktime(2020, 1, 2, 3, 4, 5));
}

TEST(TimeValue, LocalProducersApplyTheZoneAndItsDaylightSaving) {
  SKIP_UNLESS_BERLIN_ZONE();
  EXPECT_EQ(static_cast<__int64>(_time_t::mktime(2021, 1, 1, 0, 0, 0)), 1609455600);   // CET
  EXPECT_EQ(static_cast<__int64>(_time_t::mktime(2021, 7, 1, 12, 0, 0)), 1625133600);  // CEST
  EXPECT_EQ(static_cast<__int64>(TimeProbe::mktime(2021, 7, 1, 12, 0, 0, false)), 1625133600);
}

TEST(TimeValue, TmConstructorsAndAssignmentsUseLocalMktimeInPlace) {
  SKIP_UNLESS_BERLIN_ZONE();
  tm january32nd = fields(2021, 1, 32, 12, 0, 0);
  EXPECT_EQ(static_cast<__int64>(_time_t(january32nd)), 1612177200);  // 2021-02-01 12:00 CET
  EXPECT_EQ(january32nd.tm_mon, 1);
  EXPECT_EQ(january32nd.tm_mday, 1);
  EXPECT_EQ(january32nd.tm_isdst, 0);

  tm summer = fields(2021, 7, 1, 12, 0, 0);
  EXPECT_EQ(static_cast<__int64>(_time_t(&summer)), 1625133600);
  EXPECT_EQ(summer.tm_isdst, 1);

  _time_t assigned;
  assigned = fields(2021, 7, 1, 12, 0, 0);
  EXPECT_EQ(static_cast<__int64>(assigned), 1625133600);
  tm winter = fields(2021, 1, 1, 0, 0, 0);
  assigned = &winter;
  EXPECT_EQ(static_cast<__int64>(assigned), 1609455600);
  assigned = static_cast<const tm*>(nullptr);
  EXPECT_EQ(assigned, _time_t::invalid);
}

TEST(TimeValue, BreakdownsGiveUtcAndLocalFields) {
  const _time_t noon_summer(static_cast<__int64>(1625133600));  // 2021-07-01 10:00 UTC
  const tm utc = noon_summer.gmtime();
  EXPECT_EQ(utc.tm_year, 121);
  EXPECT_EQ(utc.tm_mon, 6);
  EXPECT_EQ(utc.tm_mday, 1);
  EXPECT_EQ(utc.tm_hour, 10);
  EXPECT_EQ(utc.tm_isdst, 0);
  SKIP_UNLESS_BERLIN_ZONE();
  const tm local = noon_summer.localtime();
  EXPECT_EQ(local.tm_hour, 12);
  EXPECT_EQ(local.tm_isdst, 1);
}

}  // namespace
