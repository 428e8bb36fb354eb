#include <qz/core/number_text.h>

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

namespace {

// The extremes need the longest texts: 64 binary digits for a negative
// 64-bit value (only radix 10 writes a sign), 20 characters for its decimal.
TEST(NumberText, ExtremesFitInEveryRadixAndWidth) {
  EXPECT_EQ(i64toa(INT64_MIN, 10), "-9223372036854775808");
  EXPECT_EQ(i64toa(INT64_MIN, 2), "1" + std::string(63, '0'));
  EXPECT_EQ(i64tow(-1, 2), std::wstring(64, L'1'));
  EXPECT_EQ(i64tow(INT64_MAX, 36), L"1y2p0ij32e8e7");
  EXPECT_EQ(itoa(INT_MIN, 10), "-2147483648");
  EXPECT_EQ(itoa(-1, 16), "ffffffff");
  EXPECT_EQ(itow(255, 2), L"11111111");
  EXPECT_EQ(ltoa(LONG_MIN, 8), "20000000000");
  EXPECT_EQ(ltow(-42, 10), L"-42");
  EXPECT_EQ(ltow(LONG_MAX, 16), L"7fffffff");
}

// Text that is no number, or only starts with one, reads as far as it goes.
TEST(NumberText, ReadingFollowsTheRuntimeRules) {
  EXPECT_EQ(atoi(std::string(" -17xyz")), -17);
  EXPECT_EQ(atoi(std::string("abc")), 0);
  EXPECT_EQ(atol(std::string("2147483647")), 2147483647L);
  EXPECT_EQ(atol(std::string("")), 0L);
  EXPECT_EQ(wtoi(std::wstring(L"+12 34")), 12);
}

}  // namespace
