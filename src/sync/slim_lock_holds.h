// Scoped exclusive and shared holds of a slim reader/writer lock (SRWLOCK),
// released on every way out (private to the library). A slim lock never
// fails and its wait is not alertable, so neither hold throws nor can be
// interrupted: they suit bookkeeping that must finish whatever happens.
#pragma once

#include <windows.h>

// Takes `lock` with `take` for one block and gives it back with `give`.
template <void(WINAPI* take)(PSRWLOCK), void(WINAPI* give)(PSRWLOCK)>
class slim_lock_hold {
 public:
  explicit slim_lock_hold(SRWLOCK& lock) : lock_(lock) { take(&lock_); }
  ~slim_lock_hold() { give(&lock_); }
  slim_lock_hold(const slim_lock_hold&) = delete;
  slim_lock_hold& operator=(const slim_lock_hold&) = delete;

 private:
  SRWLOCK& lock_;
};

using slim_exclusive_hold = slim_lock_hold<&AcquireSRWLockExclusive, &ReleaseSRWLockExclusive>;
using slim_shared_hold = slim_lock_hold<&AcquireSRWLockShared, &ReleaseSRWLockShared>;
