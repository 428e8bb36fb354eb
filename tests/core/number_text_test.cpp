#include <qz/core/number_text.h>

#include <gtest/gtest.h>

#include <climits>

TEST(NumberText, NumberToTextFillsTheBufferAndSignsOnlyRadix10) {
  EXPECT_EQ(i64toa(LLONG_MIN, 2), "1" + std::string(63, '0'));
  EXPECT_EQ(i64tow(LLONG_MIN, 2), L"1" + std::wstring(63, L'0'));
  // Negative values have a sign only in radix 10.
  EXPECT_EQ(itoa(-42, 10), "-42");
  EXPECT_EQ(itoa(-1, 16), "ffffffff");
  EXPECT_EQ(ltoa(LONG_MIN, 10), "-2147483648");
  EXPECT_EQ(i64toa(LLONG_MIN, 10), "-9223372036854775808");
  EXPECT_EQ(itow(-7, 10), L"-7");
  EXPECT_EQ(itow(255, 16), L"ff");
  EXPECT_EQ(ltow(35, 36), L"z");
  EXPECT_EQ(i64tow(LLONG_MAX, 16), L"7fffffffffffffff");
}

TEST(NumberText, TextToNumberStopsAtTheFirstNonDigit) {
  EXPECT_EQ(atoi(std::string("  42abc")), 42);
  EXPECT_EQ(atoi(std::string("abc")), 0);
  EXPECT_EQ(atol(std::string("-2147483648")), LONG_MIN);
  EXPECT_EQ(wtoi(std::wstring(L"-17")), -17);
}
