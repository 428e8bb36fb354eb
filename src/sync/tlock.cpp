#include <qz/core/throw.h>
#include <qz/sync/tlock.h>

#include <windows.h>

TLock::TLock(ILock& target) : lock(&target) { lock->Lock(); }

TLock::TLock(const ILock& target) : lock(const_cast<ILock*>(&target)) { lock->Lock(); }

TLock::TLock(ILock* target) : lock(target) { lock->Lock(); }

TLock::TLock(const ILock* target) : lock(const_cast<ILock*>(target)) { lock->Lock(); }

TLock::TLock(ILock& target, unsigned int timeout) : lock(&target) { Take(timeout); }

TLock::TLock(const ILock& target, unsigned int timeout) : lock(const_cast<ILock*>(&target)) {
  Take(timeout);
}

TLock::TLock(ILock* target, unsigned int timeout) : lock(target) { Take(timeout); }

TLock::TLock(const ILock* target, unsigned int timeout) : lock(const_cast<ILock*>(target)) {
  Take(timeout);
}

void TLock::Take(unsigned int timeout) {
  if (!Lock(timeout)) ThrowSystemException(WAIT_TIMEOUT);
}

TLock::~TLock() noexcept(false) { Unlock(); }

TLock& TLock::operator=(const TLock& other) noexcept {
  lock = other.lock;
  return *this;
}

void TLock::Lock() { lock->Lock(); }

bool TLock::Lock(unsigned int timeout) {
  if (lock->Lock(timeout)) return true;
  lock = nullptr;
  return false;
}

void TLock::Unlock() {
  if (lock == nullptr) return;
  ILock* held = lock;
  lock = nullptr;
  held->Unlock();
}
