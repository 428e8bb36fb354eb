#include <qz/core/throw.h>
#include <qz/sync/multi_lock.h>
#include <qz/sync/waitable_timer.h>

#include <windows.h>

#include "sync/word_wait.h"

namespace {

// The tag of the per-wait timer among the signal bits.
constexpr unsigned int kTimerTag = 1;

constexpr int kPausesPerYield = 50;

constexpr unsigned int kBitsInWaitOrder[] = {_ml_common::signal_sole_owner, _ml_common::signal_read_open,
                                             _ml_common::signal_free};

// Pause instructions a lock call spins in all before it waits on the word:
// about 4 us plus four yields of the processor (`scripts/bench multi`
// weighs them). Enough for a hold of a few lines of work; a longer spin
// takes the processor from the holder, and under Wine from the Wine server
// that the holder may be waiting for.
constexpr int kSpinsBeforeWordWait = 200;
// Waits on the word a lock call makes before it sleeps on an event. Each
// ends at the next raised bit, or after kWordWaitMs with nothing raised;
// then the hold is a long one and the thread sleeps on the events at once.
// So a thread stays out of alertable waits for about a millisecond of an
// unchanged lock, or for as many hand-overs as this, whichever ends first.
constexpr int kWordWaitsBeforeSleep = 20;
constexpr DWORD kWordWaitMs = 1;

}  // namespace

TMultiLock::_wait_budget TMultiLock::fresh_budget() noexcept {
  return {kSpinsBeforeWordWait, kWordWaitsBeforeSleep};
}

bool TMultiLock::holds_all(_owner_id owner) const {
  inner_lock(owner);
  const bool all = is_all_me(owner);
  inner_unlock();
  return all;
}

namespace {

// Takes a waiting thread off the events' waiter counts on every way out of
// its wait, exceptions included; hence the quiet inner lock.
class waiter_registration {
 public:
  waiter_registration(const _ml_interlocked_inner_lock& inner, _ml_free_signal_event& events,
                      unsigned int bits, _ml_common::_owner_id owner)
      : inner_(inner), events_(events), bits_(bits), owner_(owner) {}
  waiter_registration(const waiter_registration&) = delete;
  waiter_registration& operator=(const waiter_registration&) = delete;
  ~waiter_registration() {
    inner_.inner_lock_quietly(owner_);
    events_.disarm(bits_);
    inner_.inner_unlock();
  }

 private:
  const _ml_interlocked_inner_lock& inner_;
  _ml_free_signal_event& events_;
  unsigned int bits_;
  _ml_common::_owner_id owner_;
};

// Spends the budget until one of `bits` shows in the mask; a hint read
// without the inner lock, which the caller's next attempt checks for real.
// Every so often the spinner offers its processor to a ready thread: with
// more threads than processors the holder may be the one waiting for it.
void spin_until(const _ml_free_signal_event& events, unsigned int bits, int& spins) {
  while (spins > 0) {
    --spins;
    if (spins % kPausesPerYield == 0)
      SwitchToThread();
    else
      YieldProcessor();
    if ((events.signalled_hint() & bits) != 0) return;
  }
}

}  // namespace

// The sole-owner bit may be up for somebody else, so spinning and the word
// wait watch only the other bits. Every path leaves the inner lock by
// leave_inner_lock: the read path may have lowered the read-open bit just
// before coming here. Whether the system can wait on a word is asked only
// here, off the uncontended path.
bool TMultiLock::wait_for(unsigned int mask, _owner_id owner, unsigned int timeout, _wait_budget& budget) {
  const unsigned int watched = mask & ~_ml_common::signal_sole_owner;
  if (timeout == 0) {
    leave_inner_lock();
    return false;
  }
  if (budget.spins > 0) {
    leave_inner_lock();
    spin_until(*this, watched, budget.spins);
    return true;
  }
  if (budget.word_waits > 0 && word_wait_available()) {
    wait_on_word(watched, budget);
    return true;
  }
  return sleep_on_events(mask, owner, timeout, budget);
}

// Counted as a word waiter before the inner lock is left, so that a raise
// after the attempt either shows in `seen` or wakes this thread.
void TMultiLock::wait_on_word(unsigned int watched, _wait_budget& budget) {
  --budget.word_waits;
  const unsigned int seen = begin_word_wait();
  leave_inner_lock();
  if ((seen & watched) == 0 && !wait_word_change(seen, kWordWaitMs)) budget.word_waits = 0;
  end_word_wait();
}

// Before sleeping the thread counts itself as a waiter on its events under
// the inner lock, and brings them into line with the mask once it has left
// it; releases touch an event only while it has waiters. The timer is made
// after the inner lock is left: two kernel calls are long to make other
// threads spin for. A new attempt makes a new timer, so the time-out bounds
// each single wait. Procedure calls queued to the thread run during the
// wait and it goes on; one that throws leaves by the exception.
bool TMultiLock::sleep_on_events(unsigned int mask, _owner_id owner, unsigned int timeout,
                                 _wait_budget& budget) {
  HANDLE objects[4];
  unsigned int tags[4];
  DWORD count = 0;
  for (unsigned int bit : kBitsInWaitOrder) {
    if ((mask & bit) == 0) continue;
    objects[count] = event_for(bit);
    tags[count++] = bit;
  }
  arm(mask);
  leave_inner_lock();
  const waiter_registration registration(*this, *this, mask, owner);

  TWaitableTimer timer(DoNotInitialize);
  if (timeout != INFINITE) {
    timer.CreateTimer(true);
    timer.SetTimer(timeout, 0);
    objects[count] = timer;
    tags[count++] = kTimerTag;
  }
  for (;;) {
    const DWORD result = WaitForMultipleObjectsEx(count, objects, FALSE, INFINITE, TRUE);
    if (result == WAIT_FAILED) ThrowSystemException();
    if (result >= WAIT_OBJECT_0 + count) continue;  // a procedure call ran
    const unsigned int tag = tags[result - WAIT_OBJECT_0];
    if (tag == kTimerTag) return false;
    // The sole-owner event is set for whoever the one remaining owner is.
    if (tag == _ml_common::signal_sole_owner && !holds_all(owner)) continue;
    budget = fresh_budget();  // woken: worth spinning again before the next sleep
    return true;
  }
}
