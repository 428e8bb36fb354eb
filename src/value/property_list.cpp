#include <qz/value/property_list.h>

#include "sync/lock_holds.h"

#include <cwchar>
#include <utility>

namespace {

// The runtime's compare has no answer for a null text; a null name is the
// empty one.
const wchar_t* name_chars(const _bstr_t& name) noexcept {
  const wchar_t* text = name;
  return text != nullptr ? text : L"";
}

}  // namespace

bool _pl_name_less::operator()(const _bstr_t& a, const _bstr_t& b) const noexcept {
  return _wcsicmp(name_chars(a), name_chars(b)) < 0;
}

// The lock's construction argument is the one every property list passes.
TPropertyList::TPropertyList() : lock(1) {}

TPropertyList::~TPropertyList() = default;

// The source is copied under its read lock and installed under ours, one
// lock at a time, so two lists assigned to each other at once cannot
// dead-lock.
TPropertyList& TPropertyList::operator=(const TPropertyList& other) {
  if (&other == this) return *this;
  property_map copy;
  {
    read_hold hold(other.lock);
    copy = other.properties;
  }
  write_hold hold(lock);
  properties.swap(copy);
  return *this;
}

_value_t TPropertyList::GetProperty(const _bstr_t& name) {
  read_hold hold(lock);
  const auto found = properties.find(name);
  return found != properties.end() ? found->second : _value_t();
}

void TPropertyList::PutProperty(const _bstr_t& name, const _value_t& value) {
  write_hold hold(lock);
  properties[name] = value;
}

void TPropertyList::GetProperties(std::vector<_bstr_t>& out) const {
  read_hold hold(lock);
  out.clear();
  out.reserve(properties.size());
  for (const auto& entry : properties) out.push_back(static_cast<_bstr_t>(entry.second));
}

int TPropertyList::GetCount() const {
  read_hold hold(lock);
  return static_cast<int>(properties.size());
}

void TPropertyList::Delete(const _bstr_t& name) {
  write_hold hold(lock);
  properties.erase(name);
}

bool TPropertyList::Have(const _bstr_t& name) const {
  read_hold hold(lock);
  return properties.find(name) != properties.end();
}
