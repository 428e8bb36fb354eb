// _value_t::as_time: a point in time from whatever the value holds.
//
// Numbers count seconds since 1970-01-01 UTC, as _time_t itself does; text
// is read in the ISO form the library writes (iso8601time), so a time that
// went out as text comes back unchanged. What has no sensible reading as a
// time (a bool, an object) refuses with the storage's bad cast.
#include <qz/value/value.h>

#include "value/value_access.h"

using qz_detail::read_as;
using qz_detail::stored_or_throw;
using qz_detail::truncated;

_time_t _value_t::as_time() {
  const _value_t_data& data = stored_or_throw(data_, typeid(_time_t));
  switch (data.vartype()) {
    case VT_R8: return _time_t(truncated<__int64>(read_as<double>(data), _time_t::invalid));
    case VT_DATE: return read_as<_time_t>(data);
    case VT_BSTR: return _time_t::mktime(read_as<std::string>(data));
    case VT_UI4: return _time_t(static_cast<__int64>(read_as<unsigned long>(data)));
    case VT_I8: return _time_t(read_as<__int64>(data));
    case VT_INT: return _time_t(read_as<int>(data));
    default: return read_as<_time_t>(data);  // bool and objects refuse
  }
}
