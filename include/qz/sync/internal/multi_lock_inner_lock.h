// _ml_interlocked_inner_lock: the short spin lock that guards TMultiLock's
// bookkeeping (owners list, signal mask, event creation).
//
// The word holds the owner inside, or all bits set when free. A thread that
// finds it taken first spins 128 pauses (about 2.5 us; the holder is
// usually out within a few hundred cycles), then sleeps alertably before
// each retry, 0 ms before the first and one millisecond longer after each
// failed one, so a thread waiting here can still be interrupted by a queued
// user procedure call.
// inner_lock_quietly backs off without running procedure calls: for the
// paths that must not leave by an exception once they changed something
// (a release, the bookkeeping after a wait, every attempt of a lock call
// after a wake-up, which may have taken the free event's one signal). The
// lock is not recursive, and
// nobody waits on a kernel object while holding it.
//
// Thread safety: any thread; inner_unlock only by the thread inside.
#pragma once
// Internal: a part of TMultiLock, reached through <qz/sync/multi_lock.h>.

#include <qz/export.h>
#include <qz/sync/internal/multi_lock_common.h>

#include <atomic>

class QZ_API _ml_interlocked_inner_lock {
 public:
  _ml_interlocked_inner_lock() noexcept : inner(_ml_common::no_owner) {}
  _ml_interlocked_inner_lock(const _ml_interlocked_inner_lock&) = delete;
  _ml_interlocked_inner_lock& operator=(const _ml_interlocked_inner_lock&) = delete;

  void inner_lock(_ml_common::_owner_id owner) const {
    _ml_common::_owner_id expected = _ml_common::no_owner;
    if (!inner.compare_exchange_strong(expected, owner, std::memory_order_acquire))
      inner_lock_contended(owner, _backoff::alertable);
  }
  void inner_lock_quietly(_ml_common::_owner_id owner) const noexcept {
    _ml_common::_owner_id expected = _ml_common::no_owner;
    if (!inner.compare_exchange_strong(expected, owner, std::memory_order_acquire))
      inner_lock_contended(owner, _backoff::quiet);
  }
  void inner_unlock() const noexcept { inner.store(_ml_common::no_owner, std::memory_order_release); }
  // The owner inside, or no_owner; for diagnosis only.
  _ml_common::_owner_id inner_owner() const noexcept { return inner.load(); }

 private:
  // How the back-off sleeps: alertably (queued procedure calls run, and one
  // that throws leaves the lock call) or quietly (they wait for later).
  enum class _backoff { alertable, quiet };
  // Throws only when alertable and a procedure call run by a sleep throws.
  void inner_lock_contended(_ml_common::_owner_id owner, _backoff backoff) const;
  bool try_inner_lock(_ml_common::_owner_id owner) const noexcept {
    _ml_common::_owner_id expected = _ml_common::no_owner;
    return inner.compare_exchange_strong(expected, owner, std::memory_order_acquire);
  }

  mutable std::atomic<_ml_common::_owner_id> inner;
};
