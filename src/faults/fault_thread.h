// The thread a fault being reported belongs to (private to the library).
//
// A fault is normally reported on its own thread, but a stack overflow is
// reported from a helper thread with a fresh stack. The structured
// exception's constructor names the faulting thread for its scope, so that a
// dump written meanwhile records the fault on the right thread.
//
// Thread safety: per thread.
#pragma once

class faulting_thread_scope {
 public:
  explicit faulting_thread_scope(unsigned long thread_id);
  ~faulting_thread_scope();
  faulting_thread_scope(const faulting_thread_scope&) = delete;
  faulting_thread_scope& operator=(const faulting_thread_scope&) = delete;

 private:
  unsigned long previous_;
};

// The id of the innermost scope on this thread, or the calling thread's id.
unsigned long faulting_thread_id();
