#include <qz/core/string_edit.h>

#include <qz/core/user_locale.h>

#include "core/bstr_text.h"

#include <locale>

namespace {

template <class Char>
const Char* or_empty(const Char* chars) {
  static const Char nothing[1] = {Char()};
  return chars ? chars : nothing;
}

template <class Char>
std::basic_string<Char> escaped(const std::basic_string<Char>& text, const Char* chars,
                                Char escape_char) {
  std::basic_string<Char> result = text;
  chars = or_empty(chars);
  // Searching on just past the escaped character (two places on) keeps the
  // inserted escape character from being found again.
  for (auto at = result.find_first_of(chars); at != result.npos;
       at = result.find_first_of(chars, at + 2))
    result.insert(at, 1, escape_char);
  return result;
}

template <class Char>
std::basic_string<Char> trimmed(const std::basic_string<Char>& text, const Char* chars) {
  chars = or_empty(chars);
  const auto first = text.find_first_not_of(chars);
  if (first == text.npos) return std::basic_string<Char>();
  const auto last = text.find_last_not_of(chars);
  return text.substr(first, last - first + 1);
}

template <class Char>
std::basic_string<Char> trimmed_left(const std::basic_string<Char>& text, const Char* chars) {
  const auto first = text.find_first_not_of(or_empty(chars));
  if (first == 0) return text;
  if (first == text.npos) return std::basic_string<Char>();
  return text.substr(first);
}

template <class Char>
std::basic_string<Char> trimmed_right(const std::basic_string<Char>& text, const Char* chars) {
  const auto last = text.find_last_not_of(or_empty(chars));
  if (last == text.npos) return std::basic_string<Char>();
  if (last == text.size() - 1) return text;
  return text.substr(0, last + 1);
}

template <class Char, class Fold>
std::basic_string<Char> folded(const std::basic_string<Char>& text, Fold fold) {
  const auto& ctype = std::use_facet<std::ctype<Char>>(user_default_locale());
  std::basic_string<Char> result;
  result.reserve(text.size());
  for (Char c : text) result.push_back(fold(ctype, c));
  return result;
}

template <class Char>
std::basic_string<Char> lowered(const std::basic_string<Char>& text) {
  return folded(text, [](const std::ctype<Char>& ctype, Char c) { return ctype.tolower(c); });
}

template <class Char>
std::basic_string<Char> uppered(const std::basic_string<Char>& text) {
  return folded(text, [](const std::ctype<Char>& ctype, Char c) { return ctype.toupper(c); });
}

using qz_detail::to_bstr;
using qz_detail::wide_copy;

}  // namespace

std::string escape(const std::string& text, const char* chars, char escapeChar) {
  return escaped(text, chars, escapeChar);
}
std::wstring escape(const std::wstring& text, const wchar_t* chars, wchar_t escapeChar) {
  return escaped(text, chars, escapeChar);
}
_bstr_t escape(const _bstr_t& text, const wchar_t* chars, wchar_t escapeChar) {
  return to_bstr(escaped(wide_copy(text), chars, escapeChar));
}

std::string trim(const std::string& text, const char* chars) { return trimmed(text, chars); }
std::wstring trim(const std::wstring& text, const wchar_t* chars) { return trimmed(text, chars); }
_bstr_t trim(const _bstr_t& text, const wchar_t* chars) {
  return to_bstr(trimmed(wide_copy(text), chars));
}

std::string triml(const std::string& text, const char* chars) { return trimmed_left(text, chars); }
std::wstring triml(const std::wstring& text, const wchar_t* chars) {
  return trimmed_left(text, chars);
}
_bstr_t triml(const _bstr_t& text, const wchar_t* chars) {
  return to_bstr(trimmed_left(wide_copy(text), chars));
}

std::string trimr(const std::string& text, const char* chars) { return trimmed_right(text, chars); }
std::wstring trimr(const std::wstring& text, const wchar_t* chars) {
  return trimmed_right(text, chars);
}
_bstr_t trimr(const _bstr_t& text, const wchar_t* chars) {
  return to_bstr(trimmed_right(wide_copy(text), chars));
}

std::string strlower(const std::string& text) { return lowered(text); }
std::wstring strlower(const std::wstring& text) { return lowered(text); }
_bstr_t strlower(const _bstr_t& text) { return to_bstr(lowered(wide_copy(text))); }

std::string strupper(const std::string& text) { return uppered(text); }
std::wstring strupper(const std::wstring& text) { return uppered(text); }
_bstr_t strupper(const _bstr_t& text) { return to_bstr(uppered(wide_copy(text))); }
