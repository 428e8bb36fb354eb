// _value_t: the text form, as logs and messages print a value.
//
// A container prints as "{a,b,c}" from its elements' own text; a scalar by
// its kind code. The narrow and the wide form build the same text: numbers
// through the runtime's narrow or wide radix-10 converters, everything that
// only exists narrow (the double's digits, the time's ctime text, an
// object's ToString, a type name) widened through the ANSI code page.
#include <qz/value/value.h>

#include "value/value_access.h"
#include "value/value_conversions.h"

#include <qz/core/codepage.h>
#include <qz/core/type_name.h>

#include <stdlib.h>

namespace {

using qz_detail::ConstObjectPtr;

// 64 binary digits, a sign and the terminator: every 64-bit value fits.
constexpr size_t kNumberChars = 66;

template <class T>
T read(const _value_t_data& data) {
  return data.get(static_cast<const T*>(nullptr));
}

// Seven significant digits, fixed or exponent form as the runtime chooses.
std::string double_text(double value) {
  char buffer[32] = {};
  _gcvt_s(buffer, sizeof buffer, value, 7);
  return buffer;
}

std::string object_text(const _value_t_data& data) {
  const ConstObjectPtr object = read<ConstObjectPtr>(data);
  return object ? object->ToString() : "<null>";
}

std::string narrow_scalar(const _value_t_data& data) {
  char number[kNumberChars] = {};
  switch (data.vartype()) {
    case VT_R8: return double_text(read<double>(data));
    case VT_DATE: return read<_time_t>(data).ctime();
    case VT_BSTR: return read<std::string>(data);
    case VT_BOOL: return read<bool>(data) ? "true" : "false";
    case VT_UNKNOWN: return object_text(data);
    case VT_UI4: _ultoa_s(read<unsigned long>(data), number, kNumberChars, 10); return number;
    case VT_I8: _i64toa_s(read<__int64>(data), number, kNumberChars, 10); return number;
    case VT_INT: _itoa_s(read<int>(data), number, kNumberChars, 10); return number;
    default: return type_name(data.type());
  }
}

std::wstring widened(const std::string& text) { return ::as_wstring(text, 0); }

std::wstring wide_scalar(const _value_t_data& data) {
  wchar_t number[kNumberChars] = {};
  switch (data.vartype()) {
    case VT_R8: return widened(double_text(read<double>(data)));
    case VT_DATE: return widened(read<_time_t>(data).ctime());
    case VT_BSTR: return read<std::wstring>(data);
    case VT_BOOL: return read<bool>(data) ? L"true" : L"false";
    case VT_UNKNOWN: return widened(object_text(data));
    case VT_UI4: _ultow_s(read<unsigned long>(data), number, kNumberChars, 10); return number;
    case VT_I8: _i64tow_s(read<__int64>(data), number, kNumberChars, 10); return number;
    case VT_INT: _itow_s(read<int>(data), number, kNumberChars, 10); return number;
    default: return widened(type_name(data.type()));
  }
}

template <class Char, class ScalarText>
std::basic_string<Char> braced_text(const _value_t& value, ScalarText scalar_text) {
  const _value_t_data& data = *value.data();
  if (!data.container()) return scalar_text(data);
  std::basic_string<Char> text(1, Char('{'));
  for (unsigned __int64 i = 0; i < data.size(); ++i) {
    if (i != 0) text += Char(',');
    text += braced_text<Char>(value[i], scalar_text);
  }
  return text += Char('}');
}

}  // namespace

std::string _value_t::as_string() {
  qz_detail::stored_or_throw(data_, typeid(std::string));
  return braced_text<char>(*this, narrow_scalar);
}

std::wstring _value_t::as_wstring() {
  qz_detail::stored_or_throw(data_, typeid(std::wstring));
  return braced_text<wchar_t>(*this, wide_scalar);
}

_bstr_t _value_t::as_bstr() {
  qz_detail::stored_or_throw(data_, typeid(_bstr_t));
  return qz_detail::to_bstr(as_wstring());
}
