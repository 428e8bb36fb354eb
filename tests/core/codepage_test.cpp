#include <qz/core/codepage.h>
#include <qz/core/user_locale.h>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/error_code.h"

namespace {

constexpr int kNoSuchCodePage = 12345;

const std::ctype<char>& narrow() { return std::use_facet<std::ctype<char>>(user_default_locale()); }
const std::ctype<wchar_t>& wide() { return std::use_facet<std::ctype<wchar_t>>(user_default_locale()); }

#define SKIP_UNLESS_CODE_PAGE_1252() \
  if (GetACP() != 1252) GTEST_SKIP() << "ANSI code page is " << GetACP()

}  // namespace

// A view converts exactly its length, null characters included.
TEST(CodePage, ConvertsToAndFromUtf8) {
  EXPECT_EQ(as_string(L"A\u00C4\u20AC", CP_UTF8), "A\xC3\x84\xE2\x82\xAC");
  EXPECT_EQ(as_wstring("A\xC3\x84\xE2\x82\xAC", CP_UTF8), L"A\u00C4\u20AC");
  EXPECT_EQ(as_string(basic_const_string<wchar_t>(L"abcdef", 3), CP_UTF8), "abc");
  EXPECT_EQ(as_string(basic_const_string<wchar_t>(L"a\0b", 3), CP_UTF8), std::string("a\0b", 3));
  EXPECT_EQ(as_wstring(basic_const_string<char>("a\0bcd", 3), CP_UTF8), std::wstring(L"a\0b", 3));
}

// Empty text converts without asking the system, which would refuse the page.
TEST(CodePage, InvalidCodePageThrowsInvalidParameterUnlessTheTextIsEmpty) {
  EXPECT_EQ(qz_test::CodeThrownBy([] { as_string(L"x", kNoSuchCodePage); }), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(qz_test::CodeThrownBy([] { as_wstring("x", kNoSuchCodePage); }), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(as_string(L"", kNoSuchCodePage), "");
  EXPECT_EQ(as_wstring("", kNoSuchCodePage), L"");
}


TEST(UserDefaultLocale, WideFacetClassifiesBeyondLatin1AndNarrowsUnknownCharactersToTheDefault) {
  EXPECT_TRUE(wide().is(std::ctype_base::upper, L'\u0416'));
  EXPECT_FALSE(wide().is(std::ctype_base::alpha, L'7'));
  const std::wstring text = L"  \u0436x 1";
  const wchar_t* end = text.data() + text.size();
  EXPECT_EQ(wide().scan_not(std::ctype_base::space, text.data(), end), text.data() + 2);
  EXPECT_EQ(wide().scan_is(std::ctype_base::digit, text.data(), end), text.data() + 5);
  EXPECT_EQ(wide().narrow(L'a', '?'), 'a');
  EXPECT_EQ(wide().narrow(L'\u4E00', '?'), '?');
}

// Conversions and both facets follow the ANSI code page.
TEST(CodePage, AnsiLettersOfCodePage1252) {
  SKIP_UNLESS_CODE_PAGE_1252();
  EXPECT_EQ(as_wstring("\xC4\x80", CP_ACP), L"\u00C4\u20AC");
  EXPECT_EQ(as_string(L"\u00C4\u20AC", CP_ACP), "\xC4\x80");
  EXPECT_TRUE(narrow().is(std::ctype_base::upper | std::ctype_base::alpha, '\xC4'));
  EXPECT_FALSE(narrow().is(std::ctype_base::lower, '\xC4'));
  EXPECT_EQ(narrow().tolower('\xC4'), '\xE4');
  EXPECT_EQ(narrow().toupper('\xE4'), '\xC4');
  EXPECT_EQ(wide().widen('\x80'), L'\u20AC');
  EXPECT_EQ(wide().narrow(L'\u20AC', '?'), '\x80');
}
