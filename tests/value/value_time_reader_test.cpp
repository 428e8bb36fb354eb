// as_time reads numbers as seconds since 1970 and text in the ISO form.
#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <utility>

namespace {

// 2020-01-02T03:04:05 UTC.
const __int64 kSecondsOfSample = 1577934245;

// Numbers are seconds since the epoch (doubles truncated, out of range
// invalid), text is the ISO form in UTC, a time is itself.
TEST(ValueTimeReader, EachKindReadsAsItsTime) {
  const _time_t sample(kSecondsOfSample);
  const _time_t invalid = _time_t::invalid;
  std::pair<_value_t, _time_t> cases[] = {
      {86400, _time_t(86400)},
      {-5, _time_t(-5)},
      {4000000000UL, _time_t(4000000000LL)},  // zero-extended
      {kSecondsOfSample, sample},
      {sample, sample},
      {1.9, _time_t(1)},
      {-1.9, _time_t(-1)},
      {3e10, _time_t(30000000000LL)},  // no 32-bit detour here
      {"2020-01-02T03:04:05.000", sample},
      {L"2020-01-02T03:04:05", sample},
      {sample.iso8601time(), sample},
  };
  for (auto& [value, time] : cases) EXPECT_EQ(value.as_time(), time) << value.as_string();
  _value_t unreadable[] = {invalid, 1e30, std::nan(""), "2020-01-02", "soon"};
  for (_value_t& value : unreadable) EXPECT_FALSE(value.as_time().valid()) << value.as_string();
}

TEST(ValueTimeReader, BoolsObjectsAndEmptyValuesRefuse) {
  EXPECT_THROW(_value_t(true).as_time(), EBadCastException);
  EXPECT_THROW(_value_t(static_cast<SmartPtrObj*>(nullptr)).as_time(), EBadCastException);
  try {
    _value_t().as_time();
    FAIL() << "as_time of an empty value";
  } catch (const EBadCastException& e) {
    EXPECT_EQ(std::string(e.get_value("From")), "void");
    EXPECT_EQ(std::string(e.get_value("To")), "_time_t");
  }
}

}  // namespace
