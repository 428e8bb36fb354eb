#include <qz/core/string_edit.h>

#include <gtest/gtest.h>

#include <windows.h>

namespace {

std::wstring text_of(const _bstr_t& text) {
  return text.length() ? std::wstring(text, text.length()) : std::wstring();
}

}  // namespace

TEST(Escape, PrefixesSetCharactersAndDoublesTheEscapeCharacterOnlyWhenInTheSet) {
  EXPECT_EQ(escape(std::string("say \"hi\"; go"), "\";", '\\'), "say \\\"hi\\\"\\; go");
  EXPECT_EQ(escape(std::string("plain"), "\"", '\\'), "plain");
  EXPECT_EQ(escape(std::string("a\\b\\\\"), "\\", '\\'), "a\\\\b\\\\\\\\");
  EXPECT_EQ(escape(std::string("\\\""), "\\\"", '\\'), "\\\\\\\"");
  EXPECT_EQ(escape(std::string("\\'"), "'", '\\'), "\\\\'");
  EXPECT_EQ(escape(std::wstring(L"a'b"), L"'", L'\''), L"a''b");
  EXPECT_EQ(text_of(escape(_bstr_t(L"%x%"), L"%", L'%')), L"%%x%%");
}

TEST(Trim, RemovesCharactersOfTheSetAtTheChosenEndsEvenAllOfThem) {
  EXPECT_EQ(trim(std::string(" \ta b\t "), " \t"), "a b");
  EXPECT_EQ(triml(std::string("  a  "), " "), "a  ");
  EXPECT_EQ(trimr(std::string("  a  "), " "), "  a");
  EXPECT_EQ(trim(std::string("ab"), " "), "ab");
  EXPECT_EQ(trim(std::string("  \t "), " \t"), "");
  EXPECT_EQ(triml(std::string("   "), " "), "");
  EXPECT_EQ(trimr(std::string("   "), " "), "");
  EXPECT_EQ(trim(std::string(), " "), "");
}

TEST(Trim, WideAndBstrTrimAlike) {
  EXPECT_EQ(trim(std::wstring(L"--x--"), L"-"), L"x");
  EXPECT_EQ(triml(std::wstring(L"--x--"), L"-"), L"x--");
  EXPECT_EQ(text_of(trimr(_bstr_t(L"--x--"), L"-")), L"--x");
  EXPECT_EQ(text_of(trim(_bstr_t(L"----"), L"-")), L"");
}

TEST(CaseFolding, FoldsAsciiInAllThreeStringTypes) {
  EXPECT_EQ(strlower(std::string("AbC-1z")), "abc-1z");
  EXPECT_EQ(strupper(std::string("AbC-1z")), "ABC-1Z");
  EXPECT_EQ(strlower(std::wstring(L"MiXeD")), L"mixed");
  EXPECT_EQ(text_of(strupper(_bstr_t(L"MiXeD"))), L"MIXED");
  EXPECT_EQ(strupper(std::string("a\0b", 3)), std::string("A\0B", 3));  // nulls are kept
}

TEST(CaseFolding, WideTextFoldsLettersBeyondAscii) {
  EXPECT_EQ(strlower(std::wstring(L"\u00C4\u0110\u0416")), L"\u00E4\u0111\u0436");
  EXPECT_EQ(strupper(std::wstring(L"\u00E4\u0111\u0436")), L"\u00C4\u0110\u0416");
}

TEST(CaseFolding, NarrowTextFoldsAnsiCodePageLettersOneForOne) {
  if (GetACP() != 1252) GTEST_SKIP() << "ANSI code page is " << GetACP();
  EXPECT_EQ(strlower(std::string("\xC4\xD6\xDC")), "\xE4\xF6\xFC");
  EXPECT_EQ(strupper(std::string("\xE4\xF6\xFC")), "\xC4\xD6\xDC");
  // y with diaeresis: its capital lies elsewhere in the code page (0x9F).
  EXPECT_EQ(strupper(std::string("\xFF")), "\x9F");
  EXPECT_EQ(strupper(std::string("stra\xDF" "e")), "STRA\xDF" "E");
}
