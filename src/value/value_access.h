// The one access rule of _value_t, and the small typed readers built on it.
//
// Every reader and view of a value first asks for its storage: an empty
// value has none and refuses with a bad cast from void to what the caller
// wanted. The lenient readers (as_int ... as_time) add the numeric helpers.
#pragma once

#include <qz/core/throw.h>
#include <qz/value/internal/value_data.h>

#include <limits>
#include <typeinfo>

namespace qz_detail {

// The storage of a non-empty value; an empty one refuses every reader with a
// bad cast from void to the reader's result.
inline const _value_t_data& stored_or_throw(const _value_t_data* data, const std::type_info& wanted) {
  if (!data) ThrowBadCast(typeid(void), wanted);
  return *data;
}

// The storage's own typed reader for T.
template <class T>
T read_as(const _value_t_data& data) {
  return data.get(static_cast<const T*>(nullptr));
}

// Truncation toward zero into a signed integer. A value outside Int's range,
// or NaN, gives `beyond`; by default Int's minimum, which is what the
// processor's truncating conversion answers (and a plain cast would be
// undefined behaviour).
template <class Int>
Int truncated(double value, Int beyond = std::numeric_limits<Int>::min()) {
  // -2^31 and -2^63 are exact doubles, and so are their negations.
  constexpr double lowest = static_cast<double>(std::numeric_limits<Int>::min());
  if (value >= lowest && value < -lowest) return static_cast<Int>(value);
  return beyond;
}

// A stored time's integral value: its seconds since 1970-01-01 UTC.
inline __int64 seconds_of(const _value_t_data& data) {
  return static_cast<__int64>(read_as<_time_t>(data));
}

}  // namespace qz_detail
