// Throw helpers: the one way a failed system call, COM call or legacy error
// becomes an exception.
#pragma once

#include <qz/core/com_types.h>
#include <qz/export.h>

// Throws ESystemException(GetLastError()).
[[noreturn]] QZ_API void ThrowSystemException();
// Throws ESystemException(code).
[[noreturn]] QZ_API void ThrowSystemException(unsigned long code);
// Throws ELegacyException(type, text, code): the hook older code reports through.
[[noreturn]] QZ_API void OnSysLibExc(const char* type, const char* text, int code);
// Throws EPurecallException; the runtime's pure-virtual-call handler.
[[noreturn]] QZ_API void _my_purecall_translator();
