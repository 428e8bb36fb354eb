// The four storage forms behind _value_t, one class template each, all
// instantiated in qz.dll for the eleven kinds of value_kinds.h:
//
//   _value_t_data_t<T>    an owned scalar
//   _value_t_pdata_t<T>   a writable view on a caller's T
//   _value_t_pcdata_t<T>  a read-only view on a caller's const T
//   _value_t_cont_t<T>    an owned container (std::vector<T>)
//
// What a kind can be read as (get) and what it accepts (put) are the tables
// of value_conversions.h; every other pair throws EBadCastException. Reading
// and writing are deliberately not mirror images: an int storage accepts a
// bool but cannot be read as one.
//
// Thread safety: as _value_t_data; views write through without any lock.
#pragma once

#include <qz/value/value_data.h>

#include <vector>

template <class T>
class _value_t_data_t : public _value_t_data {
 public:
  explicit _value_t_data_t(const T& value) : value_(value) {}

  const std::type_info& type() const override;
  _value_t_data* clone() const override;
  _value_t_data* to_container() const override;
  bool equal(const _value_t_data& other) const override;
  bool less(const _value_t_data& other) const override;
  _value_t_data* get(unsigned __int64 index) const override;
  _value_t_data* get(unsigned __int64 index) override;
  unsigned short vartype() const override;
#define QZ_OVERRIDE_SCALAR(U)                 \
  U get(const U*) const override;             \
  void put(const U&) override;                \
  const U* getp(const U*) const override;
  QZ_VALUE_KINDS(QZ_OVERRIDE_SCALAR)
#undef QZ_OVERRIDE_SCALAR
  using _value_t_data::push_back;

 private:
  T value_;
};

template <class T>
class _value_t_pdata_t : public _value_t_data {
 public:
  explicit _value_t_pdata_t(T* variable) noexcept : variable_(variable) {}

  const std::type_info& type() const override;
  // An owned scalar with the variable's current value: a copied handle stops
  // writing through.
  _value_t_data* clone() const override;
  _value_t_data* to_container() const override;
  bool equal(const _value_t_data& other) const override;
  bool less(const _value_t_data& other) const override;
  _value_t_data* get(unsigned __int64 index) const override;
  _value_t_data* get(unsigned __int64 index) override;
  unsigned short vartype() const override;
#define QZ_OVERRIDE_SCALAR(U)                 \
  U get(const U*) const override;             \
  void put(const U&) override;                \
  const U* getp(const U*) const override;
  QZ_VALUE_KINDS(QZ_OVERRIDE_SCALAR)
#undef QZ_OVERRIDE_SCALAR
  using _value_t_data::push_back;

 private:
  T* variable_;
};

template <class T>
class _value_t_pcdata_t : public _value_t_data {
 public:
  explicit _value_t_pcdata_t(const T* constant) noexcept : constant_(constant) {}

  const std::type_info& type() const override;
  _value_t_data* clone() const override;
  _value_t_data* to_container() const override;
  bool equal(const _value_t_data& other) const override;
  bool less(const _value_t_data& other) const override;
  _value_t_data* get(unsigned __int64 index) const override;
  // Refused: a read-only view has no writable element.
  _value_t_data* get(unsigned __int64 index) override;
  unsigned short vartype() const override;
  // put is not overridden: every write is refused with EBadCastException.
#define QZ_OVERRIDE_READER(U)                 \
  U get(const U*) const override;             \
  const U* getp(const U*) const override;
  QZ_VALUE_KINDS(QZ_OVERRIDE_READER)
#undef QZ_OVERRIDE_READER
  using _value_t_data::push_back;

 private:
  const T* constant_;
};

template <class T>
class _value_t_cont_t : public _value_t_data {
 public:
  _value_t_cont_t() = default;
  explicit _value_t_cont_t(std::vector<T> items) : items_(std::move(items)) {}

  const std::type_info& type() const override;
  _value_t_data* clone() const override;
  _value_t_data* to_container() const override;
  bool equal(const _value_t_data& other) const override;
  bool less(const _value_t_data& other) const override;
  unsigned __int64 size() const override;
  bool container() const override;
  bool object() const override;
  // Views on element `index`, not range-checked.
  _value_t_data* get(unsigned __int64 index) const override;
  _value_t_data* get(unsigned __int64 index) override;
  unsigned short vartype() const override;
  void push_back(const _value_t& value) override;
  // get, put and getp work on the first element and do not check for an
  // empty container.
#define QZ_OVERRIDE_CONTAINER(U)              \
  U get(const U*) const override;             \
  void put(const U&) override;                \
  const U* getp(const U*) const override;     \
  void push_back(const U&) override;
  QZ_VALUE_KINDS(QZ_OVERRIDE_CONTAINER)
#undef QZ_OVERRIDE_CONTAINER

  const std::vector<T>& items() const noexcept { return items_; }

 private:
  std::vector<T> items_;
};

// The 44 classes are compiled once, in qz.dll.
#define QZ_EXTERN_STORAGE(T)                          \
  extern template class QZ_API _value_t_data_t<T>;    \
  extern template class QZ_API _value_t_pdata_t<T>;   \
  extern template class QZ_API _value_t_pcdata_t<T>;  \
  extern template class QZ_API _value_t_cont_t<T>;
QZ_VALUE_KINDS(QZ_EXTERN_STORAGE)
#undef QZ_EXTERN_STORAGE
