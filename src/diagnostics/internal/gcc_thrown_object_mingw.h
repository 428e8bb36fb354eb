// The object and type of a C++ throw, read from the exception record that
// GCC's runtime raises for it (private to the library; GCC-specific).
//
// A GCC throw on Windows raises code 0x20474343 ("GCC" plus a marker byte)
// with one parameter: the address of the throw's unwind header. libsupc++
// places its __cxa_exception header right in front of the unwind header and
// the thrown object right behind it. A rethrow of a std::exception_ptr uses
// a "dependent" header of the same size whose first field points at the
// primary exception's object instead.
//
// All three answer null for any other record (another code, a foreign
// exception class, a missing parameter). A record with GCC's throw code is
// trusted to come from GCC's runtime: its parameter is read as it stands.
//
// Thread safety: pure functions of the record.
#pragma once

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <exception>
#include <typeinfo>
#include <unwind.h>

namespace qz_gcc {

// The code GCC raises for a throw, and for the unwind phase that follows it.
constexpr DWORD kThrowCode = 0x20474343;
constexpr DWORD kUnwindCode = 0x21474343;

// libsupc++'s __cxa_exception, field for field (GCC 4.x to 13 on SEH
// targets). Only the type and the unwind header's position are read.
struct cxa_exception_layout {
  std::type_info* exception_type;  // in a dependent header: the primary object
  void (*exception_destructor)(void*);
  std::terminate_handler unexpected_handler;
  std::terminate_handler terminate_handler;
  cxa_exception_layout* next_exception;
  int handler_count;
  int handler_switch_value;
  const unsigned char* action_record;
  const unsigned char* language_specific_data;
  std::uintptr_t catch_temp;
  void* adjusted_ptr;
  _Unwind_Exception unwind_header;
};
static_assert(sizeof(cxa_exception_layout) % 16 == 0, "the thrown object follows the header");

// "GNUCC++\0" for a primary exception, "GNUCC++\x01" for a dependent one.
constexpr std::uint64_t kPrimaryClass = 0x474e5543432b2b00ULL;
constexpr std::uint64_t kDependentClass = 0x474e5543432b2b01ULL;

// The __cxa_exception header of the thrown object's own (primary) exception.
inline const cxa_exception_layout* primary_header(const EXCEPTION_RECORD* record) {
  if (!record || record->ExceptionCode != kThrowCode || record->NumberParameters < 1) return nullptr;
  const auto* unwind = reinterpret_cast<const _Unwind_Exception*>(record->ExceptionInformation[0]);
  if (!unwind) return nullptr;
  const auto* header = reinterpret_cast<const cxa_exception_layout*>(
      reinterpret_cast<const char*>(unwind) - offsetof(cxa_exception_layout, unwind_header));
  if (unwind->exception_class == kPrimaryClass) return header;
  if (unwind->exception_class != kDependentClass) return nullptr;  // not a C++ throw of GCC's
  const void* primary_object = header->exception_type;
  return primary_object ? reinterpret_cast<const cxa_exception_layout*>(primary_object) - 1 : nullptr;
}

}  // namespace qz_gcc

// The thrown object's type; null when `record` is not a GCC C++ throw.
inline const std::type_info* thrown_type(const EXCEPTION_RECORD* record) {
  const qz_gcc::cxa_exception_layout* header = qz_gcc::primary_header(record);
  return header ? header->exception_type : nullptr;
}

// The thrown object itself (as thrown, not adjusted to a base); null when
// `record` is not a GCC C++ throw.
inline void* thrown_object(const EXCEPTION_RECORD* record) {
  const qz_gcc::cxa_exception_layout* header = qz_gcc::primary_header(record);
  return header ? const_cast<qz_gcc::cxa_exception_layout*>(header + 1) : nullptr;
}

// The thrown object as a `wanted` (adjusted to that base), when a handler for
// `wanted` would catch it; otherwise null.
inline void* thrown_object_as(const EXCEPTION_RECORD* record, const std::type_info& wanted) {
  const std::type_info* type = thrown_type(record);
  void* object = thrown_object(record);
  if (!type || !object) return nullptr;
  return wanted.__do_catch(type, &object, 1) ? object : nullptr;
}
