// Splitting text into words and joining words back into text.
//
// Words are separated by any character of a delimiter set, a plain
// null-terminated array. Membership is tested as strchr/wcschr do, so the
// null character is a delimiter in every set. Double quotes group: a
// delimiter between quotes belongs to the word, and the quotes themselves are
// dropped. No empty word is ever produced, neither from leading, trailing or
// repeated delimiters nor from an empty pair of quotes; an unterminated quote
// runs to the end of the text. When the double quote is itself a delimiter,
// it ends a non-empty word and opens quoting at the start of one.
//
// consolidate_string is the inverse: it writes the words in container order,
// separated by the first character of `separators` (the null character when
// the set is empty), and wraps a word in double quotes when it contains any
// character of the set. Quotes inside a word are not escaped, so splitting the
// joined text gives the words back as long as none is empty or holds a quote.
//
// The _bstr_t members work on a wide copy and behave as the wide ones.
// A null delimiter or separator pointer is taken as the empty set.
//
// Thread safety: all functions are re-entrant.
#pragma once

#include <qz/core/com_types.h>
#include <qz/export.h>

#include <istream>
#include <list>
#include <set>
#include <string>
#include <vector>

// Reads the next word of `in` into `word` (emptied first). The delimiter that
// ends a word is consumed. When no word is left, `word` is empty and the
// stream has failed.
QZ_API void read_word(std::istream& in, std::string& word, const char* delimiters);
QZ_API void read_word(std::wistream& in, std::wstring& word, const wchar_t* delimiters);
QZ_API void read_word(std::wistream& in, _bstr_t& word, const wchar_t* delimiters);

// Replaces the content of `words` with the words of `text`; a set receives
// them sorted and without duplicates.
QZ_API void divide_string(const std::string& text, std::list<std::string>& words,
                          const char* delimiters);
QZ_API void divide_string(const std::string& text, std::set<std::string>& words,
                          const char* delimiters);
QZ_API void divide_string(const std::string& text, std::vector<std::string>& words,
                          const char* delimiters);
QZ_API void divide_string(const std::wstring& text, std::list<std::wstring>& words,
                          const wchar_t* delimiters);
QZ_API void divide_string(const std::wstring& text, std::set<std::wstring>& words,
                          const wchar_t* delimiters);
QZ_API void divide_string(const std::wstring& text, std::vector<std::wstring>& words,
                          const wchar_t* delimiters);
QZ_API void divide_string(const _bstr_t& text, std::list<_bstr_t>& words,
                          const wchar_t* delimiters);
QZ_API void divide_string(const _bstr_t& text, std::set<_bstr_t>& words,
                          const wchar_t* delimiters);
QZ_API void divide_string(const _bstr_t& text, std::vector<_bstr_t>& words,
                          const wchar_t* delimiters);

// Replaces `out` with the joined words.
QZ_API void consolidate_string(const std::list<std::string>& words, std::string& out,
                               const char* separators);
QZ_API void consolidate_string(const std::set<std::string>& words, std::string& out,
                               const char* separators);
QZ_API void consolidate_string(const std::vector<std::string>& words, std::string& out,
                               const char* separators);
QZ_API void consolidate_string(const std::list<std::wstring>& words, std::wstring& out,
                               const wchar_t* separators);
QZ_API void consolidate_string(const std::set<std::wstring>& words, std::wstring& out,
                               const wchar_t* separators);
QZ_API void consolidate_string(const std::vector<std::wstring>& words, std::wstring& out,
                               const wchar_t* separators);
QZ_API void consolidate_string(const std::list<_bstr_t>& words, _bstr_t& out,
                               const wchar_t* separators);
QZ_API void consolidate_string(const std::set<_bstr_t>& words, _bstr_t& out,
                               const wchar_t* separators);
QZ_API void consolidate_string(const std::vector<_bstr_t>& words, _bstr_t& out,
                               const wchar_t* separators);
