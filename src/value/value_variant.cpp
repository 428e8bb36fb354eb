// _value_t::as_variant: the value as a COM VARIANT, typed by its kind code.
//
// Every kind that has a VARIANT counterpart maps onto it one to one; objects
// have none (a SmartPtrObj is not a COM object) and give an empty VARIANT.
#include <qz/value/value.h>

#include "value/value_access.h"

using qz_detail::read_as;
using qz_detail::stored_or_throw;

_variant_t _value_t::as_variant() {
  const _value_t_data& data = stored_or_throw(data_, typeid(_variant_t));
  switch (data.vartype()) {
    case VT_R8: return _variant_t(read_as<double>(data), VT_R8);
    case VT_DATE: return _variant_t(read_as<_time_t>(data).varianttime(), VT_DATE);
    case VT_BSTR: return _variant_t(read_as<_bstr_t>(data));
    case VT_BOOL: return _variant_t(read_as<bool>(data));
    case VT_UI4: return _variant_t(read_as<unsigned long>(data));
    case VT_I8: return _variant_t(read_as<__int64>(data));
    case VT_INT: return _variant_t(read_as<int>(data));
    default: return _variant_t();  // VariantInit: VT_EMPTY
  }
}
