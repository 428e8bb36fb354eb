// The root of the storage family: every typed operation refuses, so a form
// only overrides what its kind supports.
#include <qz/value/internal/value_data.h>

#include "value/value_conversions.h"

#include <qz/core/throw.h>
#include <qz/value/value.h>

namespace {

volatile long live_storages = 0;

}  // namespace

void qz_detail::throw_bad_cast(const std::type_info& from, const std::type_info& to) {
  ThrowBadCast(from, to);
}

_value_t_data::_value_t_data() noexcept : ref_count_(0) { InterlockedIncrement(&live_storages); }

_value_t_data::_value_t_data(const _value_t_data&) noexcept : ref_count_(0) {
  InterlockedIncrement(&live_storages);
}

// The count belongs to the object, not to its content.
_value_t_data& _value_t_data::operator=(const _value_t_data&) noexcept { return *this; }

_value_t_data::~_value_t_data() { InterlockedDecrement(&live_storages); }

unsigned __int64 _value_t_data::size() const { return 1; }
bool _value_t_data::container() const { return false; }
bool _value_t_data::object() const { return false; }

#define QZ_DEFINE_ROOT_TYPED(T)                                                  \
  T _value_t_data::get(const T*) const { throw_bad_cast_to(typeid(T)); }         \
  void _value_t_data::push_back(const T&) { throw_bad_cast_from(typeid(T)); }    \
  void _value_t_data::put(const T&) { throw_bad_cast_from(typeid(T)); }          \
  const T* _value_t_data::getp(const T*) const { throw_bad_cast_to(typeid(T)); }
QZ_VALUE_KINDS(QZ_DEFINE_ROOT_TYPED)
#undef QZ_DEFINE_ROOT_TYPED

_value_t_data* _value_t_data::get(unsigned __int64) const {
  throw_bad_cast_to(typeid(const _value_t_data*));
}

_value_t_data* _value_t_data::get(unsigned __int64) {
  throw_bad_cast_to(typeid(const _value_t_data*));
}

void _value_t_data::push_back(const _value_t& value) { throw_bad_cast_from(value.type()); }

void _value_t_data::AddRef() const noexcept { InterlockedIncrement(&ref_count_); }

void _value_t_data::Release() const noexcept {
  if (InterlockedDecrement(&ref_count_) == 0) delete this;
}

long _value_t_data::live_count() noexcept { return live_storages; }

void _value_t_data::throw_bad_cast_to(const std::type_info& to) const {
  ThrowBadCast(type(), to);
}

void _value_t_data::throw_bad_cast_from(const std::type_info& from) const {
  ThrowBadCast(from, type());
}
