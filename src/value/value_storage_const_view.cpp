// _value_t_pcdata_t<T>: a read-only view on a caller's constant. Every write
// (put, the writable element view) is left to the root, which refuses it.
#include <qz/value/internal/value_storage.h>

#include "value/value_scalar_ops.h"

#include <vector>

using namespace qz_detail;

template <class T>
_value_t_pcdata_t<T>::_value_t_pcdata_t(const T* constant, const _value_t_data* owner) noexcept
    : constant_(constant), owner_(owner) {}

template <class T>
_value_t_pcdata_t<T>::~_value_t_pcdata_t() = default;

template <class T>
const std::type_info& _value_t_pcdata_t<T>::type() const {
  return typeid(T);
}

template <class T>
_value_t_data* _value_t_pcdata_t<T>::clone() const {
  return new _value_t_data_t<T>(*constant_);
}

template <class T>
_value_t_data* _value_t_pcdata_t<T>::to_container() const {
  return new _value_t_cont_t<T>(std::vector<T>(1, *constant_));
}

template <class T>
bool _value_t_pcdata_t<T>::equal(const _value_t_data& other) const {
  return scalar_equal(*constant_, other);
}

template <class T>
bool _value_t_pcdata_t<T>::less(const _value_t_data& other) const {
  return scalar_less(*constant_, other);
}

template <class T>
_value_t_data* _value_t_pcdata_t<T>::get(unsigned __int64 index) const {
  check_scalar_index(index);
  return new _value_t_pcdata_t<T>(constant_, this);
}

template <class T>
_value_t_data* _value_t_pcdata_t<T>::get(unsigned __int64 index) {
  return _value_t_data::get(index);
}

template <class T>
bool _value_t_pcdata_t<T>::object() const {
  return is_object_kind<T>;
}

template <class T>
unsigned short _value_t_pcdata_t<T>::vartype() const {
  return kind_code<T>;
}

#define QZ_DEFINE_CONST_VIEW_TYPED(U)                                         \
  template <class T>                                                          \
  U _value_t_pcdata_t<T>::get(const U*) const {                               \
    return read_scalar<T, U>(*constant_);                                     \
  }                                                                           \
  template <class T>                                                          \
  const U* _value_t_pcdata_t<T>::getp(const U*) const {                       \
    return address_of<T, U>(*constant_);                                      \
  }
QZ_VALUE_KINDS(QZ_DEFINE_CONST_VIEW_TYPED)
#undef QZ_DEFINE_CONST_VIEW_TYPED

#define QZ_INSTANTIATE(T) template class _value_t_pcdata_t<T>;
QZ_VALUE_KINDS(QZ_INSTANTIATE)
#undef QZ_INSTANTIATE
