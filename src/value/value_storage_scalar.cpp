// _value_t_data_t<T>: one owned value of kind T.
#include <qz/value/internal/value_storage.h>

#include "value/value_scalar_ops.h"

#include <vector>

using namespace qz_detail;

template <class T>
_value_t_data_t<T>::_value_t_data_t(const T& value) : value_(value) {}

template <class T>
_value_t_data_t<T>::~_value_t_data_t() = default;

template <class T>
const std::type_info& _value_t_data_t<T>::type() const {
  return typeid(T);
}

template <class T>
_value_t_data* _value_t_data_t<T>::clone() const {
  return new _value_t_data_t<T>(value_);
}

template <class T>
_value_t_data* _value_t_data_t<T>::to_container() const {
  return new _value_t_cont_t<T>(std::vector<T>(1, value_));
}

template <class T>
bool _value_t_data_t<T>::equal(const _value_t_data& other) const {
  return scalar_equal(value_, other);
}

template <class T>
bool _value_t_data_t<T>::less(const _value_t_data& other) const {
  return scalar_less(value_, other);
}

template <class T>
_value_t_data* _value_t_data_t<T>::get(unsigned __int64 index) const {
  check_scalar_index(index);
  return new _value_t_pcdata_t<T>(&value_, this);
}

template <class T>
_value_t_data* _value_t_data_t<T>::get(unsigned __int64 index) {
  check_scalar_index(index);
  return new _value_t_pdata_t<T>(&value_, this);
}

template <class T>
bool _value_t_data_t<T>::object() const {
  return is_object_kind<T>;
}

template <class T>
unsigned short _value_t_data_t<T>::vartype() const {
  return kind_code<T>;
}

#define QZ_DEFINE_SCALAR_TYPED(U)                                             \
  template <class T>                                                          \
  U _value_t_data_t<T>::get(const U*) const {                                 \
    return read_scalar<T, U>(value_);                                         \
  }                                                                           \
  template <class T>                                                          \
  void _value_t_data_t<T>::put(const U& value) {                              \
    assign_scalar(value_, value);                                             \
  }                                                                           \
  template <class T>                                                          \
  const U* _value_t_data_t<T>::getp(const U*) const {                         \
    return address_of<T, U>(value_);                                          \
  }
QZ_VALUE_KINDS(QZ_DEFINE_SCALAR_TYPED)
#undef QZ_DEFINE_SCALAR_TYPED

#define QZ_INSTANTIATE(T) template class _value_t_data_t<T>;
QZ_VALUE_KINDS(QZ_INSTANTIATE)
#undef QZ_INSTANTIATE
