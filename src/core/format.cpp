#include <qz/core/format.h>

#include <stdarg.h>
#include <stdio.h>
#include <wchar.h>

#include <stdexcept>

namespace {

// Every formatter works in a fixed stack buffer: one heap allocation (the
// result) per call, and a hard limit on the output size.
constexpr size_t kBufferSize = 2048;
constexpr size_t kMaxCount = kBufferSize - 1;

// The runtime's bounded formatters (msvcrt's own, so that "%I64d" works)
// return -1 when the output does not fit into kMaxCount characters.
int format_into(char* buffer, const char* format, va_list args) {
  return _vsnprintf_s(buffer, kBufferSize, kMaxCount, format, args);
}

int format_into(wchar_t* buffer, const wchar_t* format, va_list args) {
  return _vsnwprintf_s(buffer, kBufferSize, kMaxCount, format, args);
}

template <class Char>
std::basic_string<Char> to_string(const Char* buffer, int count) {
  // Overlong output is an error for the string results: a truncated message
  // would silently lose its end.
  if (count < 0) throw std::length_error("string too long");
  return std::basic_string<Char>(buffer, static_cast<size_t>(count));
}

// The format's terminator is checked before anything else is touched.
template <class Char>
int format_checked(basic_const_string<Char> format, Char* buffer, va_list args) {
  return format_into(buffer, format.c_str(), args);
}

}  // namespace

std::string format_string(basic_const_string<char> format, ...) {
  char buffer[kBufferSize];
  va_list args;
  va_start(args, format);
  const int count = format_checked(format, buffer, args);
  va_end(args);
  return to_string(buffer, count);
}

std::wstring format_wstring(basic_const_string<wchar_t> format, ...) {
  wchar_t buffer[kBufferSize];
  va_list args;
  va_start(args, format);
  const int count = format_checked(format, buffer, args);
  va_end(args);
  return to_string(buffer, count);
}

_bstr_t format_bstr(basic_const_string<wchar_t> format, ...) {
  wchar_t buffer[kBufferSize];
  va_list args;
  va_start(args, format);
  const int count = format_checked(format, buffer, args);
  va_end(args);
  // A _bstr_t result is meant for display: an overlong one keeps its first
  // kMaxCount characters instead of failing.
  if (count < 0) buffer[kMaxCount] = L'\0';
  BSTR result = SysAllocString(buffer);
  if (!result) _com_issue_error(E_OUTOFMEMORY);
  return _bstr_t(result, false);
}
