// Comparison reads the right operand as the left operand's kind.
#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

TEST(ValueCompare, RightSideIsReadAsTheLeftKindByEveryOperator) {
  const _value_t five = 5;
  EXPECT_TRUE(five == _value_t(5UL));
  EXPECT_FALSE(five != _value_t(5UL));
  EXPECT_TRUE(five != _value_t(6));
  EXPECT_TRUE(_value_t(L"same") == _value_t("same"));
  EXPECT_THROW(static_cast<void>(five == _value_t("5")), EBadCastException);
  EXPECT_THROW(static_cast<void>(five != _value_t("5")), EBadCastException);
  const _value_t half = 2.5;
  const _value_t two = 2;
  EXPECT_TRUE(half > two);  // a double storage reads an int
  EXPECT_FALSE(half <= two);
  EXPECT_THROW(static_cast<void>(two < half), EBadCastException);  // an int storage reads no double
  EXPECT_THROW(static_cast<void>(two > half), EBadCastException);
  EXPECT_THROW(static_cast<void>(two >= half), EBadCastException);
  const _value_t three = 3;
  EXPECT_TRUE(two < three && !(three < two) && !(two < two));
  EXPECT_TRUE(three > two && !(two > two));
  EXPECT_TRUE(two <= two && two <= three && !(three <= two));
  EXPECT_TRUE(two >= two && !(two >= three));
}

TEST(ValueCompare, EmptyValuesAreEqualAndOrderFirst) {
  const _value_t empty;
  const _value_t one = 1;
  EXPECT_TRUE(empty == _value_t());
  EXPECT_FALSE(empty < _value_t());
  EXPECT_TRUE(empty != one);
  EXPECT_TRUE(one != empty);
  EXPECT_TRUE(empty < one);
  EXPECT_FALSE(one < empty);
  EXPECT_TRUE(empty < _value_t(static_cast<SmartPtrObj*>(nullptr)));  // nothing is read
}

TEST(ValueCompare, ContainersCompareElementwiseAndPlainValuesAsValuesHoldingThem) {
  const _value_t pair = std::vector<int>{1, 2};
  EXPECT_TRUE(pair == _value_t(std::vector<int>{1, 2}));
  EXPECT_TRUE(pair < _value_t(std::vector<int>{1, 2, 0}));
  EXPECT_TRUE(pair > _value_t(std::vector<int>{1, 1, 9}));
  EXPECT_TRUE(_value_t(5) != _value_t(std::vector<int>{5, 5}));
  const _value_t five = 5;
  EXPECT_TRUE(5 == five);
  EXPECT_TRUE(five < 6);
  EXPECT_TRUE(4 < five);
  EXPECT_TRUE(five >= 5UL);
  EXPECT_TRUE(L"abd" > _value_t("abc"));
  EXPECT_TRUE(five == std::vector<int>{5});
  EXPECT_THROW(static_cast<void>(five == "5"), EBadCastException);
}

TEST(ValueCompare, SetOfValuesOrdersByLess) {
  std::set<_value_t> values;
  for (int n : {3, 1, 2, 1}) values.insert(n);
  values.insert(_value_t());
  ASSERT_EQ(values.size(), 4u);
  auto it = values.begin();
  EXPECT_TRUE(it->empty());
  EXPECT_EQ((++it)->as_int(), 1);
  EXPECT_EQ((++it)->as_int(), 2);
  EXPECT_EQ((++it)->as_int(), 3);
  EXPECT_EQ(values.count(_value_t(2UL)), 1u);
}

}  // namespace
