#include "berlin_zone.h"

#include <qz/time/time.h>

#include <gtest/gtest.h>

namespace {

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

TEST(TimeText, Iso8601IsUtcAndRoundTrips) {
  EXPECT_EQ(_time_t(0).iso8601time(), "1970-01-01T00:00:00.000");
  EXPECT_EQ(_time_t(1577934245).iso8601time(), "2020-01-02T03:04:05.000");
  for (__int64 t : {0LL, 1LL, 951782400LL /* 2000-02-29 */, 4102444800LL /* 2100 */, 32535215999LL}) {
    const _time_t value(t);
    EXPECT_EQ(_time_t::mktime(value.iso8601time()), value) << value.iso8601time();
  }
}

TEST(TimeText, IsoParserIgnoresTheTailButNeedsAllSixFields) {
  const _time_t expected(1577934245);
  for (const char* text : {"2020-01-02T03:04:05", "2020-01-02T03:04:05Z", "2020-01-02T03:04:05.999"})
    EXPECT_EQ(_time_t::mktime(std::string(text)), expected) << text;
  for (const char* text : {"2020-01-02", "2020-01-02T03:04", "", "yesterday", "2020/01/02T03:04:05"})
    EXPECT_EQ(_time_t::mktime(std::string(text)), _time_t::invalid) << text;
}

}  // namespace
