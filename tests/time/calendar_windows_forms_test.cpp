#include "berlin_zone.h"

#include <qz/errors/generic.h>
#include <qz/time/time.h>

#include "support/error_code.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>

namespace {

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
// producer ignores both.
TEST(TimeWindowsForms, SystemTimesCarryAndTakeTheBrokenDownFieldsOnly) {
  const _time_t t(kSummerNoonBerlin);
  const SYSTEMTIME utc = t.systemtime();
  SYSTEMTIME st = {2021, 7, 0, 1, 10, 0, 0, 0};
  EXPECT_EQ(std::memcmp(&utc, &st, sizeof st), 0);
  st.wDayOfWeek = 3, st.wMilliseconds = 999;
  EXPECT_EQ(_time_t::mktime(st, true), t);
  SKIP_UNLESS_BERLIN_ZONE();
  const SYSTEMTIME local = t.localsystemtime();
  EXPECT_EQ(local.wHour, 12);
  EXPECT_EQ(local.wDayOfWeek, 0);
  EXPECT_EQ(_time_t::mktime(local, false), t);
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
