// _value_t: the lenient numeric readers.
//
// Unlike the strict operators they switch on the kind code and convert across
// kinds: doubles truncate, text goes through the C runtime's parsers, a time
// gives its seconds. Each stored kind is read through its own typed reader,
// so a cell the table leaves to the storage (as_int of an __int64, any
// number from an object) refuses there with the storage's bad cast.
#include <qz/value/value.h>

#include "value/value_access.h"


#include <stdlib.h>
#include <string.h>

using qz_detail::read_as;
using qz_detail::seconds_of;
using qz_detail::stored_or_throw;
using qz_detail::truncated;

namespace {

// The text kinds all read as the narrow string; the parsers stop at the
// first character that does not fit, and give 0 for no number at all.
std::string stored_text(const _value_t_data& data) { return read_as<std::string>(data); }

}  // namespace

int _value_t::as_int() const {
  const _value_t_data& data = stored_or_throw(data_, typeid(int));
  switch (data.vartype()) {
    case VT_R8: return truncated<int>(read_as<double>(data));
    case VT_DATE: return static_cast<int>(seconds_of(data));
    case VT_BSTR: return atoi(stored_text(data).c_str());
    case VT_BOOL: return read_as<bool>(data) ? 1 : 0;
    case VT_UI4: return static_cast<int>(read_as<unsigned long>(data));
    case VT_INT: return read_as<int>(data);
    default: return read_as<int>(data);  // __int64 does not narrow; objects refuse
  }
}

unsigned long _value_t::as_ulong() const {
  const _value_t_data& data = stored_or_throw(data_, typeid(unsigned long));
  switch (data.vartype()) {
    case VT_R8: return static_cast<unsigned long>(truncated<__int64>(read_as<double>(data)));
    case VT_DATE: return static_cast<unsigned long>(seconds_of(data));
    case VT_BSTR: return strtoul(stored_text(data).c_str(), nullptr, 10);
    case VT_BOOL: return read_as<bool>(data) ? 1 : 0;
    case VT_UI4: return read_as<unsigned long>(data);
    case VT_I8: return static_cast<unsigned long>(read_as<__int64>(data));
    case VT_INT: return static_cast<unsigned long>(read_as<int>(data));
    default: return read_as<unsigned long>(data);  // objects refuse
  }
}

// A double passes through 32 bits on its way here, unlike in as_ulong; kept
// so, as callers may rely on it.
__int64 _value_t::as_int64() const {
  const _value_t_data& data = stored_or_throw(data_, typeid(__int64));
  switch (data.vartype()) {
    case VT_R8: return truncated<int>(read_as<double>(data));
    case VT_DATE: return seconds_of(data);
    case VT_BSTR: return _atoi64(stored_text(data).c_str());
    case VT_BOOL: return read_as<bool>(data) ? 1 : 0;
    case VT_UI4: return read_as<unsigned long>(data);
    case VT_I8: return read_as<__int64>(data);
    case VT_INT: return read_as<int>(data);
    default: return read_as<__int64>(data);  // objects refuse
  }
}

bool _value_t::as_bool() const {
  const _value_t_data& data = stored_or_throw(data_, typeid(bool));
  switch (data.vartype()) {
    case VT_R8: return truncated<int>(read_as<double>(data)) != 0;
    case VT_DATE: return seconds_of(data) != 0;
    case VT_BSTR: {
      const std::string text = stored_text(data);
      return _stricmp(text.c_str(), "true") == 0 || atoi(text.c_str()) != 0;
    }
    case VT_BOOL: return read_as<bool>(data);
    case VT_UI4: return read_as<unsigned long>(data) != 0;
    case VT_I8: return read_as<__int64>(data) != 0;
    case VT_INT: return read_as<int>(data) != 0;
    default: return read_as<bool>(data);  // objects refuse
  }
}

double _value_t::as_double() const {
  const _value_t_data& data = stored_or_throw(data_, typeid(double));
  switch (data.vartype()) {
    case VT_R8: return read_as<double>(data);
    case VT_DATE: return static_cast<double>(seconds_of(data));
    case VT_BSTR: return atof(stored_text(data).c_str());
    case VT_BOOL: return read_as<bool>(data) ? 1.0 : 0.0;
    case VT_UI4: return read_as<unsigned long>(data);
    case VT_I8: return static_cast<double>(read_as<__int64>(data));
    case VT_INT: return read_as<int>(data);
    default: return read_as<double>(data);  // objects refuse
  }
}
