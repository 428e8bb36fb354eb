// The spooler's two-call pattern and information levels, private to the
// printer sources.
#pragma once

#include <qz/core/auto_ptr.h>
#include <qz/core/throw.h>

#include <windows.h>
#include <winspool.h>

#include <utility>

namespace spooler {

// The information level each structure stands for.
template <class T>
struct level;
#define QZ_SPOOLER_LEVEL(type, n) \
  template <>                     \
  struct level<type> {            \
    static constexpr DWORD value = n; \
  };
QZ_SPOOLER_LEVEL(_PRINTER_INFO_1W, 1)
QZ_SPOOLER_LEVEL(_PRINTER_INFO_1A, 1)
QZ_SPOOLER_LEVEL(_PRINTER_INFO_2W, 2)
QZ_SPOOLER_LEVEL(_PRINTER_INFO_2A, 2)
QZ_SPOOLER_LEVEL(_PRINTER_INFO_3, 3)
QZ_SPOOLER_LEVEL(_PRINTER_INFO_4W, 4)
QZ_SPOOLER_LEVEL(_JOB_INFO_1W, 1)
QZ_SPOOLER_LEVEL(_JOB_INFO_1A, 1)
QZ_SPOOLER_LEVEL(_JOB_INFO_2W, 2)
QZ_SPOOLER_LEVEL(_JOB_INFO_2A, 2)
QZ_SPOOLER_LEVEL(_JOB_INFO_3, 3)
QZ_SPOOLER_LEVEL(_PORT_INFO_1W, 1)
QZ_SPOOLER_LEVEL(_PORT_INFO_1A, 1)
QZ_SPOOLER_LEVEL(_PORT_INFO_2W, 2)
QZ_SPOOLER_LEVEL(_PORT_INFO_2A, 2)
#undef QZ_SPOOLER_LEVEL

template <class T>
constexpr DWORD level_of = level<T>::value;

// The spooler's prototypes take writable names they never write.
inline wchar_t* writable(const wchar_t* text) { return const_cast<wchar_t*>(text); }
inline char* writable(const char* text) { return const_cast<char*>(text); }

template <class T>
BYTE* bytes_of(const AutoPtr<T>& p) {
  return reinterpret_cast<BYTE*>(p.get());
}

// Fills `out` by `call(buffer, size, &needed, &count)`, a spooler function
// that answers a Boolean: first with no buffer for the size needed, then
// with a buffer of that size. Returns the count the succeeding call gave.
//
// When the first call already succeeds `out` stays as it was. The buffer is
// exchanged into `out` only once it is filled, so a failure leaves `out`
// untouched too. The last error is cleared before each call: a spooler
// function that fails without setting one then reports 0, not an older code.
template <class T, class Call>
DWORD two_calls(AutoPtr<T>& out, Call call) {
  DWORD needed = 0, count = 0;
  SetLastError(ERROR_SUCCESS);
  if (call(nullptr, 0, &needed, &count)) return count;
  DWORD error = GetLastError();
  // The answer may grow between the calls (a job arrives): then ask again.
  for (int attempt = 0; attempt < 4 && error == ERROR_INSUFFICIENT_BUFFER; ++attempt) {
    AutoPtr<T> filled;
    filled.allocate(needed);
    SetLastError(ERROR_SUCCESS);
    if (call(bytes_of(filled), needed, &needed, &count)) {
      out = std::move(filled);
      return count;
    }
    error = GetLastError();
  }
  ThrowSystemException(error);
}

}  // namespace spooler
