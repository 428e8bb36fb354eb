// A stack overflow thrown as EStackOverflowException.
//
// The overflowed thread has only its stack guarantee left: too little for
// the symbol engine, the stack walk and the dump writer that building the
// exception may run. So a helper thread builds it on a fresh stack while the
// faulting thread waits, and the faulting thread throws a copy. Overflows
// are handled one at a time: the hand-off slots and the event are shared.
#include <qz/errors/exceptions.h>
#include <qz/faults/structured_exceptions.h>
#include <qz/core/throw.h>
#include <qz/sync/tlock.h>

#include "faults/fault_startup.h"

#include <malloc.h>

namespace {

const unsigned int kStackOverflow = 0xC00000FD;

// Waits for the helper alertably, as every wait of the library does. When a
// user procedure call throws out of the wait (an interruption), the helper
// is still writing into the faulting thread's exception: wait for it without
// being alertable, then take back the signal it gave on its way out, so that
// the next overflow's wait is for its own helper, before letting the throw
// go on.
void wait_for_helper(HANDLE done, HANDLE helper) {
  try {
    for (;;) {
      const DWORD result = WaitForSingleObjectEx(done, INFINITE, TRUE);
      if (result == WAIT_OBJECT_0) return;
      if (result == WAIT_FAILED) ThrowSystemException();
    }
  } catch (...) {
    WaitForSingleObject(helper, INFINITE);
    ResetEvent(done);
    throw;
  }
}

}  // namespace

EStackOverflowException::EStackOverflowException(_EXCEPTION_POINTERS* pointers,
                                                 unsigned long thread_id)
    : EStructuredException(kStackOverflow, pointers, thread_id) {}

void EStackOverflowException::Throw(_EXCEPTION_POINTERS* pointers, unsigned long thread_id) {
  stack_overflow_handoff& handoff = overflow_handoff();
  TLock serialised(handoff.lock);
  EStackOverflowException prepared;
  handoff.pointers = pointers;
  handoff.thread_id = thread_id;
  // The helper's entry is a lambda of this member, which may call the
  // protected ThrowThread.
  LPTHREAD_START_ROUTINE run = [](void* target) -> DWORD {
    // A fault while the dump or the stack is taken ends as an exception that
    // the diagnostics swallow, not as the end of the process.
    redirect_structured_exceptions translate;
    unsigned int result = 1;
    try {
      result = ThrowThread(target);
    } catch (...) {
      // The faulting thread still gets its exception, with what was filled.
      SetEvent(overflow_handoff().done);
    }
    return result;
  };
  HANDLE helper = CreateThread(nullptr, 0, run, &prepared, 0, nullptr);
  if (!helper) ThrowSystemException();
  try {
    wait_for_helper(handoff.done, helper);
  } catch (...) {
    CloseHandle(helper);
    throw;
  }
  if (!CloseHandle(helper)) ThrowSystemException();
  throw prepared;  // a copy: `prepared` dies with this frame
}

unsigned int EStackOverflowException::ThrowThread(void* target) {
  stack_overflow_handoff& handoff = overflow_handoff();
  const EStructuredException built(kStackOverflow, handoff.pointers, handoff.thread_id);
  static_cast<EGeneric&>(*static_cast<EStackOverflowException*>(target)) = built;
  handoff.done.Set();
  return 0;
}

bool EStackOverflowException::ResetStack() { return _resetstkoflw() != 0; }
