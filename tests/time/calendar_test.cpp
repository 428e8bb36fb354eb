// The calendar time: its producers, its texts, its local days and its
// Windows forms.
#include "berlin_zone.h"

#include <qz/errors/generic.h>
#include <qz/time/time.h>

#include "support/error_code.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <tuple>

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
  EXPECT_EQ(std::make_tuple(overflowing.tm_year, overflowing.tm_mon, overflowing.tm_wday),
            std::make_tuple(120, 0, 4));  // a Thursday
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
  EXPECT_EQ(std::make_tuple(january32nd.tm_mon, january32nd.tm_mday, january32nd.tm_isdst), std::make_tuple(1, 1, 0));
  tm summer = fields(2021, 7, 1, 12, 0, 0);
  EXPECT_EQ(static_cast<__int64>(_time_t(&summer)), 1625133600);
  EXPECT_EQ(summer.tm_isdst, 1);
  EXPECT_EQ(_time_t(static_cast<const tm*>(nullptr)), _time_t::invalid);
}

// Values the runtime cannot show (invalid, before the epoch) give the
// placeholder; only -1 is invalid.
TEST(TimeText, CtimeIsLocalWithoutTrailingNewlineOrThePlaceholder) {
  EXPECT_FALSE(_time_t(-1).valid());
  EXPECT_EQ(_time_t::invalid.ctime(), "<invalid time>");
  EXPECT_TRUE(_time_t(-2).valid());
  EXPECT_EQ(_time_t(-2).ctime(), "<invalid time>");
  SKIP_UNLESS_BERLIN_ZONE();
  EXPECT_EQ(_time_t(1616893199).ctime(), "Sun Mar 28 01:59:59 2021");
  EXPECT_EQ(_time_t(1616893200).ctime(), "Sun Mar 28 03:00:00 2021");
}

TEST(TimeText, Iso8601IsUtcAndRoundTripsThroughTheParser) {
  EXPECT_EQ(_time_t(1577934245).iso8601time(), "2020-01-02T03:04:05.000");
  for (__int64 t : {0LL, 951782400LL /* 2000-02-29 */, 32535215999LL}) {
    const _time_t value(t);
    EXPECT_EQ(_time_t::mktime(value.iso8601time()), value) << value.iso8601time();
  }
  // The parser ignores the tail but needs all six fields.
  const _time_t expected(1577934245);
  for (const char* text : {"2020-01-02T03:04:05", "2020-01-02T03:04:05.999Z"})
    EXPECT_EQ(_time_t::mktime(std::string(text)), expected) << text;
  for (const char* text : {"2020-01-02T03:04", "", "2020/01/02T03:04:05"})
    EXPECT_EQ(_time_t::mktime(std::string(text)), _time_t::invalid) << text;
}

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
      {1616925600, 1616886000, 1616968800, 1616799600},  // 2021-03-28 12:00 CEST
      {1635638400, 1635631200, 1635721200, 1635544800},  // 2021-10-31 02:00 CEST
      {1635642000, 1635631200, 1635721200, 1635544800},  // 2021-10-31 02:00 CET
  };
  for (const auto& c : cases) {
    const _time_t t(c.t);
    EXPECT_EQ(static_cast<__int64>(t.trunc2localday()), c.day) << c.t;
    EXPECT_EQ(static_cast<__int64>(t.nextlocalday()), c.next) << c.t;
    EXPECT_EQ(static_cast<__int64>(t.prevlocalday()), c.prev) << c.t;
  }
}


const __int64 kSummerNoonBerlin = 1625133600;  // 2021-07-01 10:00:00 UTC
const double kUnixEpochDate = 25569.0;         // 1970-01-01 as an automation date

// The values of the assertion `call` raises in the time code.
std::string refusal(const std::function<void()>& call) {
  try {
    call();
  } catch (const EGeneric& e) {
    return qz_test::ValuesOf(e);
  }
  return "no assertion";
}

std::string assertion(const std::string& condition, int line, const std::string& function) {
  return "Text=Condition not meet;Condition=" + condition + ";SourceFile=Time;SourceLine=" + std::to_string(line) +
         ";SourceFunction=" + function + ";";
}

// Only the broken-down fields are set: no weekday, no milliseconds; the
// producer ignores both. File times round-trip as UTC.
TEST(TimeWindowsForms, SystemAndFileTimesRoundTrip) {
  const _time_t t(kSummerNoonBerlin);
  const SYSTEMTIME utc = t.systemtime();
  SYSTEMTIME st = {2021, 7, 0, 1, 10, 0, 0, 0};
  EXPECT_EQ(std::memcmp(&utc, &st, sizeof st), 0);
  st.wDayOfWeek = 3, st.wMilliseconds = 999;
  EXPECT_EQ(_time_t::mktime(st, true), t);
  const FILETIME ft = t.filetime();
  EXPECT_EQ(ULARGE_INTEGER({{ft.dwLowDateTime, ft.dwHighDateTime}}).QuadPart,
            (static_cast<unsigned __int64>(kSummerNoonBerlin) + 11644473600ULL) * 10000000ULL);
  EXPECT_EQ(_time_t::mktime(ft, true), t);
  SKIP_UNLESS_BERLIN_ZONE();
  const SYSTEMTIME local = t.localsystemtime();
  EXPECT_EQ(local.wHour, 12);
  EXPECT_EQ(local.wDayOfWeek, 0);
  EXPECT_EQ(_time_t::mktime(local, false), t);
}

// Zero and invalid map onto each other.
TEST(TimeWindowsForms, AutomationDatesConvertBothWaysWithinTheSystemRange) {
  EXPECT_EQ(_time_t::invalid.varianttime(), 0.0);
  for (bool utc : {true, false}) EXPECT_EQ(_time_t(_variant_t(0.0, VT_DATE), utc), _time_t::invalid);
  EXPECT_EQ(_time_t(0).varianttime(), kUnixEpochDate);
  EXPECT_EQ(static_cast<__int64>(_time_t::mktime(kUnixEpochDate + 0.5, true)), 43200);
  const _time_t t(kSummerNoonBerlin);
  EXPECT_EQ(_time_t::mktime(t.varianttime(), true), t);
  // Only the date member is read: a double variant with the same bits works.
  EXPECT_EQ(_time_t(_variant_t(t.varianttime()), true), t);
  EXPECT_EQ(_time_t::mktime(3.0e6, true), _time_t::invalid);   // past 9999-12-31
  EXPECT_EQ(_time_t::mktime(-1.0e6, true), _time_t::invalid);  // before year 100
  SKIP_UNLESS_BERLIN_ZONE();
  EXPECT_DOUBLE_EQ(t.localvarianttime(), t.varianttime() + 2.0 / 24);
  EXPECT_EQ(_time_t(_variant_t(t.localvarianttime(), VT_DATE), false), t);
}

TEST(TimeWindowsForms, RefusedConversionsRaiseTheAssertion) {
  FILETIME negative = {0, 0x80000000u};
  EXPECT_EQ(refusal([&] { _time_t::mktime(negative, true); }),
            assertion("FileTimeToSystemTime( &FileTime, &SystemTime )", 139, "_time_t::mktime"));
  // Negative times do not break down; the runtime's -1 fields are no date.
  EXPECT_EQ(refusal([] { _time_t(-2).varianttime(); }),
            assertion("SystemTimeToVariantTime( &SystemTime, &VariantTime ) != 0", 198, "_time_t::varianttime"));
  // The local form does not single out invalid.
  EXPECT_EQ(refusal([] { _time_t::invalid.localvarianttime(); }),
            assertion("SystemTimeToVariantTime( &SystemTime, &VariantTime ) != 0", 211, "_time_t::localvarianttime"));
}

}  // namespace
