// Whole-string character tests by the rules of user_default_locale().
//
// Each is true when `text` is non-empty and every character is of the class:
// isalnum a letter or digit, isalpha a letter (upper, lower or other),
// isdigit a digit, isxdigit a hexadecimal digit. Narrow text is taken in the
// ANSI code page, so letters beyond ASCII count as letters.
//
// These overloads stand beside the C functions of the same names, which stay
// declared here, so isdigit('7') still calls the C function.
//
// Thread safety: all functions are re-entrant.
#pragma once

#include <qz/export.h>

#include <cctype>
#include <string>

QZ_API bool isalnum(const std::string& text);
QZ_API bool isalpha(const std::string& text);
QZ_API bool isdigit(const std::string& text);
QZ_API bool isxdigit(const std::string& text);
