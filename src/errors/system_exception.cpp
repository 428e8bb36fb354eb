#include <qz/errors/exceptions.h>
#include <qz/core/throw.h>

#include "errors/system_message.h"

namespace {

EGeneric::value_pair code_of(int code) { return {"Code", code}; }
EGeneric::value_pair text_of(int code) { return {"Text", system_error_text(static_cast<DWORD>(code))}; }

}  // namespace

ESystemException::ESystemException(int code) : EGeneric(code_of(code), text_of(code)) {}

ESystemException::ESystemException(int code, const value_pair& a)
    : EGeneric(code_of(code), text_of(code), a) {}

ESystemException::ESystemException(int code, const value_pair& a, const value_pair& b)
    : EGeneric(code_of(code), text_of(code), a, b) {}

void ThrowSystemException() { throw ESystemException(static_cast<int>(GetLastError())); }

void ThrowSystemException(unsigned long code) { throw ESystemException(static_cast<int>(code)); }
