#include "berlin_zone.h"

#include <qz/errors/generic.h>
#include <qz/time/time.h>

#include <gtest/gtest.h>

#include <functional>

namespace {

const __int64 kSummerNoonBerlin = 1625133600;  // 2021-07-01 10:00:00 UTC
const double kUnixEpochDate = 25569.0;         // 1970-01-01 as an automation date

void expect_time_assertion(const std::function<void()>& call, const char* condition, int line,
                           const char* function) {
  try {
    call();
    ADD_FAILURE() << function << " did not raise its assertion";
  } catch (const EGeneric& e) {
    const EGeneric::value_list& values = e.values();
    ASSERT_EQ(values.size(), 5u);
    EXPECT_EQ(values[0].first, "Text");
    EXPECT_EQ(std::string(values[0].second), "Condition not meet");
    EXPECT_EQ(values[1].first, "Condition");
    EXPECT_EQ(std::string(values[1].second), condition);
    EXPECT_EQ(values[2].first, "SourceFile");
    EXPECT_EQ(std::string(values[2].second), "Time");
    EXPECT_EQ(values[3].first, "SourceLine");
    EXPECT_EQ(static_cast<int>(values[3].second), line);
    EXPECT_EQ(values[4].first, "SourceFunction");
    EXPECT_EQ(std::string(values[4].second), function);
  }
}

TEST(TimeWindowsForms, SystemTimesCarryTheBrokenDownFieldsOnly) {
  const _time_t t(kSummerNoonBerlin);
  const SYSTEMTIME utc = t.systemtime();
  EXPECT_EQ(utc.wYear, 2021);
  EXPECT_EQ(utc.wMonth, 7);
  EXPECT_EQ(utc.wDay, 1);
  EXPECT_EQ(utc.wHour, 10);
  EXPECT_EQ(utc.wMinute, 0);
  EXPECT_EQ(utc.wSecond, 0);
  EXPECT_EQ(utc.wDayOfWeek, 0);  // a Thursday, but not filled in
  EXPECT_EQ(utc.wMilliseconds, 0);
  SKIP_UNLESS_BERLIN_ZONE();
  const SYSTEMTIME local = t.localsystemtime();
  EXPECT_EQ(local.wHour, 12);
  EXPECT_EQ(local.wDayOfWeek, 0);
}

TEST(TimeWindowsForms, SystemTimeProducerIgnoresMillisecondsAndWeekday) {
  SYSTEMTIME st = {};
  st.wYear = 2021;
  st.wMonth = 7;
  st.wDay = 1;
  st.wHour = 10;
  st.wDayOfWeek = 3;
  st.wMilliseconds = 999;
  EXPECT_EQ(static_cast<__int64>(_time_t::mktime(st, true)), kSummerNoonBerlin);
  SKIP_UNLESS_BERLIN_ZONE();
  st.wHour = 12;
  EXPECT_EQ(static_cast<__int64>(_time_t::mktime(st, false)), kSummerNoonBerlin);
}

TEST(TimeWindowsForms, FileTimeRoundTripsAsUtc) {
  const _time_t t(kSummerNoonBerlin);
  const FILETIME ft = t.filetime();
  ULARGE_INTEGER ticks;
  ticks.LowPart = ft.dwLowDateTime;
  ticks.HighPart = ft.dwHighDateTime;
  EXPECT_EQ(ticks.QuadPart, (static_cast<unsigned __int64>(kSummerNoonBerlin) + 11644473600ULL) * 10000000ULL);
  EXPECT_EQ(_time_t::mktime(ft, true), t);
}

TEST(TimeWindowsForms, AutomationDateZeroAndInvalidMapOntoEachOther) {
  EXPECT_EQ(_time_t::invalid.varianttime(), 0.0);
  EXPECT_EQ(_time_t::mktime(0.0, true), _time_t::invalid);
  EXPECT_EQ(_time_t::mktime(0.0, false), _time_t::invalid);
  EXPECT_EQ(_time_t(_variant_t(0.0, VT_DATE), true), _time_t::invalid);
  EXPECT_EQ(_time_t(_variant_t(0.0, VT_DATE), false), _time_t::invalid);
}

TEST(TimeWindowsForms, AutomationDatesConvertBothWays) {
  EXPECT_EQ(_time_t(0).varianttime(), kUnixEpochDate);
  EXPECT_EQ(static_cast<__int64>(_time_t::mktime(kUnixEpochDate + 0.5, true)), 43200);
  const _time_t t(kSummerNoonBerlin);
  EXPECT_EQ(_time_t::mktime(t.varianttime(), true), t);
  EXPECT_EQ(_time_t(_variant_t(t.varianttime(), VT_DATE), true), t);
  // Only the date member is read: a double variant with the same bits works.
  EXPECT_EQ(_time_t(_variant_t(t.varianttime()), true), t);
}

TEST(TimeWindowsForms, LocalAutomationDateUsesTheZone) {
  SKIP_UNLESS_BERLIN_ZONE();
  const _time_t t(kSummerNoonBerlin);
  EXPECT_DOUBLE_EQ(t.localvarianttime(), t.varianttime() + 2.0 / 24);
  EXPECT_EQ(_time_t::mktime(t.localvarianttime(), false), t);
  EXPECT_EQ(_time_t(_variant_t(t.localvarianttime(), VT_DATE), false), t);
}

TEST(TimeWindowsForms, AutomationDatesOutsideTheSystemRangeAreInvalid) {
  EXPECT_EQ(_time_t::mktime(3.0e6, true), _time_t::invalid);   // past 9999-12-31
  EXPECT_EQ(_time_t::mktime(-1.0e6, true), _time_t::invalid);  // before year 100
}

TEST(TimeWindowsForms, RefusedConversionsRaiseTheAssertion) {
  expect_time_assertion(
      [] {
        FILETIME negative;
        negative.dwLowDateTime = 0;
        negative.dwHighDateTime = 0x80000000u;
        _time_t::mktime(negative, true);
      },
      "FileTimeToSystemTime( &FileTime, &SystemTime )", 139, "_time_t::mktime");
  // Negative times do not break down; the runtime's -1 fields are no date.
  const _time_t before_epoch(-2);
  expect_time_assertion([&] { before_epoch.varianttime(); },
                        "SystemTimeToVariantTime( &SystemTime, &VariantTime ) != 0", 198, "_time_t::varianttime");
  expect_time_assertion([&] { before_epoch.filetime(); }, "SystemTimeToFileTime( &SystemTime, &FileTime ) != 0", 284,
                        "_time_t::filetime");
  // The local form does not single out invalid.
  expect_time_assertion([] { _time_t::invalid.localvarianttime(); },
                        "SystemTimeToVariantTime( &SystemTime, &VariantTime ) != 0", 211,
                        "_time_t::localvarianttime");
}

}  // namespace
