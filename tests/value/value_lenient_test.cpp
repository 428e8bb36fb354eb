// The lenient readers convert across kinds by the kind code; these tests pin
// the cells of their table that differ from what a reader might guess.
#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include "value/value_test_support.h"

#include <climits>
#include <cmath>
#include <string>
#include <vector>

namespace {

using value_test::bad_cast_of;

const __int64 kTwoTo32 = 0x100000000LL;

TEST(ValueLenient, EveryReaderRefusesAnEmptyValueFromVoidToItsResult) {
  const _value_t empty;
  EXPECT_EQ(bad_cast_of([&] { empty.as_int(); }), "void>int");
  EXPECT_EQ(bad_cast_of([&] { empty.as_ulong(); }), "void>unsigned long");
  EXPECT_EQ(bad_cast_of([&] { empty.as_int64(); }), "void>long long");
  EXPECT_EQ(bad_cast_of([&] { empty.as_bool(); }), "void>bool");
  EXPECT_EQ(bad_cast_of([&] { empty.as_double(); }), "void>double");
}

TEST(ValueLenient, DoubleTruncatesTowardZero) {
  const _value_t negative = -2.7;
  EXPECT_EQ(negative.as_int(), -2);
  EXPECT_EQ(negative.as_int64(), -2);
  EXPECT_EQ(negative.as_ulong(), 4294967294UL);  // -2 in 64 bits, low 32 kept
  EXPECT_FALSE(_value_t(0.9).as_bool());  // truncated to 0 first
  EXPECT_TRUE(_value_t(-1.5).as_bool());
  // To __int64 through 32 bits, to unsigned long through 64.
  const _value_t big = 3e10;
  EXPECT_EQ(big.as_int64(), INT_MIN);  // the processor's answer out of range
  EXPECT_EQ(big.as_int(), INT_MIN);
  EXPECT_EQ(big.as_ulong(), 4230196224UL);  // low 32 bits of 30000000000
  EXPECT_TRUE(big.as_bool());
  EXPECT_EQ(_value_t(std::nan("")).as_int(), INT_MIN);
}

TEST(ValueLenient, TimeReadsAsItsSeconds) {
  const _value_t later = _time_t(kTwoTo32 + 5);
  EXPECT_EQ(later.as_int(), 5);
  EXPECT_EQ(later.as_int64(), kTwoTo32 + 5);
  EXPECT_DOUBLE_EQ(later.as_double(), 4294967301.0);
  EXPECT_TRUE(later.as_bool());
  EXPECT_FALSE(_value_t(_time_t()).as_bool());
}

TEST(ValueLenient, TextGoesThroughTheRuntimeParsersAndNoNumberIsZero) {
  const _value_t number = "42abc";
  EXPECT_EQ(number.as_int(), 42);
  EXPECT_EQ(number.as_ulong(), 42UL);
  EXPECT_DOUBLE_EQ(_value_t("2.5x").as_double(), 2.5);
  EXPECT_EQ(_value_t("9000000000").as_int64(), 9000000000LL);
  EXPECT_EQ(_value_t("4294967295").as_ulong(), 4294967295UL);
  EXPECT_EQ(_value_t("-1").as_ulong(), 4294967295UL);  // strtoul negates
  EXPECT_EQ(_value_t(L"17").as_int(), 17);
  EXPECT_EQ(_value_t(_bstr_t(L"-8")).as_int64(), -8);
  const _value_t words = "abc";  // no number: zero
  EXPECT_EQ(words.as_int64(), 0);
  EXPECT_EQ(words.as_double(), 0.0);
  EXPECT_EQ(_value_t("").as_int(), 0);
}

TEST(ValueLenient, TextIsTrueWhenItSaysTrueInAnyCaseOrIsANonZeroNumber) {
  EXPECT_TRUE(_value_t("TRUE").as_bool());
  EXPECT_TRUE(_value_t(L"tRuE").as_bool());
  EXPECT_TRUE(_value_t("2").as_bool());
  EXPECT_TRUE(_value_t("-1 apple").as_bool());
  EXPECT_FALSE(_value_t("yes").as_bool());
  EXPECT_FALSE(_value_t("0").as_bool());
  EXPECT_FALSE(_value_t("true ").as_bool());  // the whole text must match
  EXPECT_EQ(_value_t(true).as_int64(), 1);  // bool reads as zero or one
  EXPECT_EQ(_value_t(true).as_double(), 1.0);
  EXPECT_EQ(_value_t(false).as_int64(), 0);
}

TEST(ValueLenient, ThirtyTwoBitKindsKeepTheirBitsAndWidenBySignedness) {
  const _value_t all_bits = 4294967295UL;
  EXPECT_EQ(all_bits.as_int(), -1);
  EXPECT_EQ(all_bits.as_int64(), 4294967295LL);
  EXPECT_EQ(all_bits.as_double(), 4294967295.0);
  const _value_t minus_one = -1;
  EXPECT_EQ(minus_one.as_ulong(), 4294967295UL);
  EXPECT_EQ(minus_one.as_int64(), -1);
  EXPECT_EQ(minus_one.as_double(), -1.0);
  EXPECT_TRUE(minus_one.as_bool());
  EXPECT_FALSE(_value_t(0UL).as_bool());
}

TEST(ValueLenient, Int64ToIntRefusesButToUlongKeepsTheLowBits) {
  const _value_t wide = kTwoTo32 + 5;
  EXPECT_EQ(wide.as_ulong(), 5UL);
  EXPECT_TRUE(_value_t(kTwoTo32).as_bool());  // the whole value, not its low bits
  EXPECT_EQ(wide.as_double(), 4294967301.0);
  EXPECT_EQ(bad_cast_of([&] { wide.as_int(); }), "long long>int");
}

TEST(ValueLenient, ObjectsRefuseEveryNumber) {
  const _value_t object = static_cast<SmartPtrObj*>(nullptr);
  EXPECT_THROW(object.as_int64(), EBadCastException);
  EXPECT_THROW(object.as_double(), EBadCastException);
  // A container reads its first element.
  const _value_t numbers = std::vector<std::string>{"7", "8"};
  EXPECT_EQ(numbers.as_int(), 7);
  EXPECT_DOUBLE_EQ(_value_t(std::vector<double>{1.5, 9}).as_double(), 1.5);
  EXPECT_THROW(_value_t(std::vector<int>{}).as_int(), std::out_of_range);
}

}  // namespace
