#include <qz/core/split_join.h>

#include <gtest/gtest.h>

#include <sstream>

using Words = std::vector<std::string>;

namespace {

Words split(const std::string& text, const char* delimiters) {
  Words words;
  divide_string(text, words, delimiters);
  return words;
}

template <class Container>
std::string join(const Container& words, const char* separators) {
  std::string out = "old";
  consolidate_string(words, out, separators);
  return out;
}

std::wstring text_of(const _bstr_t& text) {
  return text.length() ? std::wstring(text, text.length()) : std::wstring();
}

}  // namespace

// Delimiter runs give no empty words; quotes group delimiters and are removed
// (an empty pair gives no word, an unterminated one runs to the end); a quote
// in the delimiter set ends a word and opens quoting at its start; the null
// character is a delimiter of every set.
TEST(DivideString, SplitsAtDelimitersOutsideQuotes) {
  const struct {
    std::string text;
    const char* delimiters;
    Words words;
  } kCases[] = {
      {",a,, b,", ", ", {"a", "b"}},
      {"", ",", {}},
      {"x,\"y,z\"", ",", {"x", "y,z"}},
      {"a\"b c\"d e", " ", {"ab cd", "e"}},
      {"a,\"\",b", ",", {"a", "b"}},
      {"a,\"b,c", ",", {"a", "b,c"}},
      {"ab\"cd", ",\"", {"ab", "cd"}},
      {"\"x,y\",z", ",\"", {"x,y", "z"}},
      {std::string("a\0b", 3), "", {"a", "b"}},
  };
  for (const auto& c : kCases) EXPECT_EQ(split(c.text, c.delimiters), c.words) << c.text << " / " << c.delimiters;
}

TEST(ReadWord, ReadsOneWordPerCallAndFailsWhenNoneIsLeft) {
  std::istringstream in("  one  two ");
  std::string word;
  read_word(in, word, " ");
  read_word(in, word, " ");
  EXPECT_EQ(word, "two");
  read_word(in, word, " ");
  EXPECT_EQ(word, "");
  EXPECT_TRUE(in.fail());
  std::wistringstream wide(L"\"a b\",c");
  _bstr_t bstr;
  read_word(wide, bstr, L",");
  EXPECT_EQ(text_of(bstr), L"a b");
}

// Only the first separator is written, but all of them cause quoting; an
// empty set joins with null characters.
TEST(ConsolidateString, JoinsWithTheFirstSeparatorAndQuotesWordsHoldingAny) {
  EXPECT_EQ(join(Words{"a", "b c", "d,e"}, ", "), "a,\"b c\",\"d,e\"");
  EXPECT_EQ(join(Words{"a", "b"}, ""), std::string("a\0b", 3));
  EXPECT_EQ(join(Words{}, ","), "");
  EXPECT_EQ(join(std::set<std::string>{"b", "a"}, ","), "a,b");
  const Words words{"plain", "with space", "with,comma", "x"};
  EXPECT_EQ(split(join(words, ", "), ", "), words);  // splitting gives the words back
  _bstr_t out;
  consolidate_string(std::list<_bstr_t>{_bstr_t(L"a"), _bstr_t(L"b c")}, out, L" ");
  EXPECT_EQ(text_of(out), L"a \"b c\"");
}
