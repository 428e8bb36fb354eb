// The exception classes of qz, each an EGeneric whose constructors fill the
// value list from one kind of failure. None adds a data member.
//
//   ERuntimeException     a C runtime error number ("Code", "Text")
//   ESystemException      a system error code ("Code", "Text")
//   EComException         a COM error ("HRESULT", "Text", "Description", ...)
//   EBadCastException     a value read or written as the wrong kind
//   ELegacyException      an error reported through OnSysLibExc
//   ENotImplemented       a member that is not supported
//   EPurecallException    a call of a pure virtual function
//   EStructuredException  a processor fault (access violation, ...)
//     EStackOverflowException
//
// Thread safety: as EGeneric.
#pragma once

#include <qz/core/com_types.h>
#include <qz/errors/generic.h>

#include <typeinfo>

class QZ_API ERuntimeException : public EGeneric {
 public:
  // "Code" = code, then "Text" = the runtime's text for it when it has one.
  explicit ERuntimeException(int code);
  ERuntimeException(int code, const value_pair& a);
  ERuntimeException(int code, const value_pair& a, const value_pair& b);
};

class QZ_API ESystemException : public EGeneric {
 public:
  // "Code" = code, "Text" = the system's message without its trailing line
  // break (empty when the system has none), then the caller's pairs.
  explicit ESystemException(int code);
  ESystemException(int code, const value_pair& a);
  ESystemException(int code, const value_pair& a, const value_pair& b);
};

class QZ_API EComException : public EGeneric {
 public:
  // "HRESULT" (integer), "Text" and "Description" of a caught _com_error.
  explicit EComException(const _com_error& error);
  // "Code" = hr, "HRESULT" = hr in lower-case hex ("80004005"), then "Text",
  // "Description" and "Source" where the system and `info` provide them.
  // Does not release `info`.
  EComException(long hr, IErrorInfo* info);
};

class QZ_API EBadCastException : public EGeneric {
 public:
  // "Text" = "Bad cast", "From", "To" (and "RealType"): readable type names.
  EBadCastException(const std::type_info& from, const std::type_info& to);
  EBadCastException(const std::type_info& from, const std::type_info& to,
                    const std::type_info& real);
};

class QZ_API ELegacyException : public EGeneric {
 public:
  ELegacyException(const char* type, const char* text, int code);
};

class QZ_API ENotImplemented : public EGeneric {
 public:
  // "Text" = "Not implemented", "SourceFile", "SourceLine", "Function".
  ENotImplemented(const char* file, int line, const char* function);
};

class QZ_API EPurecallException : public EGeneric {
 public:
  EPurecallException();  // "Text" = "Purecall"
};

class QZ_API EStructuredException : public EGeneric {
 public:
  EStructuredException();
  // "Text" = the fault's name where it has one, "Code", "Address" (low 32
  // bits), then "Parameter0", "Parameter1", ... for the record's parameters.
  EStructuredException(unsigned int code, _EXCEPTION_POINTERS* pointers, unsigned long thread_id);
};

class QZ_API EStackOverflowException : public EStructuredException {
 public:
  EStackOverflowException();
  // The same values as EStructuredException(0xC00000FD, pointers, thread_id).
  EStackOverflowException(_EXCEPTION_POINTERS* pointers, unsigned long thread_id);

  // Throws the EStackOverflowException of a fault met on this thread. Its
  // values are built on a helper thread with a fresh stack (the overflowed
  // one has only its guarantee left), one overflow of the process at a time.
  // ESystemException when the helper thread cannot be started or waited for.
  [[noreturn]] static void Throw(_EXCEPTION_POINTERS* pointers, unsigned long thread_id);
  // Restores the stack's guard page after a caught overflow; a thread must
  // call it before it can survive its next overflow. True on success.
  static bool ResetStack();

 protected:
  // The helper thread's body: fills the EStackOverflowException at `target`.
  static unsigned int ThrowThread(void* target);
};

// Thrown to unwind a thread that is being interrupted. Deliberately outside
// the EGeneric tree, so that handlers for EGeneric let it pass.
class EThreadInterrupt {};

#define QZ_NOT_IMPLEMENTED() throw ENotImplemented(__FILE__, __LINE__, __func__)
