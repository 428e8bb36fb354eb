// Numbers to text and back, through the C runtime's checked converters.
//
// The to-text functions do not check the radix: the runtime's checked
// conversion decides what an invalid one does. The buffer holds 64 binary
// digits and the terminator, so every value fits in every radix from 2 up.
// The to-number functions follow the runtime's atoi rules: text that is not a
// number gives 0.
//
// Thread safety: all functions are re-entrant.
#pragma once

#include <qz/export.h>

#include <string>

QZ_API std::string itoa(int value, int radix);
QZ_API std::string ltoa(long value, int radix);
QZ_API std::string i64toa(__int64 value, int radix);
QZ_API std::wstring itow(int value, int radix);
QZ_API std::wstring ltow(long value, int radix);
QZ_API std::wstring i64tow(__int64 value, int radix);

QZ_API int atoi(const std::string& text);
QZ_API long atol(const std::string& text);
QZ_API int wtoi(const std::wstring& text);
