#include <qz/core/char_class.h>
#include <qz/core/string_edit.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <type_traits>

namespace {

std::wstring text_of(const _bstr_t& text) {
  return text.length() ? std::wstring(text, text.length()) : std::wstring();
}

#define SKIP_UNLESS_CODE_PAGE_1252() \
  if (GetACP() != 1252) GTEST_SKIP() << "ANSI code page is " << GetACP()

}  // namespace

TEST(Escape, PrefixesSetCharactersAndDoublesTheEscapeCharacterOnlyWhenInTheSet) {
  EXPECT_EQ(escape(std::string("say \"hi\"; go"), "\";", '\\'), "say \\\"hi\\\"\\; go");
  EXPECT_EQ(escape(std::string("a\\b\\\\"), "\\", '\\'), "a\\\\b\\\\\\\\");
  EXPECT_EQ(escape(std::string("\\'"), "'", '\\'), "\\\\'");
  EXPECT_EQ(escape(std::wstring(L"a'b"), L"'", L'\''), L"a''b");
  EXPECT_EQ(text_of(escape(_bstr_t(L"%x%"), L"%", L'%')), L"%%x%%");
}

TEST(Trim, RemovesCharactersOfTheSetAtTheChosenEndsEvenAllOfThem) {
  EXPECT_EQ(trim(std::string(" \ta b\t "), " \t"), "a b");
  EXPECT_EQ(triml(std::string("  a  "), " "), "a  ");
  EXPECT_EQ(trimr(std::string("  a  "), " "), "  a");
  EXPECT_EQ(trim(std::string("  \t "), " \t"), "");
  EXPECT_EQ(triml(std::wstring(L"--x--"), L"-"), L"x--");
  EXPECT_EQ(text_of(trim(_bstr_t(L"----"), L"-")), L"");
}

TEST(CaseFolding, FoldsAsciiInAllThreeStringTypesAndWideLettersBeyondIt) {
  EXPECT_EQ(strlower(std::string("AbC-1z")), "abc-1z");
  EXPECT_EQ(strupper(std::string("a\0b", 3)), std::string("A\0B", 3));  // nulls are kept
  EXPECT_EQ(text_of(strupper(_bstr_t(L"MiXeD"))), L"MIXED");
  EXPECT_EQ(strlower(std::wstring(L"\u00C4\u0110\u0416")), L"\u00E4\u0111\u0436");
  EXPECT_EQ(strupper(std::wstring(L"\u00E4\u0111\u0436")), L"\u00C4\u0110\u0416");
}

// Narrow text folds and classifies the ANSI code page's letters one for one.
TEST(CaseFoldingAndCharClass, AnsiLettersBeyondAscii) {
  SKIP_UNLESS_CODE_PAGE_1252();
  EXPECT_TRUE(isalpha(std::string("\xC4\xE4\xDF")));
  EXPECT_FALSE(isxdigit(std::string("\xC4")));
  EXPECT_EQ(strlower(std::string("\xC4\xD6\xDC")), "\xE4\xF6\xFC");
  // y with diaeresis: its capital lies elsewhere in the code page (0x9F).
  EXPECT_EQ(strupper(std::string("\xFF")), "\x9F");
  EXPECT_EQ(strupper(std::string("stra\xDF" "e")), "STRA\xDF" "E");
}

TEST(CharClass, EveryCharacterMustBeOfTheClassAndEmptyTextIsOfNone) {
  // Character arguments still reach the C functions.
  static_assert(std::is_same_v<decltype(isdigit('7')), int>);
  EXPECT_FALSE(isdigit(std::string()));
  EXPECT_FALSE(isalnum(std::string("a\0", 2)));  // nor is a null character
  EXPECT_TRUE(isdigit(std::string("0123456789")));
  EXPECT_FALSE(isdigit(std::string("-1")));
  EXPECT_TRUE(isxdigit(std::string("0aF")));
  EXPECT_FALSE(isxdigit(std::string("0aG")));
  EXPECT_FALSE(isalpha(std::string("ab1")));
  EXPECT_TRUE(isalnum(std::string("ab1")));
}
