#include <qz/core/format.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

// Output of up to 2047 characters; the string forms throw beyond that, the
// BSTR form keeps the first 2047.
TEST(FormatString, FormatsLikeTheRuntimePrintfIncludingI64UpTo2047Characters) {
  EXPECT_EQ(format_string("%d|%s|%I64d|%I64u|%05.1f", 42, "txt", -9000000000LL, 18446744073709551615ULL, 2.5),
            "42|txt|-9000000000|18446744073709551615|002.5");
  EXPECT_EQ(format_string("%s", std::string(2047, 'n').c_str()), std::string(2047, 'n'));
  try {
    format_string("%s", std::string(2048, 'n').c_str());
    FAIL() << "no exception";
  } catch (const std::length_error& e) {
    EXPECT_STREQ(e.what(), "string too long");
  }
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
  try {
    format_string(basic_const_string<char>("abcdef", 3));
    FAIL() << "no exception";
  } catch (const std::logic_error& e) {
    EXPECT_STREQ(e.what(), "Invalid _data of const_string for c_str()");
  }
  EXPECT_THROW(format_wstring(basic_const_string<wchar_t>(L"abcdef", 3)), std::logic_error);
  EXPECT_THROW(format_bstr(basic_const_string<wchar_t>(L"abcdef", 3)), std::logic_error);
}
