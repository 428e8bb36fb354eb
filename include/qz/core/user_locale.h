// The library-wide user-default locale.
//
// The classic locale, except that its ctype<char> and ctype<wchar_t> facets
// classify and fold characters as the user's Windows locale does: narrow text
// is taken in the system's ANSI code page (so 0xC4, 'Ä' in code page 1252,
// is an upper-case letter whose lower case is 0xE4), wide text as UTF-16.
// Case folding and the whole-string character tests of qz use it. It is built
// when qz.dll loads, never fails to build (on trouble it is the classic
// locale) and never changes afterwards.
//
// Thread safety: the locale is read-only; any thread may use it at any time.
#pragma once

#include <qz/export.h>

#include <locale>

QZ_API const std::locale& user_default_locale();
