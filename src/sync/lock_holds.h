// Scoped read and write holds on a multi-lock through its IMultiLock face,
// released on every way out (private to the library).
#pragma once

#include <qz/sync/lock.h>

// Takes the lock with `take` for one block.
template <void (IMultiLock::*take)()>
class multi_lock_hold {
 public:
  explicit multi_lock_hold(IMultiLock& lock) : lock_(lock) { (lock_.*take)(); }
  ~multi_lock_hold() { lock_.Unlock(); }
  multi_lock_hold(const multi_lock_hold&) = delete;
  multi_lock_hold& operator=(const multi_lock_hold&) = delete;

 private:
  IMultiLock& lock_;
};

using read_hold = multi_lock_hold<&IMultiLock::ReadLock>;
using write_hold = multi_lock_hold<&IMultiLock::WriteLock>;
