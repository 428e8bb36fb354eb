// TMultiLockWithNotify: a TMultiLock that tells a derived class when the
// lock as a whole changes hands, e.g. to load shared data when the first
// holder comes in and to flush it when the last one leaves.
//
//   class TCachedTable : public TMultiLockWithNotify {
//     void OnReadLock() override { load(); }       // first reader in
//     void OnWriteUnlock() override { flush(); }   // the writer out
//   };
//
// The hooks, all doing nothing by default:
//   OnReadLock              the first reader came into a free lock
//   OnWriteLock             a writer came into a free lock
//   OnWriteAfterReadLock    the only reader upgraded to writer
//   OnReadUnlock            the last read hold is being released
//   OnWriteUnlock           the only hold, a write, is being released
//   OnWriteAfterReadUnlock  the owner's write over its own reads is being
//                           released (the reads stay)
// Holds that join others (more readers, recursion) call no hook. The lock
// hooks run once the hold is in place, the unlock hooks before it is given
// up, on the thread concerned. OnReadLock runs with the lock closed to every
// other thread, who wait and come in after it; the write hooks run under the
// caller's write. OnReadUnlock runs while the leaving reader still holds its
// read, so a reader arriving during it may still join. The thread-independent
// operations follow the same rules for their shared owner. A hook that throws
// leaves the operation by that exception with the lock held (on the lock
// side) or not yet released (on the release side): treat it as a fault.
//
// Every operation has a NoNotify form that behaves as TMultiLock's and calls
// no hook.
//
// Thread safety: as TMultiLock. The hooks run without any internal lock, so
// they may do anything but wait for another thread that wants this lock.
#pragma once

#include <qz/export.h>
#include <qz/sync/multi_lock.h>

class QZ_API TMultiLockWithNotify : public TMultiLock {
 public:
  TMultiLockWithNotify() noexcept = default;

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

  // The notifying virtual operations, hooks first.
 protected:
  virtual void OnWriteLock() {}
  virtual void OnReadLock() {}
  virtual void OnWriteUnlock() {}
  virtual void OnReadUnlock() {}
  virtual void OnWriteAfterReadLock() {}
  virtual void OnWriteAfterReadUnlock() {}

 public:
  virtual void ReadLockNoNotify();
  virtual bool ReadLockNoNotify(unsigned int timeout);
  virtual void WriteLockNoNotify();
  virtual bool WriteLockNoNotify(unsigned int timeout);
  virtual void UnlockNoNotify();
  virtual void ReadLockThreadIndependentNoNotify();
  virtual bool ReadLockThreadIndependentNoNotify(unsigned int timeout);
  virtual void WriteLockThreadIndependentNoNotify();
  virtual bool WriteLockThreadIndependentNoNotify(unsigned int timeout);
  virtual void UnlockThreadIndependentNoNotify();

 protected:
  bool _read_lock_notify(unsigned int timeout, _owner_id owner);
  bool _write_lock_notify(unsigned int timeout, _owner_id owner);
  void _unlock_notify(_owner_id owner);
  bool _read_lock_notify_independent(unsigned int timeout, _owner_id owner);
  bool _write_lock_notify_independent(unsigned int timeout, _owner_id owner);

 private:
  class hooks_of;
};
