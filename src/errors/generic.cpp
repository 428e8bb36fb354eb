#include <qz/errors/generic.h>

#include <windows.h>

#include <algorithm>

namespace {

// Names compare byte by byte with only A-Z folded: no locale takes part, so
// the look-up is the same on every machine.
char fold_ascii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool same_name(const std::string& a, const std::string& b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return fold_ascii(x) == fold_ascii(y); });
}

}  // namespace

EGeneric::EGeneric() = default;
EGeneric::EGeneric(const value_pair& a) : values_{a} {}
EGeneric::EGeneric(const value_pair& a, const value_pair& b) : values_{a, b} {}
EGeneric::EGeneric(const value_pair& a, const value_pair& b, const value_pair& c) : values_{a, b, c} {}
EGeneric::EGeneric(const value_pair& a, const value_pair& b, const value_pair& c, const value_pair& d)
    : values_{a, b, c, d} {}
EGeneric::EGeneric(const value_pair& a, const value_pair& b, const value_pair& c, const value_pair& d,
                   const value_pair& e)
    : values_{a, b, c, d, e} {}
EGeneric::EGeneric(const value_pair& a, const value_pair& b, const value_pair& c, const value_pair& d,
                   const value_pair& e, const value_pair& f)
    : values_{a, b, c, d, e, f} {}
EGeneric::EGeneric(const EGeneric& other) = default;
EGeneric& EGeneric::operator=(const EGeneric& other) = default;
EGeneric::~EGeneric() = default;

EGeneric::value_list::iterator EGeneric::find_value(const std::string& name) {
  return std::find_if(values_.begin(), values_.end(),
                      [&](const value_pair& entry) { return same_name(entry.first, name); });
}

EGeneric::value_list::const_iterator EGeneric::find_value(const std::string& name) const {
  return std::find_if(values_.begin(), values_.end(),
                      [&](const value_pair& entry) { return same_name(entry.first, name); });
}

_value_t& EGeneric::operator[](const std::string& name) {
  auto found = find_value(name);
  if (found != values_.end()) return found->second;
  values_.emplace_back(name, _value_t());
  return values_.back().second;
}

_value_t EGeneric::operator[](const std::string& name) const { return get_value(name); }

void EGeneric::put_value(const std::string& name, const _value_t& value) {
  auto found = find_value(name);
  if (found != values_.end())
    found->second = value;
  else
    values_.emplace_back(name, value);
}

const _value_t EGeneric::get_value(const std::string& name) const {
  auto found = find_value(name);
  return found != values_.end() ? found->second : _value_t();
}

void EGeneric::clear_values() { values_.clear(); }

void EGeneric::move_to_back(const std::string& name) {
  auto found = find_value(name);
  if (found != values_.end() && found + 1 != values_.end()) std::iter_swap(found, values_.end() - 1);
}

void EGeneric::cancel_minidump() {
  auto found = find_value("MiniDump");
  if (found == values_.end()) return;
  if (!found->second.empty()) {
    try {
      DeleteFileW(found->second.as_wstring().c_str());  // a dump already gone is fine
    } catch (const EGeneric&) {
      // A value without a text form names no file.
    }
  }
  values_.erase(found);
}
