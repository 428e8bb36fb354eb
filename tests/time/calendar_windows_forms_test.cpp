#include "berlin_zone.h"

#include <qz/errors/generic.h>
#include <qz/time/time.h>

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>

namespace {

const __int64 kSummerNoonBerlin = 1625133600;  // 2021-07-01 10:00:00 UTC
const double kUnixEpochDate = 25569.0;         // 1970-01-01 as an automation date

void expect_time_assertion(const std::function<void()>& call, const std::string& condition, int line,
                           const std::string& function) {
  try {
    call();
    ADD_FAILURE() << function << " did not raise its assertion";
  } catch (const EGeneric& e) {
    const EGeneric::value_list& values = e.values();
    ASSERT_EQ(values.size(), 5u);
    std::string fields;  // "Name=text;" each, the line as the int it must be
    for (size_t i = 0; i < values.size(); ++i)
      fields += values[i].first + "=" +
                (i == 3 ? std::to_string(static_cast<int>(values[i].second)) : std::string(values[i].second)) + ";";
    EXPECT_EQ(fields, "Text=Condition not meet;Condition=" + condition + ";SourceFile=Time;SourceLine=" +
                          std::to_string(line) + ";SourceFunction=" + function + ";");
  }
}

// Only the broken-down fields are set: no weekday, no milliseconds.
TEST(TimeWindowsForms, SystemTimesCarryTheBrokenDownFieldsOnly) {
  const _time_t t(kSummerNoonBerlin);
  const SYSTEMTIME utc = t.systemtime();
  const SYSTEMTIME expected = {2021, 7, 0, 1, 10, 0, 0, 0};
  EXPECT_EQ(std::memcmp(&utc, &expected, sizeof expected), 0);
  SKIP_UNLESS_BERLIN_ZONE();
  const SYSTEMTIME local = t.localsystemtime();
  EXPECT_EQ(local.wHour, 12);
  EXPECT_EQ(local.wDayOfWeek, 0);
}

TEST(TimeWindowsForms, SystemTimeProducerIgnoresMillisecondsAndWeekday) {
  SYSTEMTIME st = {2021, 7, 3 /* weekday */, 1, 10, 0, 0, 999};
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
  for (bool utc : {true, false}) {
    EXPECT_EQ(_time_t::mktime(0.0, utc), _time_t::invalid);
    EXPECT_EQ(_time_t(_variant_t(0.0, VT_DATE), utc), _time_t::invalid);
  }
}

TEST(TimeWindowsForms, AutomationDatesConvertBothWaysWithinTheSystemRange) {
  EXPECT_EQ(_time_t(0).varianttime(), kUnixEpochDate);
  EXPECT_EQ(static_cast<__int64>(_time_t::mktime(kUnixEpochDate + 0.5, true)), 43200);
  const _time_t t(kSummerNoonBerlin);
  EXPECT_EQ(_time_t::mktime(t.varianttime(), true), t);
  EXPECT_EQ(_time_t(_variant_t(t.varianttime(), VT_DATE), true), t);
  // Only the date member is read: a double variant with the same bits works.
  EXPECT_EQ(_time_t(_variant_t(t.varianttime()), true), t);
  EXPECT_EQ(_time_t::mktime(3.0e6, true), _time_t::invalid);   // past 9999-12-31
  EXPECT_EQ(_time_t::mktime(-1.0e6, true), _time_t::invalid);  // before year 100
}

TEST(TimeWindowsForms, LocalAutomationDateUsesTheZone) {
  SKIP_UNLESS_BERLIN_ZONE();
  const _time_t t(kSummerNoonBerlin);
  EXPECT_DOUBLE_EQ(t.localvarianttime(), t.varianttime() + 2.0 / 24);
  EXPECT_EQ(_time_t::mktime(t.localvarianttime(), false), t);
  EXPECT_EQ(_time_t(_variant_t(t.localvarianttime(), VT_DATE), false), t);
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
