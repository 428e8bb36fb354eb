// IPropertyList and TPropertyList: a thread-safe dictionary from names to
// values, for components that exchange named settings.
//
//   TPropertyList settings;
//   settings.PutProperty(L"Name", _value_t("alpha"));
//   settings.Have(L"NAME");                   // true: names ignore case
//   settings.GetProperty(L"missing");         // empty _value_t, no error
//
// Names compare without regard to letter case (_wcsicmp); an entry keeps the
// spelling it was first stored under. A null name counts as the empty name.
// GetProperties yields the values, as text through the strict
// operator _bstr_t, in case-insensitive name order, not the names; a value
// without a text form (empty, a number, an object) throws EBadCastException
// part-way, leaving `out` with the entries before it.
//
// Values come back sharing the list's storage: assigning to a returned
// value leaves the list alone (copy on write), but writing through an
// element view of a returned container changes the list's value too.
//
// Thread safety: any thread may call any operation. Readers (GetProperty,
// GetProperties, GetCount, Have) run together; PutProperty and Delete
// exclude everyone. Each operation holds the list's lock throughout.
#pragma once

#include <qz/core/com_types.h>
#include <qz/export.h>
#include <qz/sync/multi_lock.h>
#include <qz/value/value.h>

#include <map>
#include <vector>

class QZ_API IPropertyList {
 public:
  virtual _value_t GetProperty(const _bstr_t& name) = 0;
  virtual void PutProperty(const _bstr_t& name, const _value_t& value) = 0;
  virtual void GetProperties(std::vector<_bstr_t>& out) const = 0;
  virtual int GetCount() const = 0;
  virtual void Delete(const _bstr_t& name) = 0;
  virtual bool Have(const _bstr_t& name) const = 0;

 protected:
  IPropertyList() = default;
  IPropertyList(const IPropertyList&) = default;
  IPropertyList& operator=(const IPropertyList&) = default;
  ~IPropertyList() = default;
};

// Orders property names by _wcsicmp of their wide texts.
struct QZ_API _pl_name_less {
  bool operator()(const _bstr_t& a, const _bstr_t& b) const noexcept;
};

class QZ_API TPropertyList : public virtual IPropertyList {
 public:
  TPropertyList();
  ~TPropertyList();
  // Takes a copy of `other`'s entries; the lock stays this list's own.
  TPropertyList& operator=(const TPropertyList& other);

  _value_t GetProperty(const _bstr_t& name) override;
  void PutProperty(const _bstr_t& name, const _value_t& value) override;
  void GetProperties(std::vector<_bstr_t>& out) const override;
  int GetCount() const override;
  void Delete(const _bstr_t& name) override;
  bool Have(const _bstr_t& name) const override;

 private:
  typedef std::map<_bstr_t, _value_t, _pl_name_less> property_map;

  property_map properties;
  mutable TMultiLock lock;
};
