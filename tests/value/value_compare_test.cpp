// Comparison reads the right operand as the left operand's kind: equal and
// less of a storage read the other side through its own typed operations.
#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

template <class T>
_value_t_cont_t<T> sequence(std::vector<T> items) {
  return _value_t_cont_t<T>(std::move(items));
}

// Lexicographic, and only over contiguous elements of the container's own kind.
TEST(StorageCompare, ContainersCompareLexicographically) {
  const auto shorter = sequence<int>({1, 2});
  EXPECT_TRUE(shorter.less(sequence<int>({1, 2, 0})));
  EXPECT_TRUE(sequence<int>({1, 1, 9}).less(shorter));
  EXPECT_FALSE(shorter.less(shorter));
  EXPECT_FALSE(shorter.equal(sequence<int>({1, 3})));
  EXPECT_FALSE(shorter.less(_value_t_cont_t<int>()));
  const auto numbers = sequence<int>({1});
  EXPECT_TRUE(numbers.equal(_value_t_data_t<int>(1)));
  EXPECT_THROW(numbers.equal(_value_t_data_t<unsigned long>(1)), EBadCastException);
  EXPECT_THROW(numbers.equal(sequence<__int64>({1})), EBadCastException);
  EXPECT_FALSE(numbers.equal(sequence<std::string>({"a", "b"})));  // lengths differ first
}

TEST(StorageCompare, BoolContainersAndTheirElementViewsCompareTheirBits) {
  const auto bits = sequence<bool>({true, false});
  EXPECT_FALSE(bits.equal(sequence<bool>({true, true})));
  EXPECT_TRUE(bits.less(sequence<bool>({true, true})));
  EXPECT_TRUE(sequence<bool>({false}).less(_value_t_data_t<bool>(true)));
  EXPECT_THROW(sequence<bool>({true}).equal(sequence<int>({1})), EBadCastException);
  const _value_t_data& constant = bits;
  std::unique_ptr<_value_t_data> first(constant.get(0ULL));
  EXPECT_TRUE(first->equal(_value_t_data_t<bool>(true)));
  EXPECT_TRUE(sequence<bool>({true}).equal(*first));
  EXPECT_TRUE(_value_t_data_t<bool>(false).less(*first));
}

// Each operator reads its right side as the left kind: a double reads an int,
// an int reads no double, whichever way round the operator points.
TEST(ValueCompare, EveryOperatorReadsTheRightSideAsTheLeftKind) {
  const _value_t five = 5, half = 2.5, two = 2, three = 3;
  EXPECT_TRUE(five == _value_t(5UL));
  EXPECT_TRUE(five != _value_t(std::vector<int>{5, 5}));  // a sequence of another length
  EXPECT_TRUE(_value_t(L"same") == _value_t("same"));
  EXPECT_THROW(static_cast<void>(five != _value_t("5")), EBadCastException);
  EXPECT_TRUE(half > two);
  EXPECT_FALSE(half <= two);
  EXPECT_THROW(static_cast<void>(two < half), EBadCastException);
  EXPECT_THROW(static_cast<void>(two > half), EBadCastException);
  EXPECT_THROW(static_cast<void>(two >= half), EBadCastException);
  EXPECT_TRUE(two < three && !(three < two) && !(two < two));
  EXPECT_TRUE(three > two && !(two > two));
  EXPECT_TRUE(two <= two && !(three <= two));
  EXPECT_TRUE(two >= two && !(two >= three));
}

TEST(ValueCompare, PlainValuesCompareAsValuesHoldingThemAndSetsOrderByLess) {
  const _value_t five = 5;
  EXPECT_TRUE(4 < five);
  EXPECT_TRUE(five >= 5UL);
  EXPECT_TRUE(L"abd" > _value_t("abc"));
  EXPECT_TRUE(five == std::vector<int>{5});
  EXPECT_TRUE(_value_t(std::vector<int>{1, 2}) < (std::vector<int>{1, 2, 0}));
  EXPECT_THROW(static_cast<void>(five == "5"), EBadCastException);
  const std::set<_value_t> values{3, 1, 2, 1, _value_t()};
  std::string order;
  for (const _value_t& v : values) order += v.empty() ? "-" : _value_t(v).as_string();
  EXPECT_EQ(order, "-123");
  EXPECT_EQ(values.count(_value_t(2UL)), 1u);
}

}  // namespace
