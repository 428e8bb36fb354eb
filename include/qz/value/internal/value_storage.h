// The four storage forms behind _value_t, one class template each, all
// instantiated in qz.dll for the eleven kinds of value_kinds.h:
//
//   _value_t_data_t<T>    an owned scalar
//   _value_t_pdata_t<T>   a writable view on a caller's T
//   _value_t_pcdata_t<T>  a read-only view on a caller's const T
//   _value_t_cont_t<T>    an owned container (std::vector<T>)
//
// Two tables decide what crosses kinds (get reads, put writes); every other
// pair throws EBadCastException:
//
//   kind T         get(U) reads T as U          put(U) stores U into T
//   int            int, ulong, __int64, double  int, ulong, bool
//   unsigned long  ulong, int, __int64          ulong, int, bool
//   __int64        __int64                      __int64, int, ulong
//   bool           bool, int, ulong             bool
//   double         double                       double, int
//   text kinds     any text kind                any text kind
//   object         object, const object         object
//   const object   const object                 const object, object
//   _time_t        _time_t                      _time_t
//
// Objects are SmartPtr<SmartPtrObj> and SmartPtr<SmartPtrObj const>; text
// kinds are std::string, std::wstring and _bstr_t; narrow and wide
// convert through the ANSI code page. Signed and unsigned 32-bit values keep
// their bits; widening to __int64 sign- or zero-extends; bool gives 0 or 1.
// Reading and writing are deliberately not mirror images: an int storage
// accepts a bool but cannot be read as one, a bool storage reads as int but
// accepts only bool. A container appends only its own kind.
//
// object() is true for the two object-pointer kinds in every form.
//
// A packed std::vector<bool> has no addressable elements: a bool container
// refuses getp (bad cast from std::vector<bool> to bool const*), and its
// element views read and write the bit through the vector and the index.
//
// Thread safety: as _value_t_data; views write through without any lock.
#pragma once

#include <qz/value/internal/value_data.h>

#include <vector>

template <class T>
class _value_t_data_t : public _value_t_data {
 public:
  explicit _value_t_data_t(const T& value);
  ~_value_t_data_t() override;

  const std::type_info& type() const override;
  _value_t_data* clone() const override;
  _value_t_data* to_container() const override;
  bool equal(const _value_t_data& other) const override;
  bool less(const _value_t_data& other) const override;
  _value_t_data* get(unsigned __int64 index) const override;
  _value_t_data* get(unsigned __int64 index) override;
  bool object() const override;
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
  // `owner`, when given, is the storage that holds *variable (an element
  // view); the view keeps it alive.
  explicit _value_t_pdata_t(T* variable, const _value_t_data* owner = nullptr) noexcept;
  ~_value_t_pdata_t() override;

  const std::type_info& type() const override;
  // An owned scalar with the variable's current value: a copied handle stops
  // writing through.
  _value_t_data* clone() const override;
  _value_t_data* to_container() const override;
  bool equal(const _value_t_data& other) const override;
  bool less(const _value_t_data& other) const override;
  _value_t_data* get(unsigned __int64 index) const override;
  _value_t_data* get(unsigned __int64 index) override;
  bool object() const override;
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
  _value_t_data_ref owner_;
};

template <class T>
class _value_t_pcdata_t : public _value_t_data {
 public:
  explicit _value_t_pcdata_t(const T* constant, const _value_t_data* owner = nullptr) noexcept;
  ~_value_t_pcdata_t() override;

  const std::type_info& type() const override;
  _value_t_data* clone() const override;
  _value_t_data* to_container() const override;
  bool equal(const _value_t_data& other) const override;
  bool less(const _value_t_data& other) const override;
  _value_t_data* get(unsigned __int64 index) const override;
  // Refused: a read-only view has no writable element.
  _value_t_data* get(unsigned __int64 index) override;
  bool object() const override;
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
  _value_t_data_ref owner_;
};

template <class T>
class _value_t_cont_t : public _value_t_data {
 public:
  _value_t_cont_t();
  explicit _value_t_cont_t(std::vector<T> items);
  ~_value_t_cont_t() override;

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
  // get, put and getp work on the first element. get and put on an empty
  // container throw std::out_of_range ("out of range"); getp does not check.
#define QZ_OVERRIDE_CONTAINER(U)              \
  U get(const U*) const override;             \
  void put(const U&) override;                \
  const U* getp(const U*) const override;     \
  void push_back(const U&) override;
  QZ_VALUE_KINDS(QZ_OVERRIDE_CONTAINER)
#undef QZ_OVERRIDE_CONTAINER

  const std::vector<T>& items() const noexcept;

 private:
  std::vector<T> items_;
};

// The 44 classes are compiled once, in qz.dll. No member is defined inline,
// so that every one is exported and a user's unoptimised build links too.
#define QZ_EXTERN_STORAGE(T)                          \
  extern template class QZ_API _value_t_data_t<T>;    \
  extern template class QZ_API _value_t_pdata_t<T>;   \
  extern template class QZ_API _value_t_pcdata_t<T>;  \
  extern template class QZ_API _value_t_cont_t<T>;
QZ_VALUE_KINDS(QZ_EXTERN_STORAGE)
#undef QZ_EXTERN_STORAGE
