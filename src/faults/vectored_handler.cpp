// The process-wide vectored handler: it sees every exception of the process
// first, on the thread that raised it.
//
// - A processor fault on a thread that translates faults continues in the
//   thread's translator (fault_redirect.h), which throws it as a C++
//   exception from the faulting instruction.
// - A C++ throw of an EGeneric gets its stack, module and symbol as seen at
//   the throw, and a crash dump when the settings ask for one, before any
//   unwinding destroys the evidence (exception_diagnostics.h).
// - Everything else passes untouched.
//
// The handler never decides an exception's outcome: apart from the
// redirection of a fault that its thread asked to translate, it always lets
// the search continue, swallows its own errors and leaves the thread's last
// error as it found it. A per-thread re-entry flag keeps an exception raised
// by the handler's own work, fault or throw, from being handled again.
#include "faults/exception_diagnostics.h"
#include "faults/fault_redirect.h"
#include "faults/fault_startup.h"
#include "diagnostics/internal/gcc_thrown_object_mingw.h"

#include <qz/errors/tuning.h>

namespace {

// Debugger notifications (debug-string output, thread names) pass at once.
bool is_debugger_notification(DWORD code) { return (code >> 16) == 0x4001; }

// Sets the calling thread's re-entry flag for the handler's work, unless it
// is already set.
class reentry_guard {
 public:
  reentry_guard() : entered_(!TlsGetValue(vectored_reentry_slot())) {
    if (entered_) TlsSetValue(vectored_reentry_slot(), reinterpret_cast<void*>(1));
  }
  ~reentry_guard() {
    if (entered_) TlsSetValue(vectored_reentry_slot(), nullptr);
  }
  reentry_guard(const reentry_guard&) = delete;
  reentry_guard& operator=(const reentry_guard&) = delete;

  // False when the handler is already at work on this thread.
  bool entered() const { return entered_; }

 private:
  bool entered_;
};

LONG handle(EXCEPTION_POINTERS* pointers) {
  const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
  if (is_translatable_fault(record)) {
    thread_fault_state* state = translating_thread_state();
    if (!state) return EXCEPTION_CONTINUE_SEARCH;
    reentry_guard guard;
    if (!guard.entered()) return EXCEPTION_CONTINUE_SEARCH;
    redirect_fault_to_translator(pointers, *state);
    return EXCEPTION_CONTINUE_EXECUTION;
  }
  if (is_debugger_notification(record.ExceptionCode) || !UseVEH) return EXCEPTION_CONTINUE_SEARCH;
  if (record.ExceptionCode != qz_gcc::kThrowCode || !exception_diagnostics::wanted_at_throw())
    return EXCEPTION_CONTINUE_SEARCH;
  reentry_guard guard;
  if (!guard.entered()) return EXCEPTION_CONTINUE_SEARCH;
  try {
    exception_diagnostics::at_throw(pointers);
  } catch (...) {
    // The handler's own failure must not change the exception's outcome.
  }
  return EXCEPTION_CONTINUE_SEARCH;
}

}  // namespace

LONG CALLBACK qz_vectored_handler(EXCEPTION_POINTERS* pointers) {
  const DWORD last_error = GetLastError();  // the thread-local slots clear it
  const LONG result = handle(pointers);
  SetLastError(last_error);
  return result;
}
