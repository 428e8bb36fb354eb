#include <qz/core/split_join.h>

#include "core/bstr_text.h"

#include <cstring>
#include <cwchar>
#include <sstream>
#include <utility>

namespace {

// strchr/wcschr on purpose: the terminating null belongs to every set, so a
// null character in the text separates words.
bool is_member(const char* set, char c) { return std::strchr(set ? set : "", c) != nullptr; }
bool is_member(const wchar_t* set, wchar_t c) { return std::wcschr(set ? set : L"", c) != nullptr; }

template <class Char>
void read_word_from(std::basic_istream<Char>& in, std::basic_string<Char>& word,
                    const Char* delimiters) {
  word.clear();
  if (in.eof()) return;
  bool quoted = false;
  for (;;) {
    Char c;
    if (!in.read(&c, 1) || in.gcount() != 1) return;
    if (c == Char('"')) {
      // A quote that is also a delimiter ends a word; at a word's start it
      // opens quoting like any other quote.
      if (!word.empty() && is_member(delimiters, c)) return;
      quoted = !quoted;
    } else if (!quoted && is_member(delimiters, c)) {
      if (!word.empty()) return;
    } else {
      word.push_back(c);
    }
    if (in.eof()) return;
  }
}

template <class Word>
void add_word(std::list<Word>& words, Word word) { words.push_back(std::move(word)); }
template <class Word>
void add_word(std::vector<Word>& words, Word word) { words.push_back(std::move(word)); }
template <class Word>
void add_word(std::set<Word>& words, Word word) { words.insert(std::move(word)); }

template <class Char, class Container, class ToWord>
void divide(const std::basic_string<Char>& text, Container& words, const Char* delimiters,
            ToWord to_word) {
  words.clear();
  std::basic_istringstream<Char> in(text);
  std::basic_string<Char> word;
  while (!in.eof()) {
    read_word_from(in, word, delimiters);
    if (in.fail() && word.empty()) break;
    add_word(words, to_word(word));
  }
}

template <class Char>
std::basic_string<Char> same_word(const std::basic_string<Char>& word) { return word; }

bool needs_quotes(const std::string& word, const char* separators) {
  for (const char* s = separators; s && *s; ++s)
    if (word.find(*s) != std::string::npos) return true;
  return false;
}

bool needs_quotes(const std::wstring& word, const wchar_t* separators) {
  for (const wchar_t* s = separators; s && *s; ++s)
    if (word.find(*s) != std::wstring::npos) return true;
  return false;
}

// With an empty set the separator is the terminating null itself.
template <class Char>
Char first_separator(const Char* separators) { return separators ? separators[0] : Char(); }

template <class Char, class Container, class ToText>
std::basic_string<Char> join(const Container& words, const Char* separators, ToText to_text) {
  std::basic_string<Char> out;
  bool first = true;
  for (const auto& item : words) {
    if (!first) out.push_back(first_separator(separators));
    first = false;
    const std::basic_string<Char> word = to_text(item);
    if (needs_quotes(word, separators)) {
      out.push_back(Char('"'));
      out.append(word);
      out.push_back(Char('"'));
    } else {
      out.append(word);
    }
  }
  return out;
}

}  // namespace

void read_word(std::istream& in, std::string& word, const char* delimiters) {
  read_word_from(in, word, delimiters);
}

void read_word(std::wistream& in, std::wstring& word, const wchar_t* delimiters) {
  read_word_from(in, word, delimiters);
}

void read_word(std::wistream& in, _bstr_t& word, const wchar_t* delimiters) {
  std::wstring wide;
  read_word_from(in, wide, delimiters);
  word = qz_detail::to_bstr(wide);
}

void divide_string(const std::string& text, std::list<std::string>& words, const char* delimiters) {
  divide(text, words, delimiters, same_word<char>);
}

void divide_string(const std::string& text, std::set<std::string>& words, const char* delimiters) {
  divide(text, words, delimiters, same_word<char>);
}

void divide_string(const std::string& text, std::vector<std::string>& words,
                   const char* delimiters) {
  divide(text, words, delimiters, same_word<char>);
}

void divide_string(const std::wstring& text, std::list<std::wstring>& words,
                   const wchar_t* delimiters) {
  divide(text, words, delimiters, same_word<wchar_t>);
}

void divide_string(const std::wstring& text, std::set<std::wstring>& words,
                   const wchar_t* delimiters) {
  divide(text, words, delimiters, same_word<wchar_t>);
}

void divide_string(const std::wstring& text, std::vector<std::wstring>& words,
                   const wchar_t* delimiters) {
  divide(text, words, delimiters, same_word<wchar_t>);
}

void divide_string(const _bstr_t& text, std::list<_bstr_t>& words, const wchar_t* delimiters) {
  divide(qz_detail::wide_copy(text), words, delimiters, qz_detail::to_bstr);
}

void divide_string(const _bstr_t& text, std::set<_bstr_t>& words, const wchar_t* delimiters) {
  divide(qz_detail::wide_copy(text), words, delimiters, qz_detail::to_bstr);
}

void divide_string(const _bstr_t& text, std::vector<_bstr_t>& words, const wchar_t* delimiters) {
  divide(qz_detail::wide_copy(text), words, delimiters, qz_detail::to_bstr);
}

void consolidate_string(const std::list<std::string>& words, std::string& out,
                        const char* separators) {
  out = join(words, separators, same_word<char>);
}

void consolidate_string(const std::set<std::string>& words, std::string& out,
                        const char* separators) {
  out = join(words, separators, same_word<char>);
}

void consolidate_string(const std::vector<std::string>& words, std::string& out,
                        const char* separators) {
  out = join(words, separators, same_word<char>);
}

void consolidate_string(const std::list<std::wstring>& words, std::wstring& out,
                        const wchar_t* separators) {
  out = join(words, separators, same_word<wchar_t>);
}

void consolidate_string(const std::set<std::wstring>& words, std::wstring& out,
                        const wchar_t* separators) {
  out = join(words, separators, same_word<wchar_t>);
}

void consolidate_string(const std::vector<std::wstring>& words, std::wstring& out,
                        const wchar_t* separators) {
  out = join(words, separators, same_word<wchar_t>);
}

void consolidate_string(const std::list<_bstr_t>& words, _bstr_t& out, const wchar_t* separators) {
  out = qz_detail::to_bstr(join(words, separators, qz_detail::wide_copy));
}

void consolidate_string(const std::set<_bstr_t>& words, _bstr_t& out, const wchar_t* separators) {
  out = qz_detail::to_bstr(join(words, separators, qz_detail::wide_copy));
}

void consolidate_string(const std::vector<_bstr_t>& words, _bstr_t& out,
                        const wchar_t* separators) {
  out = qz_detail::to_bstr(join(words, separators, qz_detail::wide_copy));
}
