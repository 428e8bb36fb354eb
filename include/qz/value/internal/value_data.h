// _value_t_data: the storage behind a non-empty _value_t.
//
// The abstract root fixes every operation a value supports: typed readers
// (get), writers (put), appenders (push_back) and raw access (getp) for each
// of the eleven kinds, plus structural queries. The four storage templates of
// value_storage.h implement it per kind; all conversion rules live there. The
// root's typed operations refuse with EBadCastException.
//
// Thread safety: only the reference count is atomic. A storage whose count is
// above 1 is shared and must not be modified (the handle copies on write).
#pragma once

#include <qz/export.h>
#include <qz/value/value_kinds.h>

#include <typeinfo>

class _value_t;

class QZ_API _value_t_data {
 public:
  _value_t_data() noexcept;
  // A copy is a new storage: it starts without holders.
  _value_t_data(const _value_t_data&) noexcept;
  _value_t_data& operator=(const _value_t_data&) noexcept;
  virtual ~_value_t_data();

  // The run-time type of the element kind; the same for all four forms.
  virtual const std::type_info& type() const = 0;
  // A new storage (count 0) with the same content, always owned.
  virtual _value_t_data* clone() const = 0;
  // A new owned container of this kind holding this content.
  virtual _value_t_data* to_container() const = 0;
  // Compare with `other` read through its own typed operations as this kind;
  // a kind `other` cannot be read as throws EBadCastException.
  virtual bool equal(const _value_t_data& other) const = 0;
  virtual bool less(const _value_t_data& other) const = 0;
  virtual unsigned __int64 size() const;
  virtual bool container() const;
  // True when the element kind is an object pointer.
  virtual bool object() const;

  // Typed readers: the value converted to T. The pointer only selects the
  // overload; pass a null pointer of the wanted type.
#define QZ_DECLARE_GET(T) virtual T get(const T*) const;
  QZ_VALUE_KINDS(QZ_DECLARE_GET)
#undef QZ_DECLARE_GET

  // Element views: a new storage (count 0) viewing element `index`, read-only
  // or writable. On a scalar only index 0 exists ("out of range").
  virtual _value_t_data* get(unsigned __int64 index) const;
  virtual _value_t_data* get(unsigned __int64 index);

#define QZ_DECLARE_PUSH_BACK(T) virtual void push_back(const T&);
  QZ_VALUE_KINDS(QZ_DECLARE_PUSH_BACK)
#undef QZ_DECLARE_PUSH_BACK
  virtual void push_back(const _value_t& value);

  // The COM VARTYPE of the element kind (VT_INT, VT_BSTR, ...).
  virtual unsigned short vartype() const = 0;

#define QZ_DECLARE_PUT(T) virtual void put(const T&);
  QZ_VALUE_KINDS(QZ_DECLARE_PUT)
#undef QZ_DECLARE_PUT

  // Pointer to the stored T (for a container, to its first element).
#define QZ_DECLARE_GETP(T) virtual const T* getp(const T*) const;
  QZ_VALUE_KINDS(QZ_DECLARE_GETP)
#undef QZ_DECLARE_GETP

  // Reference counting by the owning handles (interlocked).
  void AddRef() const noexcept;
  void Release() const noexcept;  // deletes the storage when the count reaches 0
  long ref_count() const noexcept { return ref_count_; }

  // Number of storage objects alive in the process; for leak checks.
  static long live_count() noexcept;

 protected:
  [[noreturn]] void throw_bad_cast_to(const std::type_info& to) const;
  [[noreturn]] void throw_bad_cast_from(const std::type_info& from) const;

 private:
  mutable volatile long ref_count_;
};

// One count on the storage an element view points into: the element stays
// valid for as long as the view exists, even after every handle of the
// container let go or copied on write.
class _value_t_data_ref {
 public:
  explicit _value_t_data_ref(const _value_t_data* storage) noexcept : storage_(storage) {
    if (storage_) storage_->AddRef();
  }
  _value_t_data_ref(const _value_t_data_ref&) = delete;
  _value_t_data_ref& operator=(const _value_t_data_ref&) = delete;
  ~_value_t_data_ref() {
    if (storage_) storage_->Release();
  }

 private:
  const _value_t_data* storage_;
};
