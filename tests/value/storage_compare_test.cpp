// equal and less read the other side through its own typed operations.
#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

template <class T>
_value_t_cont_t<T> sequence(std::vector<T> items) {
  return _value_t_cont_t<T>(std::move(items));
}

TEST(StorageCompare, ScalarReadsTheOtherSideAsItsOwnKind) {
  _value_t_data_t<int> five(5);
  EXPECT_TRUE(five.equal(_value_t_data_t<unsigned long>(5)));
  EXPECT_TRUE(five.less(_value_t_data_t<unsigned long>(6)));
  EXPECT_THROW(five.equal(_value_t_data_t<std::string>("5")), EBadCastException);
  EXPECT_FALSE(five.equal(sequence<int>({5, 5})));  // a sequence of another length
}

TEST(StorageCompare, ContainersCompareLexicographically) {
  const auto shorter = sequence<int>({1, 2});
  EXPECT_TRUE(shorter.less(sequence<int>({1, 2, 0})));
  EXPECT_TRUE(sequence<int>({1, 1, 9}).less(shorter));
  EXPECT_FALSE(shorter.less(shorter));
  EXPECT_FALSE(shorter.equal(sequence<int>({1, 3})));
  EXPECT_FALSE(shorter.less(_value_t_cont_t<int>()));
}

TEST(StorageCompare, ContainerNeedsContiguousElementsOfItsKind) {
  const auto numbers = sequence<int>({1});
  EXPECT_TRUE(numbers.equal(_value_t_data_t<int>(1)));
  EXPECT_THROW(numbers.equal(_value_t_data_t<unsigned long>(1)), EBadCastException);
  EXPECT_THROW(numbers.equal(sequence<__int64>({1})), EBadCastException);
  EXPECT_FALSE(numbers.equal(sequence<std::string>({"a", "b"})));  // lengths differ first
}

TEST(StorageCompare, BoolContainersAndTheirElementViewsCompareTheirBits) {
  const auto bits = sequence<bool>({true, false});
  EXPECT_TRUE(bits.equal(sequence<bool>({true, false})));
  EXPECT_FALSE(bits.equal(sequence<bool>({true, true})));
  EXPECT_TRUE(bits.less(sequence<bool>({true, true})));
  EXPECT_TRUE(sequence<bool>({false}).less(_value_t_data_t<bool>(true)));
  EXPECT_THROW(sequence<bool>({true}).equal(sequence<int>({1})), EBadCastException);
  _value_t_cont_t<bool> pair(std::vector<bool>{false, true});
  const _value_t_data& constant = pair;
  std::unique_ptr<_value_t_data> second(constant.get(1ULL));
  EXPECT_TRUE(second->equal(_value_t_data_t<bool>(true)));
  EXPECT_TRUE(sequence<bool>({true}).equal(*second));
  EXPECT_TRUE(_value_t_data_t<bool>(false).less(*second));
}

}  // namespace
