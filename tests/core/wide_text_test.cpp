// The wide and _bstr_t forms of the text utilities: the same rules as the
// narrow ones (pinned by their own tests), reached through every container
// and string type, and an empty _bstr_t (a null BSTR) taken as "".
#include <qz/core/split_join.h>
#include <qz/core/string_edit.h>
#include <qz/core/user_locale.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <list>
#include <set>
#include <vector>

namespace {

std::wstring text_of(const _bstr_t& text) {
  return text.length() ? std::wstring(text, text.length()) : std::wstring();
}
std::wstring text_of(const std::wstring& text) { return text; }

template <class Words>
std::vector<std::wstring> texts_of(const Words& words) {
  std::vector<std::wstring> texts;
  for (const auto& word : words) texts.push_back(text_of(word));
  return texts;
}

const std::vector<std::wstring> kWords{L"b c", L"a", L"d,e"};
constexpr const wchar_t* kText = L"\"b c\",a,\"d,e\"";

template <class Container, class Text>
void ExpectRoundTrip(const Text& text) {
  Container words;
  divide_string(text, words, L", ");
  EXPECT_EQ(texts_of(words).size(), 3u);
  Text joined;
  consolidate_string(words, joined, L", ");
  Container again;
  divide_string(joined, again, L", ");
  EXPECT_EQ(texts_of(again), texts_of(words));
}

TEST(WideSplitJoin, EveryContainerAndStringTypeSplitsAndJoinsAlike) {
  std::vector<std::wstring> wide;
  divide_string(std::wstring(kText), wide, L",");
  EXPECT_EQ(wide, kWords);
  std::vector<_bstr_t> bstrs;
  divide_string(_bstr_t(kText), bstrs, L",");
  EXPECT_EQ(texts_of(bstrs), kWords);
  std::set<std::wstring> sorted;
  divide_string(std::wstring(kText), sorted, L",");
  EXPECT_EQ(texts_of(sorted), (std::vector<std::wstring>{L"a", L"b c", L"d,e"}));

  ExpectRoundTrip<std::list<std::wstring>>(std::wstring(kText));
  ExpectRoundTrip<std::set<std::wstring>>(std::wstring(kText));
  ExpectRoundTrip<std::vector<std::wstring>>(std::wstring(kText));
  ExpectRoundTrip<std::list<_bstr_t>>(_bstr_t(kText));
  ExpectRoundTrip<std::set<_bstr_t>>(_bstr_t(kText));
  ExpectRoundTrip<std::vector<_bstr_t>>(_bstr_t(kText));

  std::wistringstream in(L"one two");
  std::wstring word;
  read_word(in, word, L" ");
  read_word(in, word, L" ");
  EXPECT_EQ(word, L"two");
}

TEST(WideSplitJoin, EmptyBstrIsEmptyText) {
  std::list<_bstr_t> words{_bstr_t(L"x")};
  divide_string(_bstr_t(), words, L",");
  EXPECT_TRUE(words.empty());
  _bstr_t joined(L"old");
  consolidate_string(std::vector<_bstr_t>{_bstr_t(), _bstr_t(L"y")}, joined, L",");
  EXPECT_EQ(text_of(joined), L",y");
  EXPECT_EQ(text_of(trim(_bstr_t(), L" ")), L"");
  EXPECT_EQ(text_of(strlower(_bstr_t())), L"");
  EXPECT_EQ(text_of(escape(_bstr_t(), L"%", L'%')), L"");
}

TEST(WideStringEdit, TrimsAndFoldsWideAndBstrText) {
  EXPECT_EQ(trim(std::wstring(L" \tx y\t "), L" \t"), L"x y");
  EXPECT_EQ(trimr(std::wstring(L"--x--"), L"-"), L"--x");
  EXPECT_EQ(text_of(triml(_bstr_t(L"  a  "), L" ")), L"a  ");
  EXPECT_EQ(text_of(trimr(_bstr_t(L"  a  "), L" ")), L"  a");
  EXPECT_EQ(text_of(strlower(_bstr_t(L"\u00C4B"))), L"\u00E4b");
  EXPECT_EQ(strupper(std::wstring(L"\u00E4b")), L"\u00C4B");
}

// Streams and algorithms call the user locale's facets on whole ranges; each
// range call must give what the calls one character at a time give.
TEST(UserLocale, RangeCallsOfTheFacetsAgreeWithSingleCalls) {
  const std::locale& locale = user_default_locale();
  const auto& narrow = std::use_facet<std::ctype<char>>(locale);
  std::string text = "aZ\xE4\xC4 1";
  std::string one_by_one;
  for (char c : text) one_by_one.push_back(narrow.toupper(c));
  narrow.toupper(&text[0], &text[0] + text.size());
  EXPECT_EQ(text, one_by_one);
  one_by_one.clear();
  for (char c : text) one_by_one.push_back(narrow.tolower(c));
  narrow.tolower(&text[0], &text[0] + text.size());
  EXPECT_EQ(text, one_by_one);

  const auto& wide = std::use_facet<std::ctype<wchar_t>>(locale);
  std::wstring letters = L"ab\u0416\u00E4 7";
  wide.toupper(&letters[0], &letters[0] + letters.size());
  EXPECT_EQ(letters, L"AB\u0416\u00C4 7");
  wide.tolower(&letters[0], &letters[0] + letters.size());
  EXPECT_EQ(letters, L"ab\u0436\u00E4 7");
  const wchar_t* end = letters.data() + letters.size();
  EXPECT_EQ(wide.scan_is(std::ctype_base::space, letters.data(), end), letters.data() + 4);
  EXPECT_EQ(wide.scan_not(std::ctype_base::alpha, letters.data(), end), letters.data() + 4);
  std::vector<std::ctype_base::mask> masks(letters.size());
  wide.is(letters.data(), end, masks.data());
  EXPECT_TRUE(masks[2] & std::ctype_base::lower);
  EXPECT_TRUE(masks[5] & std::ctype_base::digit);

  const std::string ascii = "ok 1";
  std::wstring widened(ascii.size(), L'?');
  wide.widen(ascii.data(), ascii.data() + ascii.size(), &widened[0]);
  EXPECT_EQ(widened, L"ok 1");
  std::string narrowed(3, '?');
  const std::wstring unmapped = L"a\u0416b";  // no ANSI code page holds Zhe
  wide.narrow(unmapped.data(), unmapped.data() + 3, '#', &narrowed[0]);
  if (GetACP() == 1252) {
    EXPECT_EQ(narrowed, "a#b");
  }
}

}  // namespace
