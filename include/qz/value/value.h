// _value_t: the library's variant value.
//
// A small handle to a counted, copy-on-write storage (_value_t_data) holding
// one of eleven element kinds (int, unsigned long, __int64, bool, double,
// std::string, std::wstring, _bstr_t, SmartPtr<SmartPtrObj>,
// SmartPtr<SmartPtrObj const>, _time_t), either as a scalar or as an ordered
// container, either owned or as a view on a caller's variable. An empty
// handle ("void") has no kind.
//
// The kind is fixed by the first assignment: assigning a plain value later
// asks the existing storage to accept it, and a storage refuses what its kind
// cannot hold with EBadCastException. Assigning a sequence or another
// _value_t replaces the storage instead.
//
// Thread safety: one handle must not be used from two threads at once.
// Handles sharing a storage may be copied and dropped on different threads;
// writes are safe because a shared storage is cloned first. A writable
// element view from operator[] bypasses that and needs outside locking.
#pragma once

#include <qz/core/const_string.h>
#include <qz/export.h>
#include <qz/value/internal/value_data.h>

#include <list>
#include <set>
#include <type_traits>
#include <vector>

class QZ_API _value_t {
 public:
  _value_t() noexcept : data_(nullptr) {}
  _value_t(const _value_t& other) noexcept;
  _value_t(_value_t&& other) noexcept : data_(other.data_) { other.data_ = nullptr; }
  // Takes a freshly made storage (count 0), e.g. a view made with view().
  explicit _value_t(_value_t_data* storage) noexcept;
  ~_value_t();

  // Scalars, owned.
  _value_t(const int& v);
  _value_t(const unsigned long& v);
  _value_t(const __int64& v);
  _value_t(const bool& v);
  _value_t(const double& v);
  _value_t(const std::string& v);
  _value_t(const std::wstring& v);
  _value_t(const _bstr_t& v);
  _value_t(const _time_t& v);
  _value_t(const char* v);
  _value_t(const wchar_t* v);
  _value_t(basic_const_string<char> v);
  _value_t(basic_const_string<wchar_t> v);
  // The object gains a reference; a const object stays const.
  _value_t(SmartPtrObj* v);
  _value_t(const SmartPtrObj* v);

  // Sequences, copied in order into an owned container.
#define QZ_DECLARE_SEQUENCE_CTORS(T)      \
  _value_t(const const_array<T>& items);  \
  _value_t(const std::list<T>& items);    \
  _value_t(const std::vector<T>& items);  \
  _value_t(const std::set<T>& items);
  QZ_VALUE_KINDS(QZ_DECLARE_SEQUENCE_CTORS)
#undef QZ_DECLARE_SEQUENCE_CTORS

  // A writable view on `variable` (writes go through while the storage is not
  // shared) and a read-only view on `constant`. The caller keeps the viewed
  // object alive for as long as any handle shares the view.
  template <class T>
  static _value_t view(T& variable);
  template <class T>
  static _value_t const_view(const T& constant);

  _value_t& operator=(const _value_t& other) noexcept;
  _value_t& operator=(_value_t&& other) noexcept;
  _value_t& operator=(const int& v);
  _value_t& operator=(const unsigned long& v);
  _value_t& operator=(const __int64& v);
  _value_t& operator=(const bool& v);
  _value_t& operator=(const double& v);
  _value_t& operator=(const std::string& v);
  _value_t& operator=(const std::wstring& v);
  _value_t& operator=(const _bstr_t& v);
  _value_t& operator=(const _time_t& v);
  _value_t& operator=(const char* v);
  _value_t& operator=(const wchar_t* v);
  _value_t& operator=(basic_const_string<char> v);
  _value_t& operator=(basic_const_string<wchar_t> v);
  _value_t& operator=(SmartPtrObj* v);
  _value_t& operator=(const SmartPtrObj* v);
#define QZ_DECLARE_SEQUENCE_ASSIGN(T)                 \
  _value_t& operator=(const const_array<T>& items);   \
  _value_t& operator=(const std::list<T>& items);     \
  _value_t& operator=(const std::vector<T>& items);   \
  _value_t& operator=(const std::set<T>& items);
  QZ_VALUE_KINDS(QZ_DECLARE_SEQUENCE_ASSIGN)
#undef QZ_DECLARE_SEQUENCE_ASSIGN

  // Strict readers: the storage's typed get with its narrow conversion table;
  // EBadCastException from void when empty.
  operator int() const;
  operator unsigned long() const;
  operator __int64() const;
  operator bool() const;
  operator double() const;
  operator std::string() const;
  operator std::wstring() const;
  operator _bstr_t() const;
  operator _time_t() const;

  // Strict sequences, one conversion per kind and sequence type. A container
  // gives each element read as T by its storage's typed get (so only the
  // strict conversions apply); a scalar gives a one-element sequence; a set
  // orders and merges as std::set<T> does. EBadCastException from void when
  // empty. Read them by copy-initialisation (`std::vector<int> v = value;`):
  // the direct form `std::vector<int> v(value)` is ambiguous with the
  // sequence's size constructor.
#define QZ_DECLARE_SEQUENCE_READERS(T) \
  operator std::list<T>() const;       \
  operator std::set<T>() const;        \
  operator std::vector<T>() const;
  QZ_VALUE_KINDS(QZ_DECLARE_SEQUENCE_READERS)
#undef QZ_DECLARE_SEQUENCE_READERS

  // Lenient readers: they convert across kinds by the stored kind code, a
  // container by its first element. EBadCastException from void when empty.
  //
  //   stored    as_int            as_ulong            as_int64          as_bool
  //   double    truncated, 32 bit truncated, 64 bit,  truncated, 32 bit as_int != 0
  //                               low 32 bits kept    then widened
  //   _time_t   seconds, low 32   seconds, low 32     seconds           seconds != 0
  //   text      atoi              strtoul, base 10    _atoi64           "true" in any case,
  //                                                                     else atoi != 0
  //   bool      0 or 1            0 or 1              0 or 1            the value
  //   ulong     same 32 bits      the value           zero-extended     != 0
  //   __int64   EBadCastException low 32 bits         the value         != 0
  //   int       the value         same 32 bits        sign-extended     != 0
  //   object    EBadCastException EBadCastException   EBadCastException EBadCastException
  //
  // as_double: a double as it is, a time's seconds, text by atof, a bool as
  // 0.0 or 1.0, the three integer kinds converted; objects refuse.
  // The oddities are kept on purpose: as_int64 of a double goes through 32
  // bits, so 3e10 does not survive; as_ulong of a double and of an __int64
  // keep the low 32 bits, while as_int of an __int64 refuses. A double out
  // of the truncation's range (or NaN) gives that range's minimum, as the
  // processor's truncating conversion does. Text that is not a number reads
  // as 0, the runtime parsers' rule; text is read as the narrow string.
  int as_int() const;
  unsigned long as_ulong() const;
  __int64 as_int64() const;
  bool as_bool() const;
  double as_double() const;

  // as_time: the three integer kinds and a double (truncated) as seconds
  // since 1970-01-01 UTC; a double beyond 64 bits (or NaN) is
  // _time_t::invalid. Text is parsed as the ISO form of _time_t::mktime
  // ("2020-01-02T03:04:05.000", UTC), text that does not parse is invalid. A
  // time as it is. A bool is no point in time: it refuses, as do objects.
  // EBadCastException from void when empty.
  _time_t as_time();

  // as_variant: double as VT_R8, time as VT_DATE (its variant time, 0.0 for
  // an invalid time), text as VT_BSTR, bool as VT_BOOL, unsigned long as
  // VT_UI4, __int64 as VT_I8, int as VT_INT, a container by its first
  // element; objects give an empty VARIANT (VT_EMPTY). EBadCastException from
  // void when empty.
  _variant_t as_variant();

  // Text form: containers as "{a,b,c}" from their elements' text, doubles
  // with 7 significant digits (_gcvt_s), times as _time_t::ctime, numbers in
  // radix 10, bools as "true"/"false", objects through ToString ("<null>"
  // for none). EBadCastException from void when empty.
  std::string as_string();
  std::wstring as_wstring();
  _bstr_t as_bstr();

  // Comparison: the storages' equal and less. Every operator reads the right
  // operand as the left operand's kind and throws EBadCastException when it
  // cannot be (a > b is !(a < b) && !(a == b), not b < a). Two empty values
  // are equal, and an empty value is less than every other value, without
  // reading anything. A scalar is unequal to a container of another length.
  // Comparing with a plain value (`value == 5`, `"a" < value`) compares with
  // a _value_t holding it (see the templates after the class).
  bool operator==(const _value_t& other) const;
  bool operator!=(const _value_t& other) const;
  bool operator<(const _value_t& other) const;
  bool operator>(const _value_t& other) const;
  bool operator<=(const _value_t& other) const;
  bool operator>=(const _value_t& other) const;

  // Element views. The non-const form is writable and does not copy on write:
  // writing through it changes every handle sharing the container. On a
  // scalar only index 0 exists (std::out_of_range "out of range"); a
  // container's index is not checked. A view holds a count on the storage it
  // points into, so it stays valid however long it lives; while it lives, the
  // storage is shared, and a write through a handle copies first (the view
  // then keeps seeing the old storage). EBadCastException when empty.
  _value_t operator[](unsigned __int64 index);
  const _value_t operator[](unsigned __int64 index) const;

  // Appending: the first push_back on an empty value makes a scalar, the next
  // turns it into a container. A container accepts its own kind only
  // (EBadCastException otherwise); a _value_t is converted to that kind.
  // A refused element leaves the value as it was. Appending a _value_t to an
  // empty value stores an owned copy of it; an empty argument is refused.
  void push_back(int v);
  void push_back(unsigned long v);
  void push_back(__int64 v);
  void push_back(bool v);
  void push_back(double v);
  void push_back(const std::string& v);
  void push_back(const std::wstring& v);
  void push_back(const _bstr_t& v);
  void push_back(const _time_t& v);
  void push_back(const char* v);
  void push_back(const wchar_t* v);
  void push_back(SmartPtrObj* v);
  void push_back(const SmartPtrObj* v);
  void push_back(const _value_t& v);

  bool empty() const noexcept { return data_ == nullptr; }
  // The run-time type of the stored kind; typeid(void) when empty.
  const std::type_info& type() const noexcept;
  // The storage, or null when empty.
  const _value_t_data* data() const noexcept { return data_; }

 private:
  template <class T>
  void assign_scalar(const T& v);
  template <class T>
  void push_back_scalar(const T& v);
  // push_back on a non-empty value: grows a scalar into a container first.
  template <class T>
  void append(const T& v);
  // Gives this handle its own storage before a write.
  void detach();
  // Installs `storage` (fresh, count 0) and releases the old one.
  void reset(_value_t_data* storage) noexcept;

  _value_t_data* data_;
};

#include <qz/value/internal/value_storage.h>

// A _value_t compared with a plain value of one of its kinds compares with a
// _value_t holding that value. The _value_t side must be a _value_t itself
// (V is deduced, not converted to), so these never take part in comparisons
// of other types that merely convert to _value_t.
namespace qz_detail {
template <class V, class T>
constexpr bool value_and_plain = std::is_same_v<V, _value_t> && !std::is_same_v<T, _value_t> &&
                                 std::is_convertible_v<const T&, _value_t>;
}  // namespace qz_detail

#define QZ_DEFINE_MIXED_COMPARISON(op)                                                     \
  template <class V, class T, std::enable_if_t<qz_detail::value_and_plain<V, T>, int> = 0> \
  bool operator op(const V& value, const T& plain) {                                       \
    return value op _value_t(plain);                                                       \
  }                                                                                        \
  template <class T, class V, std::enable_if_t<qz_detail::value_and_plain<V, T>, int> = 0> \
  bool operator op(const T& plain, const V& value) {                                       \
    return _value_t(plain) op value;                                                       \
  }
QZ_DEFINE_MIXED_COMPARISON(==)
QZ_DEFINE_MIXED_COMPARISON(!=)
QZ_DEFINE_MIXED_COMPARISON(<)
QZ_DEFINE_MIXED_COMPARISON(>)
QZ_DEFINE_MIXED_COMPARISON(<=)
QZ_DEFINE_MIXED_COMPARISON(>=)
#undef QZ_DEFINE_MIXED_COMPARISON

template <class T>
_value_t _value_t::view(T& variable) {
  return _value_t(new _value_t_pdata_t<T>(&variable));
}

template <class T>
_value_t _value_t::const_view(const T& constant) {
  return _value_t(new _value_t_pcdata_t<T>(&constant));
}
