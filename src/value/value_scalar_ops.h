// The behaviour every single-value storage shares (the owned scalar, both
// views, and a bool container's element view), written once against the
// value they hold or point to.
#pragma once

#include "value/value_conversions.h"

#include <qz/value/internal/value_data.h>

#include <stdexcept>
#include <type_traits>
#include <typeinfo>

namespace qz_detail {

// get(U) on kind T: the read table, else bad cast from T to U.
template <class T, class U>
U read_scalar(const T& value) {
  if constexpr (readable_as<T, U>::value) return convert<U>(value);
  else throw_bad_cast(typeid(T), typeid(U));
}

// put(U) into kind T: the write table, else bad cast from U to T. The target
// changes only once the converted value exists.
template <class T, class U>
void assign_scalar(T& target, const U& value) {
  if constexpr (accepts<T, U>::value) target = convert<T>(value);
  else throw_bad_cast(typeid(U), typeid(T));
}

// getp(U) on kind T: the value's own address, for its own kind only.
template <class T, class U>
const U* address_of(const T& value) {
  if constexpr (std::is_same_v<T, U>) return &value;
  else throw_bad_cast(typeid(T), typeid(U));
}

// The other side is read through its own typed reader as kind T, so a kind
// it cannot be read as throws instead of comparing unequal.
template <class T>
bool scalar_equal(const T& value, const _value_t_data& other) {
  return other.size() == 1 && value == other.get(static_cast<const T*>(nullptr));
}

template <class T>
bool scalar_less(const T& value, const _value_t_data& other) {
  return value < other.get(static_cast<const T*>(nullptr));
}

// A scalar has exactly one element, index 0.
inline void check_scalar_index(unsigned __int64 index) {
  if (index != 0) throw std::out_of_range("out of range");
}

}  // namespace qz_detail
