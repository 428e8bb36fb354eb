// The lock and release workers of TMultiLock. Each attempt starts by taking
// the inner lock; every path below says where it is left again (signal and
// unsignal leave it, and so does a wait before it sleeps).
#include <qz/core/throw.h>
#include <qz/sync/multi_lock.h>

namespace {

constexpr unsigned int kFree = _ml_common::signal_free;
constexpr unsigned int kSoleOwner = _ml_common::signal_sole_owner;
constexpr unsigned int kReadOpen = _ml_common::signal_read_open;

constexpr unsigned int kNotLocked = _ml_common::not_locked;
constexpr unsigned int kLockedRead = _ml_common::locked_read;
constexpr unsigned int kLockedWrite = _ml_common::locked_write;

}  // namespace

bool TMultiLock::_read_lock(unsigned int timeout, _owner_id owner) {
  return read_lock_as(timeout, owner, _ml_common::_hold_t::thread_bound, nullptr);
}

bool TMultiLock::_read_lock_independent(unsigned int timeout, _owner_id owner) {
  return read_lock_as(timeout, owner, _ml_common::_hold_t::thread_independent, nullptr);
}

bool TMultiLock::_write_lock(unsigned int timeout, _owner_id owner) {
  return write_lock_as(timeout, owner, nullptr);
}

bool TMultiLock::_write_lock_independent(unsigned int timeout, _owner_id owner) {
  return write_lock_independent_as(timeout, owner, nullptr);
}

// Only the first attempt may be interrupted on its way into the inner lock.
// A later attempt follows a wake-up, and the free event wakes one waiter at
// a time: a waiter that took that wake-up and then left by an interruption
// would leave the others asleep beside a free lock. So from then on the
// interruption waits for the next kernel wait, which delivers it before it
// takes anything.
void TMultiLock::enter_attempt(_owner_id owner, bool first) {
  if (first)
    inner_lock(owner);
  else
    inner_lock_quietly(owner);
}

void TMultiLock::append(_owner_id entry) {
  leaving_inner_lock_on_throw([&] { insert_me(entry); });
}

// An unlocked lock has an empty list, so the first entry never needs room
// and the state found by the exchange can be kept without a way back.
bool TMultiLock::read_lock_as(unsigned int timeout, _owner_id owner, _ml_common::_hold_t hold,
                              _ml_lock_hooks* hooks) {
  _wait_budget budget = fresh_budget();
  for (bool first = true;; first = false) {
    enter_attempt(owner, first);
    unsigned int found = kNotLocked;
    state.compare_exchange_strong(found, kLockedRead);
    if (found == kNotLocked) {
      insert_me_read(owner);
      if (hooks != nullptr)
        first_read_notified(*hooks, owner);
      else
        unsignal(kFree);
      return true;
    }
    if (found == kLockedRead) {
      append(owner & ~_ml_common::write_bit);
      unsignal(kSoleOwner);
      return true;
    }
    // Written: only the writer itself reads on at once. A thread-independent
    // reader is nobody's writer and always waits.
    const _ml_common::_shares_t shares =
        hold == _ml_common::_hold_t::thread_independent ? _ml_common::shares_none : count_my_shares(owner);
    if (shares == _ml_common::shares_all) {
      append(owner & ~_ml_common::write_bit);
      inner_unlock();
      return true;
    }
    const unsigned int mask = shares == _ml_common::shares_none ? kReadOpen | kFree : kReadOpen | kSoleOwner | kFree;
    // A writer is inside, so the lock is not open to readers, yet the bit
    // may still be up from the last time a writer left readers behind (only
    // an upgrade lowers it otherwise). Left up, it would end this wait at
    // once, every time, and the reader would spin past its time-out.
    lower_bits(kReadOpen);
    if (!wait_for(mask, owner, timeout, budget)) return false;
  }
}

// The hook runs with the state showing a writer, so every thread that comes
// meanwhile waits; the readers among them are let in together afterwards.
void TMultiLock::first_read_notified(_ml_lock_hooks& hooks, _owner_id owner) {
  state.store(kLockedWrite);
  unsignal(kReadOpen | kFree);
  hooks.first_read();
  inner_lock_quietly(owner);
  state.store(kLockedRead);
  signal(kReadOpen);
}

// The state holds only the three values, so past "not locked" the lock is
// read or written.
bool TMultiLock::write_lock_as(unsigned int timeout, _owner_id owner, _ml_lock_hooks* hooks) {
  _wait_budget budget = fresh_budget();
  for (bool first = true;; first = false) {
    enter_attempt(owner, first);
    unsigned int found = kNotLocked;
    state.compare_exchange_strong(found, kLockedWrite);
    if (found == kNotLocked) {
      insert_me_write(owner);
      unsignal(kFree);
      if (hooks != nullptr) hooks->first_write();
      return true;
    }
    const _ml_common::_shares_t shares = count_my_shares(owner);
    if (found == kLockedRead && shares == _ml_common::shares_all) {
      // Upgrade: every reader is the caller. The entry goes in first so
      // that a list that cannot grow leaves the state as it was.
      append(owner | _ml_common::write_bit);
      state.store(kLockedWrite);
      unsignal(kReadOpen);
      if (hooks != nullptr) hooks->write_after_read();
      return true;
    }
    if (found == kLockedRead && shares == _ml_common::shares_some) {
      if (!wait_to_upgrade(owner, timeout, budget)) return false;
      continue;
    }
    if (found == kLockedWrite && shares == _ml_common::shares_all) {
      append(owner | _ml_common::write_bit);
      inner_unlock();
      return true;
    }
    // A stranger waits for the lock to be free; a writer's own reader that
    // shares it with others waits to be its sole owner again.
    const unsigned int mask = shares == _ml_common::shares_none ? kFree : kSoleOwner | kFree;
    if (!wait_for(mask, owner, timeout, budget)) return false;
  }
}

// Two readers waiting to upgrade would each wait for the other to leave:
// only one may wait, the second is told at once.
bool TMultiLock::wait_to_upgrade(_owner_id owner, unsigned int timeout, _wait_budget& budget) {
  if (upgrade_waiters.fetch_add(1) + 1 > 1) {
    upgrade_waiters.fetch_sub(1);
    // The status is taken before the inner lock is left: afterwards the
    // waiting upgrader may already be gone from it.
    const std::string status = leaving_inner_lock_on_throw([this] { return status_text(); });
    inner_unlock();
    ThrowStatusError(status.c_str(), "Dead-lock in multilock");
  }
  bool entered = false;
  try {
    entered = wait_for(kSoleOwner | kFree, owner, timeout, budget);
  } catch (...) {
    drop_upgrade_waiter(owner);  // interrupted while waiting
    throw;
  }
  drop_upgrade_waiter(owner);
  return entered;
}

// The count drops under the inner lock, so that a dead-lock status, taken
// under it, always shows the waiter whose presence raised the error; and
// quietly, so that no procedure call can leave the count raised.
void TMultiLock::drop_upgrade_waiter(_owner_id owner) noexcept {
  inner_lock_quietly(owner);
  upgrade_waiters.fetch_sub(1);
  inner_unlock();
}

bool TMultiLock::write_lock_independent_as(unsigned int timeout, _owner_id owner, _ml_lock_hooks* hooks) {
  _wait_budget budget = fresh_budget();
  for (bool first = true;; first = false) {
    enter_attempt(owner, first);
    unsigned int found = kNotLocked;
    state.compare_exchange_strong(found, kLockedWrite);
    if (found == kNotLocked) {
      insert_me_write(owner);
      unsignal(kFree);
      if (hooks != nullptr) hooks->first_write();
      return true;
    }
    if (!wait_for(kFree, owner, timeout, budget)) return false;
  }
}

// Releases the owner's most recent hold. The sole-owner bit goes up whenever
// the holders left are one owner, which is what a waiting upgrader (or a
// reader waiting beside its own holds) has to look at again.
void TMultiLock::_unlock(_owner_id owner) {
  inner_lock_quietly(owner);
  const _owner_id removed = remove_me(owner);
  if (removed == _ml_common::no_owner) {
    inner_unlock();
    return;
  }
  if (!is_empty()) {
    unsigned int bits = is_all_same() ? kSoleOwner : 0;
    if (_ml_common::is_write(removed) && state.load() == kLockedWrite && is_all_read()) {
      state.store(kLockedRead);
      bits |= kReadOpen;
    }
    signal(bits);
    return;
  }
  const unsigned int was = state.exchange(kNotLocked);
  signal(was == kLockedRead || was == kLockedWrite ? kFree : 0);
}
