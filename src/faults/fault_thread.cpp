#include "faults/fault_thread.h"

#include <windows.h>

namespace {

thread_local unsigned long scoped_thread_id = 0;  // 0: no scope (no thread has id 0)

}  // namespace

faulting_thread_scope::faulting_thread_scope(unsigned long thread_id)
    : previous_(scoped_thread_id) {
  scoped_thread_id = thread_id;
}

faulting_thread_scope::~faulting_thread_scope() { scoped_thread_id = previous_; }

unsigned long faulting_thread_id() {
  return scoped_thread_id ? scoped_thread_id : GetCurrentThreadId();
}
