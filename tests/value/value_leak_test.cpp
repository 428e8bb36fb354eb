// Every storage the value model makes is released again, also on the paths
// that throw half-way.
#include <qz/errors/exceptions.h>
#include <qz/value/value.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

void exercise_values() {
  _value_t number = 1;
  _value_t shared = number;
  shared = 2;
  number.push_back(3);
  number.push_back(_value_t(4));
  number[0] = 5;
  const _value_t& constant = number;
  _value_t element = constant[1];
  number.as_string();
  number = std::vector<std::string>{"a", "b"};
  number = shared;
  _value_t bits = std::vector<bool>{true};
  bits[0] = false;
  bits.push_back(true);
  int variable = 0;
  _value_t view = _value_t::view(variable);
  _value_t copy = view;
  copy = 7;
  _value_t moved = std::move(copy);
  moved = std::move(view);
}

void exercise_failures() {
  _value_t number = 1;
  EXPECT_THROW(number = std::string("x"), EBadCastException);
  EXPECT_THROW(number.push_back(std::string("x")), EBadCastException);
  EXPECT_THROW(number.push_back(_value_t("x")), EBadCastException);
  EXPECT_THROW(number[1], std::out_of_range);
  const _value_t shared = number;
  EXPECT_THROW(number = 2.5, EBadCastException);  // after the copy on write
  EXPECT_THROW(_value_t().as_string(), EBadCastException);
  const std::string text = "fixed";
  _value_t view = _value_t::const_view(text);
  EXPECT_THROW(view = std::string("y"), EBadCastException);
}

TEST(ValueLeaks, LiveStoragesReturnToBaseline) {
  const long baseline = _value_t_data::live_count();
  exercise_values();
  EXPECT_EQ(_value_t_data::live_count(), baseline);
  exercise_failures();
  EXPECT_EQ(_value_t_data::live_count(), baseline);
}

TEST(ValueLeaks, StoragesAreCountedWhileAlive) {
  const long baseline = _value_t_data::live_count();
  {
    _value_t a = 1;
    _value_t b = std::vector<int>{1, 2};
    EXPECT_EQ(_value_t_data::live_count(), baseline + 2);
  }
  EXPECT_EQ(_value_t_data::live_count(), baseline);
}

}  // namespace
