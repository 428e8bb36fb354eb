// Throw helpers: the one way a failed system call, COM call, bad cast,
// broken condition or legacy error becomes an exception.
//
//   if (!CloseHandle(h)) ThrowSystemException();
//
// They are declared here, in the lowest room, so that every room can throw
// without knowing the exception classes; they are defined with those classes
// (<qz/errors/exceptions.h>), whose types they throw.
//
// Thread safety: any thread; each throws on the calling thread.
#pragma once

#include <qz/core/com_types.h>
#include <qz/export.h>

#include <typeinfo>

// Throws ESystemException(GetLastError()).
[[noreturn]] QZ_API void ThrowSystemException();
// Throws ESystemException(code).
[[noreturn]] QZ_API void ThrowSystemException(unsigned long code);
// Throws EBadCastException(from, to): a value asked for as a kind it cannot
// give.
[[noreturn]] QZ_API void ThrowBadCast(const std::type_info& from, const std::type_info& to);
// Throws ENotImplemented(file, line, function).
[[noreturn]] QZ_API void ThrowNotImplemented(const char* file, int line, const char* function);
// Throws EGeneric("Status" = status, "Text" = text): an error whose only
// detail is the state of the object that refused.
[[noreturn]] QZ_API void ThrowStatusError(const char* status, const char* text);
// Throws ELegacyException(type, text, code): the hook older code reports through.
[[noreturn]] QZ_API void OnSysLibExc(const char* type, const char* text, int code);
// Throws EPurecallException; the runtime's pure-virtual-call handler.
[[noreturn]] QZ_API void _my_purecall_translator();

// Throws EGeneric("Text" = "Condition not meet", "Condition", "SourceFile",
// "SourceLine", "SourceFunction") when `condition` is false.
#define QZ_ASSERT(condition)                                                   \
  do {                                                                         \
    if (!(condition))                                                          \
      qz_throw_assertion(#condition, __FILE__, __LINE__, __func__);            \
  } while (false)

[[noreturn]] QZ_API void qz_throw_assertion(const char* condition, const char* file, int line,
                                            const char* function);
