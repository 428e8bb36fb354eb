#include <qz/core/format.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

const std::string k2047(2047, 'n');
const std::string k2048(2048, 'n');
const std::wstring kWide2047(2047, L'w');
const std::wstring kWide2048(2048, L'w');

template <class Call>
std::string logic_error_text(Call call) {
  try {
    call();
  } catch (const std::logic_error& e) {
    return e.what();
  }
  return "no exception";
}

}  // namespace

TEST(FormatString, FormatsLikeTheRuntimePrintfIncludingI64) {
  EXPECT_EQ(format_string("%d|%s|%I64d|%I64u|%05.1f", 42, "txt", -9000000000LL,
                          18446744073709551615ULL, 2.5),
            "42|txt|-9000000000|18446744073709551615|002.5");
  EXPECT_EQ(format_string(""), "");
  EXPECT_EQ(format_string("%s", k2047.c_str()), k2047);
}

TEST(FormatString, OutputOf2048CharactersThrowsStringTooLong) {
  try {
    format_string("%s", k2048.c_str());
    FAIL() << "no exception";
  } catch (const std::length_error& e) {
    EXPECT_STREQ(e.what(), "string too long");
  }
}

TEST(FormatWString, FormatsWideArgumentsAndKeepsThe2047Limit) {
  EXPECT_EQ(format_wstring(L"%s=%I64d", L"x", -5LL), L"x=-5");
  EXPECT_EQ(format_wstring(L"%s", kWide2047.c_str()), kWide2047);
  EXPECT_THROW(format_wstring(L"%s", kWide2048.c_str()), std::length_error);
}

TEST(FormatBstr, FormatsIntoABstrAndOverlongOutputKeepsTheFirst2047Characters) {
  const _bstr_t seven = format_bstr(L"%d-%s", 7, L"seven");
  EXPECT_EQ(std::wstring(seven, seven.length()), L"7-seven");
  std::wstring text(5000, L'a');
  for (size_t i = 0; i < text.size(); ++i) text[i] = static_cast<wchar_t>(L'a' + i % 26);
  const _bstr_t result = format_bstr(L"%s", text.c_str());
  ASSERT_EQ(result.length(), 2047u);
  EXPECT_EQ(std::wstring(result, result.length()), text.substr(0, 2047));
}

TEST(Format, UnterminatedFormatViewThrowsInvalidData) {
  const char* const kMessage = "Invalid _data of const_string for c_str()";
  EXPECT_EQ(logic_error_text([] { format_string(basic_const_string<char>("abcdef", 3)); }), kMessage);
  EXPECT_EQ(logic_error_text([] { format_wstring(basic_const_string<wchar_t>(L"abcdef", 3)); }),
            kMessage);
  EXPECT_EQ(logic_error_text([] { format_bstr(basic_const_string<wchar_t>(L"abcdef", 3)); }),
            kMessage);
}

