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
#include <qz/value/value_data.h>

#include <list>
#include <set>
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

  // Text form: containers as "{a,b,c}", numbers in radix 10, bools as
  // "true"/"false", objects through ToString ("<null>" for none).
  // EBadCastException from void when empty.
  std::string as_string();
  std::wstring as_wstring();
  _bstr_t as_bstr();

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

#include <qz/value/value_storage.h>

template <class T>
_value_t _value_t::view(T& variable) {
  return _value_t(new _value_t_pdata_t<T>(&variable));
}

template <class T>
_value_t _value_t::const_view(const T& constant) {
  return _value_t(new _value_t_pcdata_t<T>(&constant));
}
