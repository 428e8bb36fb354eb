#include "errors/system_message.h"

bool system_message(DWORD code, DWORD flags, std::wstring& text) {
  text.clear();
  wchar_t* buffer = nullptr;
  const DWORD length =
      FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | flags, nullptr, code,
                     MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
  if (buffer) {
    text.assign(buffer, length);
    LocalFree(buffer);
  }
  return length != 0;
}

std::wstring system_error_text(DWORD code) {
  std::wstring text;
  system_message(code, FORMAT_MESSAGE_IGNORE_INSERTS, text);
  while (!text.empty() && (text.back() == L'\r' || text.back() == L'\n')) text.pop_back();
  return text;
}
