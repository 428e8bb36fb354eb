#include <qz/core/number_text.h>

#include <stdlib.h>

namespace {

// 64 binary digits, a sign for radix 10, and the terminator.
constexpr size_t kDigits = 65;

template <class Char, class Value, class Converter>
std::basic_string<Char> to_text(Value value, int radix, Converter convert) {
  Char buffer[kDigits] = {};
  convert(value, buffer, kDigits, radix);
  return buffer;
}

}  // namespace

// The checked converters have template overloads, so each is wrapped in a lambda.
std::string itoa(int value, int radix) {
  return to_text<char>(value, radix, [](int v, char* b, size_t n, int r) { return _itoa_s(v, b, n, r); });
}
std::string ltoa(long value, int radix) {
  return to_text<char>(value, radix, [](long v, char* b, size_t n, int r) { return _ltoa_s(v, b, n, r); });
}
std::string i64toa(__int64 value, int radix) {
  return to_text<char>(value, radix, [](__int64 v, char* b, size_t n, int r) { return _i64toa_s(v, b, n, r); });
}
std::wstring itow(int value, int radix) {
  return to_text<wchar_t>(value, radix, [](int v, wchar_t* b, size_t n, int r) { return _itow_s(v, b, n, r); });
}
std::wstring ltow(long value, int radix) {
  return to_text<wchar_t>(value, radix, [](long v, wchar_t* b, size_t n, int r) { return _ltow_s(v, b, n, r); });
}
std::wstring i64tow(__int64 value, int radix) {
  return to_text<wchar_t>(value, radix,
                          [](__int64 v, wchar_t* b, size_t n, int r) { return _i64tow_s(v, b, n, r); });
}

int atoi(const std::string& text) { return ::atoi(text.c_str()); }
long atol(const std::string& text) { return ::atol(text.c_str()); }
int wtoi(const std::wstring& text) { return ::_wtoi(text.c_str()); }
