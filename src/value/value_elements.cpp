// _value_t: element views and appending.
#include <qz/value/value.h>

#include "value/value_access.h"

#include <memory>

// The writable view deliberately skips copy on write: writing through it
// reaches every handle that shares the storage.
_value_t _value_t::operator[](unsigned __int64 index) {
  qz_detail::stored_or_throw(data_, typeid(const _value_t_data*));
  return _value_t(data_->get(index));
}

const _value_t _value_t::operator[](unsigned __int64 index) const {
  const _value_t_data& data = qz_detail::stored_or_throw(data_, typeid(const _value_t_data*));
  return _value_t(data.get(index));
}

// An empty value becomes a scalar and a scalar becomes a container of its own
// kind. The container of a scalar is filled before it replaces the scalar, so
// a refused element leaves the value as it was.
template <class T>
void _value_t::push_back_scalar(const T& v) {
  if (!data_) return reset(new _value_t_data_t<T>(v));
  append(v);
}

template <class T>
void _value_t::append(const T& v) {
  if (!data_->container()) {
    std::unique_ptr<_value_t_data> grown(data_->to_container());
    grown->push_back(v);
    return reset(grown.release());
  }
  detach();
  data_->push_back(v);
}

void _value_t::push_back(int v) { push_back_scalar(v); }
void _value_t::push_back(unsigned long v) { push_back_scalar(v); }
void _value_t::push_back(__int64 v) { push_back_scalar(v); }
void _value_t::push_back(bool v) { push_back_scalar(v); }
void _value_t::push_back(double v) { push_back_scalar(v); }
void _value_t::push_back(const std::string& v) { push_back_scalar(v); }
void _value_t::push_back(const std::wstring& v) { push_back_scalar(v); }
void _value_t::push_back(const _bstr_t& v) { push_back_scalar(v); }
void _value_t::push_back(const _time_t& v) { push_back_scalar(v); }
void _value_t::push_back(const char* v) { push_back_scalar(basic_const_string<char>(v).str()); }
void _value_t::push_back(const wchar_t* v) {
  push_back_scalar(basic_const_string<wchar_t>(v).str());
}
void _value_t::push_back(SmartPtrObj* v) { push_back_scalar(SmartPtr<SmartPtrObj>(v)); }
void _value_t::push_back(const SmartPtrObj* v) {
  push_back_scalar(SmartPtr<SmartPtrObj const>(v));
}

// The first element is an owned copy of `v` (a view is not kept); later ones
// are read from `v` as the container's kind.
void _value_t::push_back(const _value_t& v) {
  if (!data_) {
    qz_detail::stored_or_throw(v.data_, typeid(void));
    return reset(v.data_->clone());
  }
  append(v);
}
