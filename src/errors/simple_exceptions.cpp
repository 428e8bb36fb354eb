// The exceptions whose values come straight from their arguments.
#include <qz/core/throw.h>
#include <qz/errors/exceptions.h>

#include <qz/core/type_name.h>

namespace {

// Older callers pass null for "no text"; a value cannot be made from null.
const char* or_empty(const char* text) { return text ? text : ""; }

}  // namespace

EBadCastException::EBadCastException(const std::type_info& from, const std::type_info& to)
    : EGeneric({"Text", "Bad cast"}, {"From", type_name(from)}, {"To", type_name(to)}) {}

EBadCastException::EBadCastException(const std::type_info& from, const std::type_info& to,
                                     const std::type_info& real)
    : EGeneric({"Text", "Bad cast"}, {"From", type_name(from)}, {"To", type_name(to)},
               {"RealType", type_name(real)}) {}

ELegacyException::ELegacyException(const char* type, const char* text, int code)
    : EGeneric({"Code", code}, {"Type", or_empty(type)}, {"Text", or_empty(text)}) {}

ENotImplemented::ENotImplemented(const char* file, int line, const char* function)
    : EGeneric({"Text", "Not implemented"}, {"SourceFile", or_empty(file)}, {"SourceLine", line},
               {"Function", or_empty(function)}) {}

EPurecallException::EPurecallException() : EGeneric({"Text", "Purecall"}) {}

void OnSysLibExc(const char* type, const char* text, int code) { throw ELegacyException(type, text, code); }

void _my_purecall_translator() { throw EPurecallException(); }

void qz_throw_assertion(const char* condition, const char* file, int line, const char* function) {
  throw EGeneric({"Text", "Condition not meet"}, {"Condition", or_empty(condition)},
                 {"SourceFile", or_empty(file)}, {"SourceLine", line}, {"SourceFunction", or_empty(function)});
}

void ThrowBadCast(const std::type_info& from, const std::type_info& to) { throw EBadCastException(from, to); }

void ThrowNotImplemented(const char* file, int line, const char* function) {
  throw ENotImplemented(file, line, function);
}

void ThrowStatusError(const char* status, const char* text) {
  throw EGeneric({"Status", or_empty(status)}, {"Text", or_empty(text)});
}
