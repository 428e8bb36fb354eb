// TMultiLock: the library's reader/writer lock (IMultiLockEx).
//
// Many readers or one writer. A thread may take the lock again while it
// holds it: reads inside reads, reads and writes inside its own write, and a
// write over reads when every read is its own (an upgrade). Every hold needs
// its own Unlock(), which releases the calling thread's most recent hold.
//
//   TMultiLock lock;
//   lock.ReadLock();             // shared
//   lock.WriteLock();            // the only reader: upgrades at once
//   lock.Unlock();               // the write
//   lock.Unlock();               // the read
//   lock.GetStatusString();      // "not_locked"
//
// Holds taken through the ...ThreadIndependent operations belong to no
// thread (owner 0): any thread may release them with UnlockThreadIndependent,
// and they know no recursion or upgrade. Unlock without a matching hold is
// ignored.
//
// Two readers that both want to upgrade would wait for each other for ever:
// the second one gets EGeneric with "Status" (GetStatusString) and "Text"
// "Dead-lock in multilock" and keeps its read hold. Writers get no priority:
// readers arriving while the lock is read keep entering. A release that
// frees the lock wakes one waiting thread; a writer that leaves its own
// reads behind lets all waiting readers in at once.
//
// Cost, and when the kernel is asked (figures from `scripts/bench multi`,
// under Wine on the build machine, against the slim reader/writer lock):
//   - An uncontended hold is one interlocked exchange for the inner lock,
//     one for the state and a store to release: a read+write cycle costs
//     what the slim lock's does (about 1.0x), before and after contention.
//   - Waits happen on kernel events made the first time somebody has to
//     wait. An event is set or reset only while some thread waits on it
//     (a waiter count per event, kept under the inner lock); the first
//     waiter brings it into line with the lock's state before it sleeps
//     (the free event excepted: it resets itself as it wakes a waiter, so a
//     stale signal costs one early wake-up). So a lock that once saw
//     contention makes no kernel call again once its waiters are gone, and
//     a hand-over to a sleeping thread costs two: its wait and the set.
//   - No kernel call is made inside the inner lock: the thread that changed
//     what an event should show makes the call after leaving it. Otherwise
//     threads queueing for the inner lock behind a call, which takes tens of
//     microseconds under Wine, fall into its millisecond back-off (in the
//     pool benchmark, thousands of such sleeps per run).
//   - Before sleeping on an event, a lock call waits in two cheaper ways,
//     trying again each time the lock may have changed:
//     1. It spins: up to 200 pause instructions in all (about 20 ns each),
//        giving up the processor every 50th step. A longer spin takes the
//        processor from the holder, or under Wine from the Wine server.
//     2. It waits on the signal mask's word (WaitOnAddress, from Windows 8
//        on): up to 20 such waits, each ended by the next release (a release
//        to free wakes one such waiter, other changes all) or after about a
//        millisecond (a timer tick on Windows) with nothing released, which
//        ends this step. It costs what the slim lock's own waiting costs;
//        sleeping on an event and being woken costs about 60 us under Wine
//        (kernel calls through the Wine server and a context switch).
//     A thread woken from an event gets both budgets again. A time-out of 0
//     never waits.
//   - The inner lock spins 128 pauses before it backs off by sleeping.
//   Two threads taking turns on one counter, and four threads reading nine
//   times to every write, run within 5x of the slim lock (often faster: a
//   spinning thread that finds the lock free keeps it, where the slim lock
//   hands it over). A plain thread pool whose queue lock is a TMultiLock
//   runs within 1.5x of the same pool on the slim lock (`scripts/bench
//   pool`).
// Every sleep on an event is alertable: a queued user procedure call runs
// and the wait goes on. The spin and the word waits before it are not: a
// call queued meanwhile runs once the thread sleeps on the events, after
// about a millisecond in which the lock did not change, or after 20
// releases, whichever comes first. An interruption that throws from the
// call (EThreadInterrupt) leaves the lock operation with nothing taken, and
// with nothing counted: a lock call that leaves by any way (result,
// time-out, exception) leaves the lock as if it had never waited. A time-out bounds each single wait: a
// thread woken that then loses the race to another waits up to the full
// time-out again.
//
// GetStatusString: the state ("not_locked", "locked_read", "locked_write"),
// then ", " and the holds as owner:R or owner:W in the order taken, then
// ", <n> r->w waiters" while upgrades are pending, e.g.
// "locked_write, 4711:W,4711:R, 1 r->w waiters".
//
// Thread safety: every operation may be called from any thread at any time.
// The lock must outlive every thread that uses it; it is not copied.
#pragma once

#include <qz/export.h>
#include <qz/sync/lock.h>
#include <qz/sync/internal/multi_lock_common.h>
#include <qz/sync/internal/multi_lock_inner_lock.h>
#include <qz/sync/internal/multi_lock_owners_list.h>
#include <qz/sync/internal/multi_lock_signal_event.h>

#include <atomic>
#include <string>

// What a notifying lock is told on the way in; TMultiLockWithNotify passes
// one to the shared lock workers, TMultiLock passes none.
class _ml_lock_hooks {
 public:
  virtual void first_read() = 0;
  virtual void first_write() = 0;
  virtual void write_after_read() = 0;

 protected:
  _ml_lock_hooks() = default;
  _ml_lock_hooks(const _ml_lock_hooks&) = default;
  _ml_lock_hooks& operator=(const _ml_lock_hooks&) = default;
  ~_ml_lock_hooks() = default;
};

class QZ_API TMultiLock : protected _ml_interlocked_inner_lock,
                          protected _ml_full_owners_list,
                          protected _ml_free_signal_event,
                          public virtual IMultiLockEx {
 public:
  TMultiLock() noexcept;
  // For callers that pass a construction argument (they pass 1): the value
  // selects nothing, every lock starts free with no events.
  explicit TMultiLock(int unused) noexcept;
  ~TMultiLock();

  // Lock is WriteLock.
  bool Lock(unsigned int timeout) override;
  void Lock() override;
  // Releases the calling thread's most recent hold, read or write.
  void Unlock() override;
  bool ReadLock(unsigned int timeout) override;
  void ReadLock() override;
  bool WriteLock(unsigned int timeout) override;
  void WriteLock() override;
  bool ReadLockThreadIndependent(unsigned int timeout) override;
  void ReadLockThreadIndependent() override;
  bool WriteLockThreadIndependent(unsigned int timeout) override;
  void WriteLockThreadIndependent() override;
  // Releases the most recent thread-independent hold.
  void UnlockThreadIndependent() override;

  std::string GetStatusString() const;

 protected:
  typedef _ml_common::_owner_id _owner_id;

  bool _read_lock(unsigned int timeout, _owner_id owner);
  bool _read_lock_independent(unsigned int timeout, _owner_id owner);
  bool _write_lock(unsigned int timeout, _owner_id owner);
  bool _write_lock_independent(unsigned int timeout, _owner_id owner);
  void _unlock(_owner_id owner);

  // The workers above, telling `hooks` (when given) of the holds that begin
  // a locked period, while the caller holds the lock alone.
  bool read_lock_as(unsigned int timeout, _owner_id owner, _ml_common::_hold_t hold, _ml_lock_hooks* hooks);
  bool write_lock_as(unsigned int timeout, _owner_id owner, _ml_lock_hooks* hooks);
  bool write_lock_independent_as(unsigned int timeout, _owner_id owner, _ml_lock_hooks* hooks);

  // Leaves the inner lock, then makes the event calls the bookkeeping
  // inside it asked for: no kernel call is made inside the inner lock.
  void leave_inner_lock() noexcept {
    inner_unlock();
    sync_events();
  }
  // Change the signal bits, then leave the inner lock.
  void signal(unsigned int mask) noexcept {
    raise_bits(mask);
    leave_inner_lock();
  }
  void unsignal(unsigned int mask) noexcept {
    lower_bits(mask);
    leave_inner_lock();
  }

  std::atomic<unsigned int> state;
  std::atomic<int> upgrade_waiters;

 private:
  TMultiLock(const TMultiLock&);
  TMultiLock& operator=(const TMultiLock&);

  // GetStatusString's text, taken while the caller is inside the inner lock.
  std::string status_text() const;
  // Runs `work` inside the inner lock the caller holds and gives back its
  // result; should `work` throw, the inner lock is left before the exception
  // goes on. The one place that pairs an exception with the inner lock.
  template <class Work>
  auto leaving_inner_lock_on_throw(Work work) const -> decltype(work()) {
    try {
      return work();
    } catch (...) {
      inner_unlock();
      throw;
    }
  }
  // Takes the inner lock for an attempt of a lock call; only the first
  // attempt runs procedure calls while it backs off.
  void enter_attempt(_owner_id owner, bool first);
  // Appends under the inner lock, leaving it if the list cannot grow.
  void append(_owner_id entry);
  // The first reader of a notifying lock: its hook runs with the lock
  // shown as written, so that nobody joins before it is done.
  void first_read_notified(_ml_lock_hooks& hooks, _owner_id owner);
  // A reader waiting for the other readers to leave so that it can write;
  // entered with the inner lock held, which it leaves. The second reader
  // to try this while the first still waits gets the dead-lock error.
  // What a lock call may spend before it sleeps on an event: pause
  // instructions, then short waits on the signal mask's word. A thread woken
  // from an event gets a fresh budget.
  struct _wait_budget {
    int spins;
    int word_waits;
  };
  static _wait_budget fresh_budget() noexcept;
  bool wait_to_upgrade(_owner_id owner, unsigned int timeout, _wait_budget& budget);
  void drop_upgrade_waiter(_owner_id owner) noexcept;
  // Entered with the inner lock held, which it leaves. While the budget
  // lasts, spins or waits on the word until a bit of `mask` other than
  // sole-owner may be up, and says true so that the caller tries again;
  // then sleeps until an event of `mask` fires (true) or the time-out
  // passes (false). A time-out of 0 never waits.
  bool wait_for(unsigned int mask, _owner_id owner, unsigned int timeout, _wait_budget& budget);
  void wait_on_word(unsigned int watched, _wait_budget& budget);
  bool sleep_on_events(unsigned int mask, _owner_id owner, unsigned int timeout, _wait_budget& budget);
  // Whether a wake-up by the sole-owner event is meant for `owner`.
  bool holds_all(_owner_id owner) const;
};
