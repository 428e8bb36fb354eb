#include <qz/sync/timed_lock.h>
#include <qz/time/pcounter.h>

namespace {

__int64 counter_now() noexcept { return static_cast<__int64>(_pcounter_t()); }

volatile LONG* as_interlocked(volatile unsigned long* count) noexcept {
  return reinterpret_cast<volatile LONG*>(count);
}

}  // namespace

TTimedLock::TTimedLock(ILock& target)
    : lock(&target), multi_lock(nullptr), multi_lock_ex(nullptr), lock_count(0),
      last_change(counter_now()), busy_ticks(0), idle_ticks(0) {}

TTimedLock::TTimedLock(IMultiLock& target)
    : lock(&target), multi_lock(&target), multi_lock_ex(nullptr), lock_count(0),
      last_change(counter_now()), busy_ticks(0), idle_ticks(0) {}

TTimedLock::TTimedLock(IMultiLockEx& target)
    : lock(&target), multi_lock(&target), multi_lock_ex(&target), lock_count(0),
      last_change(counter_now()), busy_ticks(0), idle_ticks(0) {}

// Counting happens after the target has answered, so a target that throws
// or refuses leaves the measurements as they were.
void TTimedLock::Acquired() noexcept {
  if (InterlockedIncrement(as_interlocked(&lock_count)) != 1) return;
  const __int64 now = counter_now();
  idle_ticks += now - last_change;
  last_change = now;
}

bool TTimedLock::Acquired(bool taken) noexcept {
  if (taken) Acquired();
  return taken;
}

void TTimedLock::Released() noexcept {
  if (InterlockedDecrement(as_interlocked(&lock_count)) != 0) return;
  const __int64 now = counter_now();
  busy_ticks += now - last_change;
  last_change = now;
}

bool TTimedLock::Lock(unsigned int timeout) { return Acquired(lock->Lock(timeout)); }

void TTimedLock::Lock() {
  lock->Lock();
  Acquired();
}

void TTimedLock::Unlock() {
  lock->Unlock();
  Released();
}

bool TTimedLock::ReadLock(unsigned int timeout) { return Acquired(multi_lock->ReadLock(timeout)); }

void TTimedLock::ReadLock() {
  multi_lock->ReadLock();
  Acquired();
}

bool TTimedLock::WriteLock(unsigned int timeout) {
  return Acquired(multi_lock->WriteLock(timeout));
}

void TTimedLock::WriteLock() {
  multi_lock->WriteLock();
  Acquired();
}

bool TTimedLock::ReadLockThreadIndependent(unsigned int timeout) {
  return Acquired(multi_lock_ex->ReadLockThreadIndependent(timeout));
}

void TTimedLock::ReadLockThreadIndependent() {
  multi_lock_ex->ReadLockThreadIndependent();
  Acquired();
}

bool TTimedLock::WriteLockThreadIndependent(unsigned int timeout) {
  return Acquired(multi_lock_ex->WriteLockThreadIndependent(timeout));
}

void TTimedLock::WriteLockThreadIndependent() {
  multi_lock_ex->WriteLockThreadIndependent();
  Acquired();
}

void TTimedLock::UnlockThreadIndependent() {
  multi_lock_ex->UnlockThreadIndependent();
  Released();
}

// A reading taken in the very tick of construction has no time to share
// out; it reports the state the lock is in rather than dividing 0 by 0.
double TTimedLock::get_busy() const noexcept {
  const __int64 open = counter_now() - last_change;
  const __int64 total = idle_ticks + busy_ticks + open;
  const bool held = lock_count != 0;
  if (total == 0) return held ? 1.0 : 0.0;
  const __int64 busy = held ? busy_ticks + open : busy_ticks;
  return static_cast<double>(busy) / static_cast<double>(total);
}

__int64 TTimedLock::get_elapsed_ticks() const noexcept {
  return idle_ticks + busy_ticks + (counter_now() - last_change);
}

double TTimedLock::get_elapsed() const noexcept {
  return static_cast<double>(get_elapsed_ticks()) / _pcounter_t::frequency;
}
