// printf-style formatting into std::string, std::wstring and _bstr_t.
//
// The format is a basic_const_string that must be null-terminated at its
// length (std::logic_error "Invalid _data of const_string for c_str()"
// otherwise). The arguments follow the C runtime's printf family, including
// "%I64d" and "%I64u"; they are not type-checked. Output is limited to 2047
// characters: format_string and format_wstring throw std::length_error
// "string too long" beyond that, format_bstr keeps the first 2047 characters.
//
// Thread safety: all functions are re-entrant.
#pragma once

#include <qz/core/com_types.h>
#include <qz/core/const_string.h>
#include <qz/export.h>

#include <string>

QZ_API std::string format_string(basic_const_string<char> format, ...);
QZ_API std::wstring format_wstring(basic_const_string<wchar_t> format, ...);
// Throws the COM error E_OUTOFMEMORY when the system string cannot be made.
QZ_API _bstr_t format_bstr(basic_const_string<wchar_t> format, ...);
