#include <qz/core/codepage.h>
#include <qz/errors/exceptions.h>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

// An ESystemException's "Code", or -1 when something else was thrown.
template <class Call>
int system_error_code(Call call) {
  try {
    call();
  } catch (const ESystemException& e) {
    return static_cast<int>(e.get_value("Code"));
  } catch (...) {
  }
  return -1;
}

constexpr int kNoSuchCodePage = 12345;

}  // namespace

TEST(CodePage, ConvertsToAndFromUtf8) {
  EXPECT_EQ(as_string(L"A\u00C4\u20AC", CP_UTF8), "A\xC3\x84\xE2\x82\xAC");
  EXPECT_EQ(as_wstring("A\xC3\x84\xE2\x82\xAC", CP_UTF8), L"A\u00C4\u20AC");
}

TEST(CodePage, ViewConvertsExactlyItsLengthIncludingNullCharacters) {
  EXPECT_EQ(as_string(basic_const_string<wchar_t>(L"abcdef", 3), CP_UTF8), "abc");
  EXPECT_EQ(as_wstring(basic_const_string<char>("abcdef", 3), CP_UTF8), L"abc");
  EXPECT_EQ(as_string(basic_const_string<wchar_t>(L"a\0b", 3), CP_UTF8), std::string("a\0b", 3));
  EXPECT_EQ(as_wstring(basic_const_string<char>("a\0b", 3), CP_UTF8), std::wstring(L"a\0b", 3));
}

// Empty text converts without asking the system, which would refuse the page.
TEST(CodePage, InvalidCodePageThrowsInvalidParameterUnlessTheTextIsEmpty) {
  EXPECT_EQ(system_error_code([] { as_string(L"x", kNoSuchCodePage); }), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(system_error_code([] { as_wstring("x", kNoSuchCodePage); }), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(as_string(L"", kNoSuchCodePage), "");
  EXPECT_EQ(as_wstring("", kNoSuchCodePage), L"");
}

TEST(CodePage, AnsiRoundTripOfCodePage1252Letters) {
  if (GetACP() != 1252) GTEST_SKIP() << "ANSI code page is " << GetACP();
  EXPECT_EQ(as_wstring("\xC4\x80", CP_ACP), L"\u00C4\u20AC");
  EXPECT_EQ(as_string(L"\u00C4\u20AC", CP_ACP), "\xC4\x80");
}
