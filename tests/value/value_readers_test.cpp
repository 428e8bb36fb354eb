// The readers: the lenient ones convert across kinds by the kind code (these
// tests pin the cells of their table that differ from what a reader might
// guess); the strict sequence conversions read every element through its own
// typed reader, a scalar being a sequence of one.
#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include "value/value_test_support.h"

#include <climits>
#include <cmath>
#include <list>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using value_test::bad_cast_of;

const __int64 kTwoTo32 = 0x100000000LL;

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
      {3e10, INT_MIN, 4230196224UL, INT_MIN, 3e10, true},  // low 32 bits of 30000000000
      {_time_t(kTwoTo32 + 5), 5, 5UL, kTwoTo32 + 5, 4294967301.0, true},
      {"42abc", 42, 42UL, 42, 42.0, true},
      {"abc", 0, 0UL, 0, 0.0, false},
      {_bstr_t(L"-8"), -8, 4294967288UL, -8, -8.0, true},
      {4294967295UL, -1, 4294967295UL, 4294967295LL, 4294967295.0, true},
      {-1, -1, 4294967295UL, -1, -1.0, true},
      {true, 1, 1UL, 1, 1.0, true},
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
  EXPECT_EQ(_value_t("9000000000").as_int64(), 9000000000LL);
  EXPECT_EQ(_value_t("-1").as_ulong(), 4294967295UL);  // strtoul negates
}

// Text is true when it says true in any case, the whole of it, or is a non-zero number.
TEST(ValueLenient, TextIsTrueWhenItSaysTrueOrIsANonZeroNumber) {
  EXPECT_TRUE(_value_t(L"tRuE").as_bool());
  EXPECT_TRUE(_value_t("-1 apple").as_bool());
  EXPECT_FALSE(_value_t("yes").as_bool());
  EXPECT_FALSE(_value_t("true ").as_bool());
}

TEST(ValueLenient, Int64ToIntRefusesButToUlongKeepsTheLowBits) {
  const _value_t wide = kTwoTo32 + 5;
  EXPECT_EQ(wide.as_ulong(), 5UL);
  EXPECT_TRUE(_value_t(kTwoTo32).as_bool());  // the whole value, not its low bits
  EXPECT_EQ(bad_cast_of([&] { wide.as_int(); }), "long long>int");
}

TEST(ValueLenient, ObjectsRefuseEveryNumberAndEmptyContainersHaveNoFirstElement) {
  const _value_t object = static_cast<SmartPtrObj*>(nullptr);
  EXPECT_THROW(object.as_int64(), EBadCastException);
  EXPECT_THROW(object.as_double(), EBadCastException);
  EXPECT_THROW(_value_t(std::vector<int>{}).as_int(), std::out_of_range);
}

// Numbers are seconds since the epoch (doubles truncated, out of range
// invalid), text is the ISO form in UTC, a time is itself.
TEST(ValueTimeReader, EachKindReadsAsItsTime) {
  const _time_t sample(static_cast<__int64>(1577934245));  // 2020-01-02T03:04:05 UTC
  std::pair<_value_t, _time_t> cases[] = {
      {-5, _time_t(-5)},
      {4000000000UL, _time_t(4000000000LL)},  // zero-extended
      {sample, sample},
      {-1.9, _time_t(-1)},
      {3e10, _time_t(30000000000LL)},  // no 32-bit detour here
      {"2020-01-02T03:04:05.000", sample},
      {L"2020-01-02T03:04:05", sample},
  };
  for (auto& [value, time] : cases) EXPECT_EQ(value.as_time(), time) << value.as_string();
  _value_t unreadable[] = {_time_t::invalid, 1e30, std::nan(""), "2020-01-02", "soon"};
  for (_value_t& value : unreadable) EXPECT_FALSE(value.as_time().valid()) << value.as_string();
  EXPECT_EQ(bad_cast_of([] { _value_t(true).as_time(); }), "bool>_time_t");
  EXPECT_THROW(_value_t(static_cast<SmartPtrObj*>(nullptr)).as_time(), EBadCastException);
}

size_t count_of(const std::vector<int>& items) { return items.size(); }

// Copy-initialisation, the form the conversions are meant for.
template <class Sequence>
Sequence read(const _value_t& value) {
  return value;
}

TEST(ValueSequence, ContainerCopiesIntoEachSequenceType) {
  const _value_t numbers = std::vector<int>{3, 1, 3, 2};
  EXPECT_EQ(read<std::list<int>>(numbers), (std::list<int>{3, 1, 3, 2}));
  EXPECT_EQ(read<std::set<int>>(numbers), (std::set<int>{1, 2, 3}));
  EXPECT_EQ(count_of(numbers), 4u);  // binds a const std::vector<int>&
  std::vector<std::string> words{"old"};  // assignment replaces an existing sequence
  words = _value_t(std::vector<std::string>{"a", "b"});
  EXPECT_EQ(words, (std::vector<std::string>{"a", "b"}));
}

TEST(ValueSequence, ElementsConvertAsTheStrictReadersDo) {
  const _value_t numbers = std::vector<int>{-1, 2};
  EXPECT_EQ(read<std::vector<double>>(numbers), (std::vector<double>{-1.0, 2.0}));
  EXPECT_EQ(read<std::vector<unsigned long>>(numbers), (std::vector<unsigned long>{4294967295UL, 2UL}));
  EXPECT_EQ(read<std::set<std::string>>(_value_t(std::vector<std::wstring>{L"b", L"a"})),
            (std::set<std::string>{"a", "b"}));
  EXPECT_EQ(read<std::list<bool>>(_value_t(std::vector<bool>{true, false})), (std::list<bool>{true, false}));
  EXPECT_THROW(read<std::vector<int>>(_value_t(std::vector<std::string>{"1"})), EBadCastException);
  EXPECT_THROW(read<std::set<bool>>(_value_t(std::vector<int>{1})), EBadCastException);  // never int as bool
}

TEST(ValueSequence, ScalarIsASequenceOfOneAndEmptyContainerOfNone) {
  EXPECT_EQ(read<std::vector<__int64>>(_value_t(7)), (std::vector<__int64>{7}));
  EXPECT_EQ(read<std::set<std::wstring>>(_value_t("x")), (std::set<std::wstring>{L"x"}));
  int watched = 4;
  EXPECT_EQ(read<std::list<int>>(_value_t::view(watched)), (std::list<int>{4}));
  EXPECT_TRUE(read<std::vector<int>>(_value_t(std::vector<int>{})).empty());
}

}  // namespace
