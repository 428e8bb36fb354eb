// The conversion rules of the value model, in one place.
//
// readable_as<Stored, Requested>: what a typed reader (get) hands out.
// accepts<Stored, Assigned>: what a typed writer (put) takes in.
// Every kind reads as and accepts itself. The two tables are deliberately not
// mirror images (an int storage accepts a bool but does not read as one; a
// bool storage reads as int but accepts only bool), so each is spelled out on
// its own rather than derived from the other.
//
// convert<To>(from) performs a conversion that one of the tables allows; it
// is only instantiated for allowed pairs.
#pragma once

#include "core/bstr_text.h"

#include <qz/core/codepage.h>
#include <qz/core/com_types.h>
#include <qz/core/smart_ptr.h>
#include <qz/time/time.h>

#include <string>
#include <type_traits>
#include <typeinfo>

namespace qz_detail {

using ObjectPtr = SmartPtr<SmartPtrObj>;
using ConstObjectPtr = SmartPtr<SmartPtrObj const>;

// ---- what a reader hands out ----------------------------------------------
template <class Stored, class Requested>
struct readable_as : std::is_same<Stored, Requested> {};

#define QZ_READABLE(Stored, Requested) \
  template <>                          \
  struct readable_as<Stored, Requested> : std::true_type {};
QZ_READABLE(int, unsigned long)
QZ_READABLE(int, __int64)
QZ_READABLE(int, double)
QZ_READABLE(unsigned long, int)
QZ_READABLE(unsigned long, __int64)
QZ_READABLE(bool, int)
QZ_READABLE(bool, unsigned long)
QZ_READABLE(std::string, std::wstring)
QZ_READABLE(std::string, _bstr_t)
QZ_READABLE(std::wstring, std::string)
QZ_READABLE(std::wstring, _bstr_t)
QZ_READABLE(_bstr_t, std::wstring)
QZ_READABLE(_bstr_t, std::string)
QZ_READABLE(ObjectPtr, ConstObjectPtr)
#undef QZ_READABLE

// ---- what a writer takes in -----------------------------------------------
template <class Stored, class Assigned>
struct accepts : std::is_same<Stored, Assigned> {};

#define QZ_ACCEPTS(Stored, Assigned) \
  template <>                        \
  struct accepts<Stored, Assigned> : std::true_type {};
QZ_ACCEPTS(int, unsigned long)
QZ_ACCEPTS(int, bool)
QZ_ACCEPTS(unsigned long, int)
QZ_ACCEPTS(unsigned long, bool)
QZ_ACCEPTS(__int64, int)
QZ_ACCEPTS(__int64, unsigned long)
QZ_ACCEPTS(double, int)
QZ_ACCEPTS(std::string, std::wstring)
QZ_ACCEPTS(std::string, _bstr_t)
QZ_ACCEPTS(std::wstring, std::string)
QZ_ACCEPTS(std::wstring, _bstr_t)
QZ_ACCEPTS(_bstr_t, std::string)
QZ_ACCEPTS(_bstr_t, std::wstring)
QZ_ACCEPTS(ConstObjectPtr, ObjectPtr)
#undef QZ_ACCEPTS

// ---- kind properties ------------------------------------------------------
template <class T>
constexpr unsigned short kind_code = 0;
template <> constexpr unsigned short kind_code<int> = VT_INT;
template <> constexpr unsigned short kind_code<unsigned long> = VT_UI4;
template <> constexpr unsigned short kind_code<__int64> = VT_I8;
template <> constexpr unsigned short kind_code<bool> = VT_BOOL;
template <> constexpr unsigned short kind_code<double> = VT_R8;
template <> constexpr unsigned short kind_code<std::string> = VT_BSTR;
template <> constexpr unsigned short kind_code<std::wstring> = VT_BSTR;
template <> constexpr unsigned short kind_code<_bstr_t> = VT_BSTR;
template <> constexpr unsigned short kind_code<ObjectPtr> = VT_UNKNOWN;
template <> constexpr unsigned short kind_code<ConstObjectPtr> = VT_UNKNOWN;
template <> constexpr unsigned short kind_code<_time_t> = VT_DATE;

template <class T>
constexpr bool is_object_kind = std::is_same_v<T, ObjectPtr> || std::is_same_v<T, ConstObjectPtr>;

template <class T>
constexpr bool is_text_kind =
    std::is_same_v<T, std::string> || std::is_same_v<T, std::wstring> || std::is_same_v<T, _bstr_t>;

// ---- text helpers ---------------------------------------------------------
// The whole text of a _bstr_t, embedded nulls included; a null one is empty.
inline basic_const_string<wchar_t> bstr_view(const _bstr_t& text) {
  const wchar_t* data = static_cast<const wchar_t*>(text);
  return data ? basic_const_string<wchar_t>(data, text.length()) : basic_const_string<wchar_t>();
}

template <class To, class From>
To convert_text(const From& from) {
  if constexpr (std::is_same_v<To, std::string>) {
    if constexpr (std::is_same_v<From, std::wstring>) return ::as_string(from, 0);
    else return ::as_string(bstr_view(from), 0);
  } else if constexpr (std::is_same_v<To, std::wstring>) {
    if constexpr (std::is_same_v<From, std::string>) return ::as_wstring(from, 0);
    else return wide_copy(from);
  } else {
    if constexpr (std::is_same_v<From, std::string>) return to_bstr(::as_wstring(from, 0));
    else return to_bstr(from);
  }
}

// ---- conversions ----------------------------------------------------------
template <class>
constexpr bool no_conversion = false;

template <class To, class From>
To convert(const From& from) {
  if constexpr (std::is_same_v<To, From>) {
    return from;
  } else if constexpr (std::is_arithmetic_v<To> && std::is_arithmetic_v<From>) {
    // 32-bit signed and unsigned keep their bits, widening sign- or
    // zero-extends by the source's signedness, bool gives 0 or 1.
    return static_cast<To>(from);
  } else if constexpr (is_text_kind<To> && is_text_kind<From>) {
    return convert_text<To>(from);
  } else if constexpr (std::is_same_v<To, ConstObjectPtr> && std::is_same_v<From, ObjectPtr>) {
    return To(from);
  } else {
    static_assert(no_conversion<To>, "no conversion between these kinds");
  }
}

[[noreturn]] void throw_bad_cast(const std::type_info& from, const std::type_info& to);

}  // namespace qz_detail
