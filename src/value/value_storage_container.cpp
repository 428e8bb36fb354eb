// _value_t_cont_t<T>: an owned, ordered sequence of kind T.
//
// The typed readers and writers act on the first element. Elements are
// compared with the other side's contiguous array (getp); a bool container
// has no such array (std::vector<bool> packs bits), so bools are compared
// through the other container's vector, or through getp on a single bool.
#include <qz/value/internal/value_storage.h>

#include "value/bool_element_view.h"
#include "value/value_scalar_ops.h"

#include <qz/value/value.h>

#include <algorithm>
#include <stdexcept>

using namespace qz_detail;

namespace {

// Every element the comparison needs; `other` holds at least one.
std::vector<bool> bools_of(const _value_t_data& other) {
  if (const auto* bits = dynamic_cast<const _value_t_cont_t<bool>*>(&other)) return bits->items();
  return std::vector<bool>(1, *other.getp(static_cast<const bool*>(nullptr)));
}

template <class T>
bool same_elements(const std::vector<T>& items, const _value_t_data& other) {
  if constexpr (std::is_same_v<T, bool>) {
    return items == bools_of(other);
  } else {
    return std::equal(items.begin(), items.end(), other.getp(static_cast<const T*>(nullptr)));
  }
}

template <class T>
bool precedes(const std::vector<T>& items, const _value_t_data& other, size_t count) {
  if constexpr (std::is_same_v<T, bool>) {
    static_cast<void>(count);  // the other vector knows its own length
    const std::vector<bool> theirs = bools_of(other);
    return std::lexicographical_compare(items.begin(), items.end(), theirs.begin(), theirs.end());
  } else {
    const T* theirs = other.getp(static_cast<const T*>(nullptr));
    return std::lexicographical_compare(items.begin(), items.end(), theirs, theirs + count);
  }
}

template <class T>
void check_not_empty(const std::vector<T>& items) {
  if (items.empty()) throw std::out_of_range("out of range");
}

}  // namespace

template <class T>
_value_t_cont_t<T>::_value_t_cont_t() = default;

template <class T>
_value_t_cont_t<T>::_value_t_cont_t(std::vector<T> items) : items_(std::move(items)) {}

template <class T>
_value_t_cont_t<T>::~_value_t_cont_t() = default;

template <class T>
const std::vector<T>& _value_t_cont_t<T>::items() const noexcept {
  return items_;
}

template <class T>
const std::type_info& _value_t_cont_t<T>::type() const {
  return typeid(T);
}

template <class T>
_value_t_data* _value_t_cont_t<T>::clone() const {
  return new _value_t_cont_t<T>(items_);
}

template <class T>
_value_t_data* _value_t_cont_t<T>::to_container() const {
  return new _value_t_cont_t<T>(items_);
}

template <class T>
bool _value_t_cont_t<T>::equal(const _value_t_data& other) const {
  if (other.size() != items_.size()) return false;
  return items_.empty() || same_elements(items_, other);
}

// Lexicographic: the first differing element decides, a proper prefix is less.
template <class T>
bool _value_t_cont_t<T>::less(const _value_t_data& other) const {
  const unsigned __int64 count = other.size();
  return count != 0 && precedes(items_, other, static_cast<size_t>(count));
}

template <class T>
unsigned __int64 _value_t_cont_t<T>::size() const {
  return items_.size();
}

template <class T>
bool _value_t_cont_t<T>::container() const {
  return true;
}

template <class T>
bool _value_t_cont_t<T>::object() const {
  return is_object_kind<T>;
}

template <class T>
_value_t_data* _value_t_cont_t<T>::get(unsigned __int64 index) const {
  if constexpr (std::is_same_v<T, bool>) return bool_element_view::read_only(items_, index, this);
  else return new _value_t_pcdata_t<T>(&items_[static_cast<size_t>(index)], this);
}

template <class T>
_value_t_data* _value_t_cont_t<T>::get(unsigned __int64 index) {
  if constexpr (std::is_same_v<T, bool>) return bool_element_view::writable(items_, index, this);
  else return new _value_t_pdata_t<T>(&items_[static_cast<size_t>(index)], this);
}

template <class T>
unsigned short _value_t_cont_t<T>::vartype() const {
  return kind_code<T>;
}

// A value of another kind is converted through its own typed reader.
template <class T>
void _value_t_cont_t<T>::push_back(const _value_t& value) {
  if (value.empty()) return _value_t_data::push_back(value);
  items_.push_back(value.data()->get(static_cast<const T*>(nullptr)));
}

#define QZ_DEFINE_CONTAINER_TYPED(U)                                          \
  template <class T>                                                          \
  U _value_t_cont_t<T>::get(const U*) const {                                 \
    check_not_empty(items_);                                                  \
    return read_scalar<T, U>(items_.front());                                 \
  }                                                                           \
  template <class T>                                                          \
  void _value_t_cont_t<T>::put(const U& value) {                              \
    check_not_empty(items_);                                                  \
    if constexpr (std::is_same_v<T, bool>) {                                  \
      bool first = items_.front();                                            \
      assign_scalar(first, value);                                            \
      items_.front() = first;                                                 \
    } else {                                                                  \
      assign_scalar(items_.front(), value);                                   \
    }                                                                         \
  }                                                                           \
  template <class T>                                                          \
  const U* _value_t_cont_t<T>::getp(const U*) const {                         \
    if constexpr (!std::is_same_v<T, U>)                                      \
      throw_bad_cast(typeid(T), typeid(U));                                   \
    else if constexpr (std::is_same_v<T, bool>)                               \
      throw_bad_cast(typeid(std::vector<bool>), typeid(const bool*));         \
    else                                                                      \
      return items_.data();                                                   \
  }                                                                           \
  template <class T>                                                          \
  void _value_t_cont_t<T>::push_back(const U& value) {                        \
    if constexpr (std::is_same_v<T, U>) items_.push_back(value);              \
    else _value_t_data::push_back(value);                                     \
  }
QZ_VALUE_KINDS(QZ_DEFINE_CONTAINER_TYPED)
#undef QZ_DEFINE_CONTAINER_TYPED

#define QZ_INSTANTIATE(T) template class _value_t_cont_t<T>;
QZ_VALUE_KINDS(QZ_INSTANTIATE)
#undef QZ_INSTANTIATE
