// Edited copies of text: escaping, trimming and case folding, for
// std::string, std::wstring and _bstr_t alike.
//
// Character sets are plain null-terminated arrays that the caller always
// passes (there is no default set); a null pointer is the empty set. Case
// folding maps one character at a time through the ctype facet of
// user_default_locale(), so narrow text folds by the ANSI code page's letters
// and no character becomes two. The _bstr_t members work on a wide copy.
//
// Thread safety: all functions are re-entrant.
#pragma once

#include <qz/core/com_types.h>
#include <qz/export.h>

#include <string>

// A copy of `text` with `escapeChar` put before every character of `chars`.
// The escape character itself is escaped only when it is in `chars`.
QZ_API std::string escape(const std::string& text, const char* chars, char escapeChar);
QZ_API std::wstring escape(const std::wstring& text, const wchar_t* chars, wchar_t escapeChar);
QZ_API _bstr_t escape(const _bstr_t& text, const wchar_t* chars, wchar_t escapeChar);

// A copy without the leading and trailing characters of `chars`.
QZ_API std::string trim(const std::string& text, const char* chars);
QZ_API std::wstring trim(const std::wstring& text, const wchar_t* chars);
QZ_API _bstr_t trim(const _bstr_t& text, const wchar_t* chars);

// A copy without the leading characters of `chars`.
QZ_API std::string triml(const std::string& text, const char* chars);
QZ_API std::wstring triml(const std::wstring& text, const wchar_t* chars);
QZ_API _bstr_t triml(const _bstr_t& text, const wchar_t* chars);

// A copy without the trailing characters of `chars`.
QZ_API std::string trimr(const std::string& text, const char* chars);
QZ_API std::wstring trimr(const std::wstring& text, const wchar_t* chars);
QZ_API _bstr_t trimr(const _bstr_t& text, const wchar_t* chars);

// A copy with every character in lower / upper case.
QZ_API std::string strlower(const std::string& text);
QZ_API std::wstring strlower(const std::wstring& text);
QZ_API _bstr_t strlower(const _bstr_t& text);
QZ_API std::string strupper(const std::string& text);
QZ_API std::wstring strupper(const std::wstring& text);
QZ_API _bstr_t strupper(const _bstr_t& text);
