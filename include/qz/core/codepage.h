// Conversion between wide text and narrow text of a given code page.
//
// The code page is anything the system's converters accept (CP_ACP, CP_OEMCP,
// CP_UTF8, 1252, ...); no default is applied. The view's length is passed on,
// so a view need not be null-terminated and embedded null characters are
// converted like any other. A failed conversion (an invalid code page, for
// one) throws ESystemException for the thread's last error.
//
// Thread safety: both functions are re-entrant.
#pragma once

#include <qz/core/const_string.h>
#include <qz/export.h>

#include <string>

QZ_API std::string as_string(basic_const_string<wchar_t> text, int codepage);
QZ_API std::wstring as_wstring(basic_const_string<char> text, int codepage);
