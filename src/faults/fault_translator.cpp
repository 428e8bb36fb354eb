#include "faults/fault_translator.h"

#include "faults/fault_startup.h"

#include <qz/errors/exceptions.h>

#include <memory>

namespace {

// Owns the calling thread's state and, when the thread ends, takes it out of
// the slot before freeing it.
class thread_fault_state_owner {
 public:
  ~thread_fault_state_owner() {
    if (state_) TlsSetValue(fault_translator_slot(), nullptr);
  }
  thread_fault_state& get() {
    if (!state_) state_ = std::make_unique<thread_fault_state>();
    return *state_;
  }

 private:
  std::unique_ptr<thread_fault_state> state_;
};

thread_local thread_fault_state_owner this_thread_state;

}  // namespace

fault_translator exchange_fault_translator(fault_translator next) {
  thread_fault_state& state = this_thread_state.get();
  const fault_translator previous = state.translator;
  state.translator = next;
  TlsSetValue(fault_translator_slot(), next ? &state : nullptr);
  return previous;
}

thread_fault_state* translating_thread_state() {
  const DWORD last_error = GetLastError();  // TlsGetValue clears it
  auto* state = static_cast<thread_fault_state*>(TlsGetValue(fault_translator_slot()));
  SetLastError(last_error);
  return state;
}

bool is_translatable_fault(const EXCEPTION_RECORD& record) {
  if (record.ExceptionFlags & EXCEPTION_NONCONTINUABLE) return false;
  switch (record.ExceptionCode) {
    case EXCEPTION_ACCESS_VIOLATION:
    case EXCEPTION_IN_PAGE_ERROR:
    case EXCEPTION_ILLEGAL_INSTRUCTION:
    case EXCEPTION_PRIV_INSTRUCTION:
    case EXCEPTION_DATATYPE_MISALIGNMENT:
    case EXCEPTION_ARRAY_BOUNDS_EXCEEDED:
    case EXCEPTION_INT_DIVIDE_BY_ZERO:
    case EXCEPTION_INT_OVERFLOW:
    case EXCEPTION_FLT_DENORMAL_OPERAND:
    case EXCEPTION_FLT_DIVIDE_BY_ZERO:
    case EXCEPTION_FLT_INEXACT_RESULT:
    case EXCEPTION_FLT_INVALID_OPERATION:
    case EXCEPTION_FLT_OVERFLOW:
    case EXCEPTION_FLT_STACK_CHECK:
    case EXCEPTION_FLT_UNDERFLOW:
    case STATUS_FLOAT_MULTIPLE_FAULTS:
    case STATUS_FLOAT_MULTIPLE_TRAPS:
    case EXCEPTION_STACK_OVERFLOW:
      return true;
    default:
      return false;
  }
}

void translate_fault(unsigned int code, EXCEPTION_POINTERS* pointers) {
  if (code == EXCEPTION_STACK_OVERFLOW)
    EStackOverflowException::Throw(pointers, GetCurrentThreadId());
  throw EStructuredException(code, pointers, GetCurrentThreadId());
}
