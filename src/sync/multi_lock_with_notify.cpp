#include <qz/sync/multi_lock_with_notify.h>

#include <windows.h>

// Hands the shared lock workers this lock's hooks.
class TMultiLockWithNotify::hooks_of : public _ml_lock_hooks {
 public:
  explicit hooks_of(TMultiLockWithNotify& lock) : lock_(lock) {}
  void first_read() override { lock_.OnReadLock(); }
  void first_write() override { lock_.OnWriteLock(); }
  void write_after_read() override { lock_.OnWriteAfterReadLock(); }

 private:
  TMultiLockWithNotify& lock_;
};

bool TMultiLockWithNotify::_read_lock_notify(unsigned int timeout, _owner_id owner) {
  hooks_of hooks(*this);
  return read_lock_as(timeout, owner, _ml_common::_hold_t::thread_bound, &hooks);
}

bool TMultiLockWithNotify::_read_lock_notify_independent(unsigned int timeout, _owner_id owner) {
  hooks_of hooks(*this);
  return read_lock_as(timeout, owner, _ml_common::_hold_t::thread_independent, &hooks);
}

bool TMultiLockWithNotify::_write_lock_notify(unsigned int timeout, _owner_id owner) {
  hooks_of hooks(*this);
  return write_lock_as(timeout, owner, &hooks);
}

bool TMultiLockWithNotify::_write_lock_notify_independent(unsigned int timeout, _owner_id owner) {
  hooks_of hooks(*this);
  return write_lock_independent_as(timeout, owner, &hooks);
}

// The hook is chosen from one snapshot, then runs while the hold it is about
// is still in place; only then is the hold released as usual.
void TMultiLockWithNotify::_unlock_notify(_owner_id owner) {
  inner_lock_quietly(owner);
  const _ml_common::_last_t last = is_last_owner(owner);
  const unsigned int now = state.load();
  inner_unlock();
  if (now == _ml_common::locked_read && last == _ml_common::last_sole_entry)
    OnReadUnlock();
  else if (now == _ml_common::locked_write && last == _ml_common::last_sole_entry)
    OnWriteUnlock();
  else if (now == _ml_common::locked_write && last == _ml_common::last_write_over_reads)
    OnWriteAfterReadUnlock();
  _unlock(owner);
}

bool TMultiLockWithNotify::Lock(unsigned int timeout) { return WriteLock(timeout); }

void TMultiLockWithNotify::Lock() { WriteLock(); }

void TMultiLockWithNotify::Unlock() { _unlock_notify(_ml_common::current_owner()); }

bool TMultiLockWithNotify::ReadLock(unsigned int timeout) {
  return _read_lock_notify(timeout, _ml_common::current_owner());
}

void TMultiLockWithNotify::ReadLock() { _read_lock_notify(INFINITE, _ml_common::current_owner()); }

bool TMultiLockWithNotify::WriteLock(unsigned int timeout) {
  return _write_lock_notify(timeout, _ml_common::current_owner());
}

void TMultiLockWithNotify::WriteLock() { _write_lock_notify(INFINITE, _ml_common::current_owner()); }

bool TMultiLockWithNotify::ReadLockThreadIndependent(unsigned int timeout) {
  return _read_lock_notify_independent(timeout, _ml_common::independent_owner);
}

void TMultiLockWithNotify::ReadLockThreadIndependent() {
  _read_lock_notify_independent(INFINITE, _ml_common::independent_owner);
}

bool TMultiLockWithNotify::WriteLockThreadIndependent(unsigned int timeout) {
  return _write_lock_notify_independent(timeout, _ml_common::independent_owner);
}

void TMultiLockWithNotify::WriteLockThreadIndependent() {
  _write_lock_notify_independent(INFINITE, _ml_common::independent_owner);
}

void TMultiLockWithNotify::UnlockThreadIndependent() { _unlock_notify(_ml_common::independent_owner); }

void TMultiLockWithNotify::ReadLockNoNotify() { TMultiLock::ReadLock(); }

bool TMultiLockWithNotify::ReadLockNoNotify(unsigned int timeout) { return TMultiLock::ReadLock(timeout); }

void TMultiLockWithNotify::WriteLockNoNotify() { TMultiLock::WriteLock(); }

bool TMultiLockWithNotify::WriteLockNoNotify(unsigned int timeout) { return TMultiLock::WriteLock(timeout); }

void TMultiLockWithNotify::UnlockNoNotify() { TMultiLock::Unlock(); }

void TMultiLockWithNotify::ReadLockThreadIndependentNoNotify() { TMultiLock::ReadLockThreadIndependent(); }

bool TMultiLockWithNotify::ReadLockThreadIndependentNoNotify(unsigned int timeout) {
  return TMultiLock::ReadLockThreadIndependent(timeout);
}

void TMultiLockWithNotify::WriteLockThreadIndependentNoNotify() { TMultiLock::WriteLockThreadIndependent(); }

bool TMultiLockWithNotify::WriteLockThreadIndependentNoNotify(unsigned int timeout) {
  return TMultiLock::WriteLockThreadIndependent(timeout);
}

void TMultiLockWithNotify::UnlockThreadIndependentNoNotify() { TMultiLock::UnlockThreadIndependent(); }
