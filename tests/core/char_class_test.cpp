#include <qz/core/char_class.h>

#include <gtest/gtest.h>

#include <type_traits>
#include <windows.h>

TEST(CharClass, EveryCharacterMustBeOfTheClassAndEmptyTextIsOfNone) {
  // Character arguments still reach the C functions.
  static_assert(std::is_same_v<decltype(isdigit('7')), int>);
  EXPECT_FALSE(isdigit(std::string()));
  EXPECT_FALSE(isalnum(std::string()));
  EXPECT_FALSE(isalnum(std::string("a\0", 2)));  // nor is a null character
  EXPECT_TRUE(isdigit(std::string("0123456789")));
  EXPECT_FALSE(isdigit(std::string("12a")));
  EXPECT_FALSE(isdigit(std::string("-1")));
  EXPECT_TRUE(isxdigit(std::string("0aF")));
  EXPECT_FALSE(isxdigit(std::string("0aG")));
  EXPECT_TRUE(isalpha(std::string("abcXYZ")));
  EXPECT_FALSE(isalpha(std::string("ab1")));
  EXPECT_TRUE(isalnum(std::string("ab1")));
  EXPECT_FALSE(isalnum(std::string("ab 1")));
}

TEST(CharClass, AnsiLettersBeyondAsciiAreLetters) {
  if (GetACP() != 1252) GTEST_SKIP() << "ANSI code page is " << GetACP();
  EXPECT_TRUE(isalpha(std::string("\xC4\xE4\xDF")));
  EXPECT_TRUE(isalnum(std::string("\xC4" "1")));
  EXPECT_FALSE(isxdigit(std::string("\xC4")));
}
