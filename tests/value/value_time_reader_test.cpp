// as_time reads numbers as seconds since 1970 and text in the ISO form.
#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace {

// 2020-01-02T03:04:05 UTC.
const __int64 kSecondsOfSample = 1577934245;

TEST(ValueTimeReader, NumbersAreSecondsSinceTheEpochAndTimeIsItself) {
  EXPECT_EQ(_value_t(86400).as_time(), _time_t(86400));
  EXPECT_EQ(_value_t(-5).as_time(), _time_t(-5));
  EXPECT_EQ(_value_t(4000000000UL).as_time(), _time_t(4000000000LL));  // zero-extended
  EXPECT_EQ(_value_t(kSecondsOfSample).as_time(), _time_t(kSecondsOfSample));
  EXPECT_EQ(_value_t(_time_t(kSecondsOfSample)).as_time(), _time_t(kSecondsOfSample));
  EXPECT_FALSE(_value_t(_time_t::invalid).as_time().valid());
}

TEST(ValueTimeReader, DoubleTruncatesAndOutOfRangeIsInvalid) {
  EXPECT_EQ(_value_t(1.9).as_time(), _time_t(1));
  EXPECT_EQ(_value_t(-1.9).as_time(), _time_t(-1));
  EXPECT_EQ(_value_t(3e10).as_time(), _time_t(30000000000LL));  // no 32-bit detour here
  EXPECT_FALSE(_value_t(1e30).as_time().valid());
  EXPECT_FALSE(_value_t(std::nan("")).as_time().valid());
}

TEST(ValueTimeReader, TextIsTheIsoFormInUtc) {
  EXPECT_EQ(_value_t("2020-01-02T03:04:05.000").as_time(), _time_t(kSecondsOfSample));
  EXPECT_EQ(_value_t(L"2020-01-02T03:04:05").as_time(), _time_t(kSecondsOfSample));
  EXPECT_FALSE(_value_t("2020-01-02").as_time().valid());
  EXPECT_FALSE(_value_t("soon").as_time().valid());
  const _time_t sample(kSecondsOfSample);
  EXPECT_EQ(_value_t(sample.iso8601time()).as_time(), sample);
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
