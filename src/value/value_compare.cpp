// _value_t: comparison through the storages' equal and less.
//
// The left operand's storage always does the reading, for every operator, so
// which kinds may be compared depends on the left operand alone: a > b is
// not b < a, which would ask the right operand's storage instead. An empty
// value is not a kind: it is equal to another empty value and orders before
// everything, so a std::set<_value_t> may hold it.
#include <qz/value/value.h>

bool _value_t::operator==(const _value_t& other) const {
  if (!data_ || !other.data_) return !data_ && !other.data_;
  return data_->equal(*other.data_);
}

bool _value_t::operator<(const _value_t& other) const {
  if (!data_ || !other.data_) return !data_ && other.data_;
  return data_->less(*other.data_);
}

bool _value_t::operator!=(const _value_t& other) const { return !(*this == other); }
bool _value_t::operator>(const _value_t& other) const { return !(*this < other) && !(*this == other); }
bool _value_t::operator<=(const _value_t& other) const { return *this < other || *this == other; }
bool _value_t::operator>=(const _value_t& other) const { return !(*this < other); }
