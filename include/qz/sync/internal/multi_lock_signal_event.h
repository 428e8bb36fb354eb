// _ml_free_signal_event: the kernel events TMultiLock's waiters sleep on,
// and the signal mask that says which of them are set.
//
//   bit 2  free event         auto-reset: one waiter per release to free
//   bit 4  sole-owner event   manual-reset: the holders are one owner
//   bit 8  read-open event    manual-reset: a writer left, readers remain
//
// An event is made only when a thread first has to wait for its bit. The
// mask is the truth; an event follows its bit only while some thread waits,
// or is about to wait, on it (a count per event): raise_bits and lower_bits
// mark an event stale only then, and so does the first waiter on an event
// (arm). So a lock that once saw contention makes no kernel call again once
// its waiters are gone.
//
// No kernel call is made under the inner lock: a set or reset is a round
// trip to the kernel (tens of microseconds under Wine), and threads queueing
// for the inner lock back off by sleeping whole milliseconds. Instead the
// thread that marked an event stale calls sync_events after leaving the
// inner lock. One thread at a time does the calls, reading the mask as it
// is then; a thread that finds another at it leaves its stale bits to that
// one, which looks again before it stops. So the last call on an event
// follows the last change of its bit, and an event ends up as its bit says.
// On the way a waiter may be woken by a state already gone again; every
// waiter tries its lock call again after a wake-up, so that costs a retry.
//
// Before a thread sleeps on an event it may wait a little on the mask's word
// itself (begin_word_wait): a wait that costs no call to the Wine server and
// wakes at any raised bit. Raising a bit while such waiters are counted
// wakes them all, again outside the inner lock (by sync_events).
//
// Thread safety: TMultiLock calls everything but sync_events and the hints
// under its inner lock; sync_events from any thread, outside it. The
// destructor closes whichever events exist.
#pragma once
// Internal: a part of TMultiLock, reached through <qz/sync/multi_lock.h>.

#include <qz/export.h>
#include <qz/sync/internal/multi_lock_common.h>

#include <windows.h>

#include <atomic>

class QZ_API _ml_free_signal_event {
 public:
  _ml_free_signal_event() noexcept
      : read_open_event(nullptr), sole_owner_event(nullptr), free_event(nullptr),
        signal_mask(_ml_common::signal_free), peek_mask(_ml_common::signal_free), waiter_count(),
        stale_bits(0), syncing(false), word_waiters(0) {}
  _ml_free_signal_event(const _ml_free_signal_event&) = delete;
  _ml_free_signal_event& operator=(const _ml_free_signal_event&) = delete;
  ~_ml_free_signal_event();

  // Adds the bits of `mask` not yet set and sets their existing events
  // (sole-owner, read-open, free, in that order).
  void raise_bits(unsigned int mask) noexcept {
    if ((mask & ~signal_mask) != 0) raise_changed(mask & ~signal_mask);
  }
  // Removes the bits of `mask` that are set and resets their existing events.
  void lower_bits(unsigned int mask) noexcept {
    if ((mask & signal_mask) != 0) lower_changed(mask & signal_mask);
  }

  // The event standing for `bit`, made now if it does not exist yet.
  HANDLE event_for(unsigned int bit) noexcept;
  // The calling thread is about to wait on the events of `bits`: counts it
  // as their waiter and marks stale each event that had no waiter yet, to be
  // brought into line before the thread sleeps. disarm takes the thread off
  // the counts again.
  void arm(unsigned int bits) noexcept;
  void disarm(unsigned int bits) noexcept;
  // How many threads wait, or are about to wait, on the event of `bit`.
  unsigned int waiters(unsigned int bit) const noexcept { return waiter_count[index(bit)]; }
  // The mask as last seen without the inner lock; a hint for spinning.
  unsigned int signalled_hint() const noexcept { return peek_mask.load(std::memory_order_relaxed); }

  // Counts the calling thread as a waiter on the mask's word and gives the
  // mask it is to wait past; end_word_wait, outside the inner lock, takes
  // it off the count again.
  unsigned int begin_word_wait() noexcept {
    word_waiters.fetch_add(1, std::memory_order_relaxed);
    return signal_mask;
  }
  // Waits up to `ms` while the mask is still `seen`; false when the time
  // passed without a change.
  bool wait_word_change(unsigned int seen, unsigned long ms) const noexcept;
  void end_word_wait() noexcept { word_waiters.fetch_sub(1, std::memory_order_relaxed); }

  // Sets or resets every stale event to what its bit says now, and wakes the
  // word's waiters after a raise. Called outside the inner lock by each
  // thread that marked an event stale or raised a bit.
  void sync_events() noexcept {
    if (stale_bits.load() != 0) sync_stale_events();
  }

  unsigned int signalled() const noexcept { return signal_mask; }
  // Whether the event for `bit` has been made.
  bool has_event(unsigned int bit) const noexcept { return slot(bit).load() != nullptr; }

 private:
  void raise_changed(unsigned int bits) noexcept;
  void lower_changed(unsigned int bits) noexcept;
  void mark_stale(unsigned int bits) noexcept;
  void sync_stale_events() noexcept;
  std::atomic<HANDLE>& slot(unsigned int bit) noexcept;
  const std::atomic<HANDLE>& slot(unsigned int bit) const noexcept;
  // 0, 1 and 2 for the free, sole-owner and read-open bits.
  static unsigned int index(unsigned int bit) noexcept { return bit / 4; }
  void store_mask(unsigned int mask) noexcept {
    signal_mask = mask;
    peek_mask.store(mask, std::memory_order_relaxed);
  }

  std::atomic<HANDLE> read_open_event;
  std::atomic<HANDLE> sole_owner_event;
  std::atomic<HANDLE> free_event;
  unsigned int signal_mask;
  std::atomic<unsigned int> peek_mask;
  unsigned int waiter_count[3];
  // Bits whose events are to be brought into line (and whether the word's
  // waiters are to be woken: one for a lock gone free, all for the other
  // bits), and whether a thread is doing that now.
  std::atomic<unsigned int> stale_bits;
  std::atomic<bool> syncing;
  // Threads waiting on the mask's word; counted up under the inner lock.
  std::atomic<unsigned int> word_waiters;
  static constexpr unsigned int wake_one_on_word = 1;
  static constexpr unsigned int wake_all_on_word = 16;
};
