// _value_t: the strict readers. They add nothing to the storage's own typed
// reader but the refusal of an empty value.
#include <qz/value/value.h>

#include "value/value_access.h"

namespace {

template <class T>
T read(const _value_t_data* data) {
  return qz_detail::read_as<T>(qz_detail::stored_or_throw(data, typeid(T)));
}

}  // namespace

_value_t::operator int() const { return read<int>(data_); }
_value_t::operator unsigned long() const { return read<unsigned long>(data_); }
_value_t::operator __int64() const { return read<__int64>(data_); }
_value_t::operator bool() const { return read<bool>(data_); }
_value_t::operator double() const { return read<double>(data_); }
_value_t::operator std::string() const { return read<std::string>(data_); }
_value_t::operator std::wstring() const { return read<std::wstring>(data_); }
_value_t::operator _bstr_t() const { return read<_bstr_t>(data_); }
_value_t::operator _time_t() const { return read<_time_t>(data_); }
