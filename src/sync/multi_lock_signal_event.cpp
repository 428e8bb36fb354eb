#include <qz/sync/internal/multi_lock_signal_event.h>

#include "sync/word_wait.h"

namespace {

// The order in which raised bits set their events.
constexpr unsigned int kBitsInOrder[] = {_ml_common::signal_sole_owner, _ml_common::signal_read_open,
                                         _ml_common::signal_free};

}  // namespace

_ml_free_signal_event::~_ml_free_signal_event() {
  for (unsigned int bit : kBitsInOrder) {
    const HANDLE event = slot(bit).load();
    if (event != nullptr) CloseHandle(event);
  }
}

std::atomic<HANDLE>& _ml_free_signal_event::slot(unsigned int bit) noexcept {
  if (bit == _ml_common::signal_free) return free_event;
  return bit == _ml_common::signal_sole_owner ? sole_owner_event : read_open_event;
}

const std::atomic<HANDLE>& _ml_free_signal_event::slot(unsigned int bit) const noexcept {
  if (bit == _ml_common::signal_free) return free_event;
  return bit == _ml_common::signal_sole_owner ? sole_owner_event : read_open_event;
}

// An event without waiters is left as it is: the first thread to wait on it
// brings it into line (arm).
void _ml_free_signal_event::raise_changed(unsigned int bits) noexcept {
  store_mask(signal_mask | bits);
  mark_stale(bits);
  if (word_waiters.load(std::memory_order_relaxed) == 0) return;
  stale_bits.fetch_or(bits == _ml_common::signal_free ? wake_one_on_word : wake_all_on_word);
}

void _ml_free_signal_event::lower_changed(unsigned int bits) noexcept {
  store_mask(signal_mask & ~bits);
  mark_stale(bits);
}

void _ml_free_signal_event::mark_stale(unsigned int bits) noexcept {
  unsigned int stale = 0;
  for (unsigned int bit : kBitsInOrder)
    if ((bits & bit) != 0 && waiter_count[index(bit)] != 0 && slot(bit).load() != nullptr) stale |= bit;
  if (stale != 0) stale_bits.fetch_or(stale);
}

// While an event has waiters every change of its bit reaches it, so only the
// first waiter finds it possibly out of date. The free event is the
// exception: a thread waits for it only while its bit is down, and the event
// resets itself as it wakes a waiter, so a stale signal costs one early
// wake-up and no call; resetting it first would cost every sleep a call.
void _ml_free_signal_event::arm(unsigned int bits) noexcept {
  unsigned int first = 0;
  for (unsigned int bit : kBitsInOrder)
    if ((bits & bit) != 0 && waiter_count[index(bit)]++ == 0) first |= bit;
  if ((signal_mask & _ml_common::signal_free) == 0) first &= ~_ml_common::signal_free;
  mark_stale(first);
}

void _ml_free_signal_event::disarm(unsigned int bits) noexcept {
  for (unsigned int bit : kBitsInOrder)
    if ((bits & bit) != 0 && waiter_count[index(bit)] != 0) --waiter_count[index(bit)];
}

// The stale bits are taken before the mask is read: a bit marked after that
// is either seen by the next round here or left to a thread of its own,
// which finds `syncing` down (the check after lowering it).
void _ml_free_signal_event::sync_stale_events() noexcept {
  while (!syncing.exchange(true)) {
    for (unsigned int stale; (stale = stale_bits.exchange(0)) != 0;) {
      const unsigned int mask = peek_mask.load();
      for (unsigned int bit : kBitsInOrder) {
        if ((stale & bit) == 0) continue;
        const HANDLE event = slot(bit).load();
        if ((mask & bit) != 0)
          SetEvent(event);
        else
          ResetEvent(event);
      }
      if ((stale & wake_all_on_word) != 0)
        wake_word_waiters(peek_mask);
      else if ((stale & wake_one_on_word) != 0)
        wake_one_word_waiter(peek_mask);
    }
    syncing.store(false);
    if (stale_bits.load() == 0) return;
  }
}

// Called under the inner lock, so the new event starts in the state its bit
// has. The exchange guards against a second maker all the same: the loser
// closes its own event. A failed creation is left for the wait to report.
HANDLE _ml_free_signal_event::event_for(unsigned int bit) noexcept {
  std::atomic<HANDLE>& event = slot(bit);
  HANDLE existing = event.load();
  if (existing != nullptr) return existing;
  const BOOL manual_reset = bit != _ml_common::signal_free;
  const BOOL signalled = (signal_mask & bit) != 0;
  const HANDLE made = CreateEventW(nullptr, manual_reset, signalled, nullptr);
  if (made == nullptr) return nullptr;
  if (event.compare_exchange_strong(existing, made)) return made;
  CloseHandle(made);
  return existing;
}

bool _ml_free_signal_event::wait_word_change(unsigned int seen, unsigned long ms) const noexcept {
  return wait_while_word_is(peek_mask, seen, ms);
}
