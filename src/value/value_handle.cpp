// _value_t: construction, assignment and the copy-on-write discipline.
//
// The handle owns one count on its storage. Every change of the pointer goes
// through reset(): the new storage is fully built (and counted) before the
// interlocked exchange, and the old one is released only afterwards, so a
// failed allocation leaves the handle as it was.
#include <qz/value/value.h>

#include <windows.h>

namespace {

template <class T, class Sequence>
_value_t_data* make_container(const Sequence& items) {
  return new _value_t_cont_t<T>(std::vector<T>(items.begin(), items.end()));
}

_value_t_data* exchange(_value_t_data** slot, _value_t_data* storage) noexcept {
  return static_cast<_value_t_data*>(
      InterlockedExchangePointer(reinterpret_cast<void* volatile*>(slot), storage));
}

}  // namespace

_value_t::_value_t(const _value_t& other) noexcept : data_(other.data_) {
  if (data_) data_->AddRef();
}

_value_t::_value_t(_value_t_data* storage) noexcept : data_(storage) {
  if (data_) data_->AddRef();
}

_value_t::~_value_t() {
  if (data_) data_->Release();
}

void _value_t::reset(_value_t_data* storage) noexcept {
  if (storage) storage->AddRef();
  _value_t_data* old = exchange(&data_, storage);
  if (old) old->Release();
}

void _value_t::detach() {
  if (data_ && data_->ref_count() != 1) reset(data_->clone());
}

const std::type_info& _value_t::type() const noexcept {
  return data_ ? data_->type() : typeid(void);
}

// ---- scalars --------------------------------------------------------------
// A plain value sets the kind of an empty handle; afterwards the storage
// decides whether its kind accepts it.
template <class T>
void _value_t::assign_scalar(const T& v) {
  if (!data_) return reset(new _value_t_data_t<T>(v));
  detach();
  data_->put(v);
}

#define QZ_DEFINE_SCALAR(Param, Kind, expr)                                       \
  _value_t::_value_t(Param v) : data_(nullptr) { reset(new _value_t_data_t<Kind>(expr)); } \
  _value_t& _value_t::operator=(Param v) {                                        \
    assign_scalar(static_cast<Kind>(expr));                                       \
    return *this;                                                                 \
  }
QZ_DEFINE_SCALAR(const int&, int, v)
QZ_DEFINE_SCALAR(const unsigned long&, unsigned long, v)
QZ_DEFINE_SCALAR(const __int64&, __int64, v)
QZ_DEFINE_SCALAR(const bool&, bool, v)
QZ_DEFINE_SCALAR(const double&, double, v)
QZ_DEFINE_SCALAR(const std::string&, std::string, v)
QZ_DEFINE_SCALAR(const std::wstring&, std::wstring, v)
QZ_DEFINE_SCALAR(const _bstr_t&, _bstr_t, v)
QZ_DEFINE_SCALAR(const _time_t&, _time_t, v)
// A null text pointer is the empty text.
QZ_DEFINE_SCALAR(const char*, std::string, basic_const_string<char>(v).str())
QZ_DEFINE_SCALAR(const wchar_t*, std::wstring, basic_const_string<wchar_t>(v).str())
QZ_DEFINE_SCALAR(basic_const_string<char>, std::string, v.str())
QZ_DEFINE_SCALAR(basic_const_string<wchar_t>, std::wstring, v.str())
QZ_DEFINE_SCALAR(SmartPtrObj*, SmartPtr<SmartPtrObj>, v)
QZ_DEFINE_SCALAR(const SmartPtrObj*, SmartPtr<SmartPtrObj const>, v)
#undef QZ_DEFINE_SCALAR

// ---- sequences ------------------------------------------------------------
// A sequence always replaces the storage: the old kind is not consulted.
#define QZ_DEFINE_SEQUENCE(T, Sequence)                                          \
  _value_t::_value_t(const Sequence<T>& items) : data_(nullptr) {                \
    reset(make_container<T>(items));                                             \
  }                                                                              \
  _value_t& _value_t::operator=(const Sequence<T>& items) {                      \
    reset(make_container<T>(items));                                             \
    return *this;                                                                \
  }
#define QZ_DEFINE_SEQUENCES(T)            \
  QZ_DEFINE_SEQUENCE(T, const_array)      \
  QZ_DEFINE_SEQUENCE(T, std::list)        \
  QZ_DEFINE_SEQUENCE(T, std::vector)      \
  QZ_DEFINE_SEQUENCE(T, std::set)
QZ_VALUE_KINDS(QZ_DEFINE_SEQUENCES)
#undef QZ_DEFINE_SEQUENCES
#undef QZ_DEFINE_SEQUENCE

// ---- other handles --------------------------------------------------------
_value_t& _value_t::operator=(const _value_t& other) noexcept {
  reset(other.data_);  // counts the new storage before releasing the old
  return *this;
}

_value_t& _value_t::operator=(_value_t&& other) noexcept {
  _value_t_data* taken = other.data_;
  other.data_ = nullptr;
  _value_t_data* old = exchange(&data_, taken);
  if (old) old->Release();
  return *this;
}
