// _value_t: the strict conversions to std::list, std::set and std::vector.
//
// Each element is read through its own typed reader, exactly as the scalar
// operators read a scalar, so a sequence converts where its elements do and
// refuses with their bad cast where they do not. A scalar is the sequence of
// its one value.
#include <qz/value/value.h>

#include "value/value_access.h"

#include <memory>

namespace {

template <class T, class Sequence>
void append(Sequence& items, T item) {
  items.insert(items.end(), std::move(item));
}

template <class T, class Sequence>
Sequence read_sequence(const _value_t_data* data) {
  qz_detail::stored_or_throw(data, typeid(Sequence));
  // A container of T itself copies without an element view per item.
  if (const auto* same = dynamic_cast<const _value_t_cont_t<T>*>(data)) {
    return Sequence(same->items().begin(), same->items().end());
  }
  Sequence items;
  if (!data->container()) {
    append<T>(items, data->get(static_cast<const T*>(nullptr)));
    return items;
  }
  for (unsigned __int64 i = 0; i < data->size(); ++i) {
    const std::unique_ptr<const _value_t_data> element(data->get(i));
    append<T>(items, element->get(static_cast<const T*>(nullptr)));
  }
  return items;
}

}  // namespace

#define QZ_DEFINE_SEQUENCE_READERS(T)                                                        \
  _value_t::operator std::list<T>() const { return read_sequence<T, std::list<T>>(data_); }  \
  _value_t::operator std::set<T>() const { return read_sequence<T, std::set<T>>(data_); }    \
  _value_t::operator std::vector<T>() const { return read_sequence<T, std::vector<T>>(data_); }
QZ_VALUE_KINDS(QZ_DEFINE_SEQUENCE_READERS)
#undef QZ_DEFINE_SEQUENCE_READERS
