// TTimedLock: a measuring wrapper round another lock. Every lock operation
// is forwarded to the target; the wrapper counts the holds outstanding and
// times, with the performance counter, how long the target has been held
// ("busy") and free ("idle") since the wrapper was made.
//
//   TCriticalSection section;
//   TTimedLock measured(section);
//   ... use `measured` wherever `section` was used ...
//   double load = measured.get_busy();      // 0 .. 1
//
// Built over an ILock it offers Lock/Unlock; over an IMultiLock also the
// read and write locks; over an IMultiLockEx also the thread-independent
// ones. Calling an operation the target does not have is the caller's fault
// and is not checked. All kinds of holds share one count, so two readers
// inside at once keep the lock busy until the last one leaves. A timed
// operation that fails, or one that throws, counts nothing.
//
// Thread safety: as safe as the target lock. The count changes atomically;
// the time sums are updated by whichever thread frees or takes the lock, so
// a reading taken at the same moment by another thread may be off by one
// period. The target must outlive the wrapper.
#pragma once

#include <qz/export.h>
#include <qz/sync/lock.h>

#include <cstdint>  // __int64

class QZ_API TTimedLock : public IMultiLockEx {
 public:
  explicit TTimedLock(ILock& target);
  explicit TTimedLock(IMultiLock& target);
  explicit TTimedLock(IMultiLockEx& target);

  bool Lock(unsigned int timeout) override;
  void Lock() override;
  void Unlock() override;
  bool ReadLock(unsigned int timeout) override;
  void ReadLock() override;
  bool WriteLock(unsigned int timeout) override;
  void WriteLock() override;
  bool ReadLockThreadIndependent(unsigned int timeout) override;
  void ReadLockThreadIndependent() override;
  bool WriteLockThreadIndependent(unsigned int timeout) override;
  void WriteLockThreadIndependent() override;
  void UnlockThreadIndependent() override;

  // Some hold through this wrapper is outstanding.
  bool IsLocked() const noexcept { return lock_count != 0; }
  // Share of the time since construction the target was held, 0 .. 1.
  double get_busy() const noexcept;
  // Seconds since construction.
  double get_elapsed() const noexcept;
  // Performance-counter ticks since construction.
  __int64 get_elapsed_ticks() const noexcept;

 private:
  void Acquired() noexcept;
  void Released() noexcept;
  bool Acquired(bool taken) noexcept;

  ILock* lock;
  IMultiLock* multi_lock;
  IMultiLockEx* multi_lock_ex;
  volatile unsigned long lock_count;
  __int64 last_change;
  __int64 busy_ticks;
  __int64 idle_ticks;
};
