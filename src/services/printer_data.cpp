#include <qz/core/throw.h>
#include <qz/services/printer.h>

#include "services/spooler_calls.h"

#include <cstring>
#include <string>
#include <vector>

using spooler::writable;

namespace {

DWORD get_data(HANDLE h, const wchar_t* name, DWORD* type, BYTE* data, DWORD size, DWORD* needed) {
  return ::GetPrinterDataW(h, writable(name), type, data, size, needed);
}

DWORD get_data(HANDLE h, const char* name, DWORD* type, BYTE* data, DWORD size, DWORD* needed) {
  return ::GetPrinterDataA(h, writable(name), type, data, size, needed);
}

DWORD set_data(HANDLE h, const wchar_t* name, DWORD type, const void* data, DWORD size) {
  return ::SetPrinterDataW(h, writable(name), type,
                           static_cast<BYTE*>(const_cast<void*>(data)), size);
}

DWORD set_data(HANDLE h, const char* name, DWORD type, const void* data, DWORD size) {
  return ::SetPrinterDataA(h, writable(name), type,
                           static_cast<BYTE*>(const_cast<void*>(data)), size);
}

// REG_SZ data up to its first zero; the data need not end in one.
template <class Char>
std::basic_string<Char> text_of(const std::vector<BYTE>& data, DWORD size) {
  const auto* text = reinterpret_cast<const Char*>(data.data());
  const size_t most = size / sizeof(Char);
  size_t length = 0;
  while (length < most && text[length] != 0) ++length;
  return std::basic_string<Char>(text, length);
}

template <class Char>
_value_t get_value(HANDLE h, const Char* name) {
  DWORD type = 0, needed = 0;
  DWORD code = get_data(h, name, &type, nullptr, 0, &needed);
  if (code == ERROR_SUCCESS) return _value_t();
  if (code != ERROR_MORE_DATA) ThrowSystemException(code);
  std::vector<BYTE> data(needed);
  code = get_data(h, name, &type, data.data(), needed, &needed);
  if (code != ERROR_SUCCESS) ThrowSystemException(code);
  if (type == REG_SZ) return _value_t(text_of<Char>(data, needed));
  if (type == REG_DWORD && needed >= sizeof(DWORD)) {
    unsigned long number = 0;
    std::memcpy(&number, data.data(), sizeof number);
    return _value_t(number);
  }
  return _value_t();
}

template <class Char>
void set_value(HANDLE h, const Char* name, const _value_t& value) {
  if (value.empty()) return;
  DWORD code = ERROR_SUCCESS;
  switch (value.data()->vartype()) {
    case VT_BSTR: {
      const std::basic_string<Char> text = static_cast<std::basic_string<Char>>(value);
      const DWORD size = static_cast<DWORD>((text.size() + 1) * sizeof(Char));
      code = set_data(h, name, REG_SZ, text.c_str(), size);
      break;
    }
    case VT_UI4:
    case VT_INT: {
      const DWORD number = static_cast<unsigned long>(value);
      code = set_data(h, name, REG_DWORD, &number, sizeof number);
      break;
    }
    default:
      return;  // other kinds are not written, see the header
  }
  if (code != ERROR_SUCCESS) ThrowSystemException(code);
}

}  // namespace

_value_t TPrinter::GetPrinterDataW(const wchar_t* valueName) { return get_value(handle, valueName); }

_value_t TPrinter::GetPrinterDataW(const char* valueName) { return get_value(handle, valueName); }

void TPrinter::SetPrinterDataW(const wchar_t* valueName, const _value_t& value) {
  set_value(handle, valueName, value);
}

void TPrinter::SetPrinterDataW(const char* valueName, const _value_t& value) {
  set_value(handle, valueName, value);
}
