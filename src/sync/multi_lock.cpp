#include <qz/sync/multi_lock.h>

#include <windows.h>

#include <string>

TMultiLock::TMultiLock() noexcept : state(_ml_common::not_locked), upgrade_waiters(0) {}

TMultiLock::TMultiLock(int /*unused*/) noexcept : TMultiLock() {}

// The bases close the events and free a list that moved to the heap.
TMultiLock::~TMultiLock() = default;

bool TMultiLock::Lock(unsigned int timeout) { return WriteLock(timeout); }

void TMultiLock::Lock() { WriteLock(); }

void TMultiLock::Unlock() { _unlock(_ml_common::current_owner()); }

bool TMultiLock::ReadLock(unsigned int timeout) { return _read_lock(timeout, _ml_common::current_owner()); }

void TMultiLock::ReadLock() { _read_lock(INFINITE, _ml_common::current_owner()); }

bool TMultiLock::WriteLock(unsigned int timeout) { return _write_lock(timeout, _ml_common::current_owner()); }

void TMultiLock::WriteLock() { _write_lock(INFINITE, _ml_common::current_owner()); }

bool TMultiLock::ReadLockThreadIndependent(unsigned int timeout) {
  return _read_lock_independent(timeout, _ml_common::independent_owner);
}

void TMultiLock::ReadLockThreadIndependent() {
  _read_lock_independent(INFINITE, _ml_common::independent_owner);
}

bool TMultiLock::WriteLockThreadIndependent(unsigned int timeout) {
  return _write_lock_independent(timeout, _ml_common::independent_owner);
}

void TMultiLock::WriteLockThreadIndependent() {
  _write_lock_independent(INFINITE, _ml_common::independent_owner);
}

void TMultiLock::UnlockThreadIndependent() { _unlock(_ml_common::independent_owner); }
