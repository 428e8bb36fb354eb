#include "value/bool_element_view.h"

#include "value/value_scalar_ops.h"

#include <qz/value/internal/value_storage.h>

namespace qz_detail {

bool_element_view* bool_element_view::read_only(const std::vector<bool>& items, unsigned __int64 index,
                                                 const _value_t_data* owner) {
  return new bool_element_view(&items, nullptr, index, owner);
}

bool_element_view* bool_element_view::writable(std::vector<bool>& items, unsigned __int64 index,
                                                const _value_t_data* owner) {
  return new bool_element_view(&items, &items, index, owner);
}

const std::type_info& bool_element_view::type() const { return typeid(bool); }

_value_t_data* bool_element_view::clone() const { return new _value_t_data_t<bool>(current()); }

_value_t_data* bool_element_view::to_container() const {
  return new _value_t_cont_t<bool>(std::vector<bool>(1, current()));
}

bool bool_element_view::equal(const _value_t_data& other) const {
  return scalar_equal(current(), other);
}

bool bool_element_view::less(const _value_t_data& other) const {
  return scalar_less(current(), other);
}

_value_t_data* bool_element_view::get(unsigned __int64 index) const {
  check_scalar_index(index);
  return new bool_element_view(items_, nullptr, index_, this);
}

_value_t_data* bool_element_view::get(unsigned __int64 index) {
  if (!target_) return _value_t_data::get(index);
  check_scalar_index(index);
  return new bool_element_view(items_, target_, index_, this);
}

unsigned short bool_element_view::vartype() const { return kind_code<bool>; }

#define QZ_DEFINE_BIT_TYPED(U)                                              \
  U bool_element_view::get(const U*) const {                               \
    return read_scalar<bool, U>(current());                                 \
  }                                                                         \
  void bool_element_view::put(const U& value) {                             \
    if (!target_) return _value_t_data::put(value);                         \
    bool bit = current();                                                   \
    assign_scalar(bit, value);                                              \
    (*target_)[static_cast<size_t>(index_)] = bit;                          \
  }                                                                         \
  const U* bool_element_view::getp(const U*) const {                        \
    snapshot_ = current();                                                  \
    return address_of<bool, U>(snapshot_);                                  \
  }
QZ_VALUE_KINDS(QZ_DEFINE_BIT_TYPED)
#undef QZ_DEFINE_BIT_TYPED

}  // namespace qz_detail
