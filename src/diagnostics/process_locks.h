// The process-wide locks a thread may hold inside the system's own code:
// the loader lock, the process environment block's lock and every heap's
// lock (private to the library).
//
// Holding them all before suspending another thread guarantees that the
// suspended thread holds none of them, so the suspending thread can allocate
// and read module lists while it walks the other's stack. Taken in the
// system's own order (loader, environment block, heaps) and released in
// reverse. The native functions are looked up at run time; a missing one is
// skipped, and so is a heap that refuses its lock (one made without
// serialisation has none).
//
// Thread safety: an instance belongs to the thread that made it.
#pragma once

#include <windows.h>

#include <vector>

class process_locks {
 public:
  process_locks();
  ~process_locks();
  process_locks(const process_locks&) = delete;
  process_locks& operator=(const process_locks&) = delete;

 private:
  ULONG_PTR loader_cookie_ = 0;
  bool loader_locked_ = false;
  bool peb_locked_ = false;
  std::vector<HANDLE> locked_heaps_;
};
