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

// Every reader on one stored value: doubles truncate toward zero and reach
// __int64 through 32 bits but unsigned long through 64; time reads as its
// seconds; text goes through the runtime parsers and no number is zero;
// 32-bit kinds keep their bits and widen by signedness; a bool is 0 or 1; a
// container reads its first element.
struct Reading {
  _value_t value;
  int as_int;
  unsigned long as_ulong;
  __int64 as_int64;
  double as_double;
  bool as_bool;
};

TEST(ValueLenient, EveryReaderOnEachKind) {
  const Reading grid[] = {
      {-2.7, -2, 4294967294UL, -2, -2.7, true},  // -2 in 64 bits, low 32 kept
      {0.9, 0, 0UL, 0, 0.9, false},              // truncated to 0 first
      {-1.5, -1, 4294967295UL, -1, -1.5, true},
      {3e10, INT_MIN, 4230196224UL, INT_MIN, 3e10, true},  // low 32 bits of 30000000000
      {_time_t(kTwoTo32 + 5), 5, 5UL, kTwoTo32 + 5, 4294967301.0, true},
      {"42abc", 42, 42UL, 42, 42.0, true},
      {"abc", 0, 0UL, 0, 0.0, false},
      {"", 0, 0UL, 0, 0.0, false},
      {L"17", 17, 17UL, 17, 17.0, true},
      {_bstr_t(L"-8"), -8, 4294967288UL, -8, -8.0, true},
      {4294967295UL, -1, 4294967295UL, 4294967295LL, 4294967295.0, true},
      {-1, -1, 4294967295UL, -1, -1.0, true},
      {0UL, 0, 0UL, 0, 0.0, false},
      {true, 1, 1UL, 1, 1.0, true},
      {false, 0, 0UL, 0, 0.0, false},
      {std::vector<std::string>{"7", "8"}, 7, 7UL, 7, 7.0, true},
  };
  for (const Reading& r : grid) {
    SCOPED_TRACE(_value_t(r.value).as_string());
    EXPECT_EQ(r.value.as_int(), r.as_int);
    EXPECT_EQ(r.value.as_ulong(), r.as_ulong);
    EXPECT_EQ(r.value.as_int64(), r.as_int64);
    EXPECT_DOUBLE_EQ(r.value.as_double(), r.as_double);
    EXPECT_EQ(r.value.as_bool(), r.as_bool);
  }
  EXPECT_EQ(_value_t(std::nan("")).as_int(), INT_MIN);
  EXPECT_FALSE(_value_t(_time_t()).as_bool());
  EXPECT_DOUBLE_EQ(_value_t("2.5x").as_double(), 2.5);
  EXPECT_EQ(_value_t("9000000000").as_int64(), 9000000000LL);
  EXPECT_EQ(_value_t("4294967295").as_ulong(), 4294967295UL);
  EXPECT_EQ(_value_t("-1").as_ulong(), 4294967295UL);  // strtoul negates
}

TEST(ValueLenient, TextIsTrueWhenItSaysTrueInAnyCaseOrIsANonZeroNumber) {
  EXPECT_TRUE(_value_t("TRUE").as_bool());
  EXPECT_TRUE(_value_t(L"tRuE").as_bool());
  EXPECT_TRUE(_value_t("2").as_bool());
  EXPECT_TRUE(_value_t("-1 apple").as_bool());
  EXPECT_FALSE(_value_t("yes").as_bool());
  EXPECT_FALSE(_value_t("0").as_bool());
  EXPECT_FALSE(_value_t("true ").as_bool());  // the whole text must match
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
  EXPECT_DOUBLE_EQ(_value_t(std::vector<double>{1.5, 9}).as_double(), 1.5);
  EXPECT_THROW(_value_t(std::vector<int>{}).as_int(), std::out_of_range);
}

}  // namespace
