#include "faults/fault_translator.h"

#include "faults/fault_startup.h"

#include <qz/core/throw.h>
#include <qz/errors/exceptions.h>

#include <memory>

namespace {

// A thread's state is made on its first translator and freed by a fiber-local
// slot's callback when the thread ends, which first takes it out of the slot
// the handler reads. Not a thread_local object: this runtime frees a DLL's
// thread_local storage before it runs the destructors of the objects in it,
// so such a destructor writes into freed heap memory and frees twice while
// other threads allocate, and the heap breaks or its lock is left held.
void WINAPI release_thread_state(void* state) {
  if (state == nullptr) return;
  TlsSetValue(fault_translator_slot(), nullptr);
  delete static_cast<thread_fault_state*>(state);
}

// Freed when the library unloads, which runs the callback for every thread
// that still has a state. FLS_OUT_OF_INDEXES when the process has no
// fiber-local slot left: states are then never freed rather than too early.
class state_owner_slot {
 public:
  state_owner_slot() : index_(FlsAlloc(&release_thread_state)) {}
  ~state_owner_slot() {
    if (index_ != FLS_OUT_OF_INDEXES) FlsFree(index_);
  }
  state_owner_slot(const state_owner_slot&) = delete;
  state_owner_slot& operator=(const state_owner_slot&) = delete;
  DWORD index() const { return index_; }

 private:
  const DWORD index_;
};

DWORD state_slot() {
  static const state_owner_slot slot;
  return slot.index();
}

thread_fault_state& this_thread_state() {
  const DWORD slot = state_slot();
  if (slot != FLS_OUT_OF_INDEXES) {
    if (void* found = FlsGetValue(slot)) return *static_cast<thread_fault_state*>(found);
  }
  std::unique_ptr<thread_fault_state> made = std::make_unique<thread_fault_state>();
  if (slot != FLS_OUT_OF_INDEXES && !FlsSetValue(slot, made.get())) ThrowSystemException();
  return *made.release();
}

}  // namespace

fault_translator exchange_fault_translator(fault_translator next) {
  thread_fault_state& state = this_thread_state();
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
