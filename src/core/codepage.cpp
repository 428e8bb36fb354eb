#include <qz/core/codepage.h>

#include <qz/core/throw.h>

#include <windows.h>

std::string as_string(basic_const_string<wchar_t> text, int codepage) {
  if (text.empty()) return std::string();
  const int length = static_cast<int>(text.length());
  const int size = WideCharToMultiByte(codepage, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  if (size == 0) ThrowSystemException();
  std::string result(static_cast<size_t>(size), '\0');
  if (WideCharToMultiByte(codepage, 0, text.data(), length, &result[0], size, nullptr, nullptr) == 0)
    ThrowSystemException();
  return result;
}

std::wstring as_wstring(basic_const_string<char> text, int codepage) {
  if (text.empty()) return std::wstring();
  const int length = static_cast<int>(text.length());
  const int size = MultiByteToWideChar(codepage, 0, text.data(), length, nullptr, 0);
  if (size == 0) ThrowSystemException();
  std::wstring result(static_cast<size_t>(size), L'\0');
  if (MultiByteToWideChar(codepage, 0, text.data(), length, &result[0], size) == 0)
    ThrowSystemException();
  return result;
}
