// _ml_free_signal_event: the kernel events TMultiLock's waiters sleep on,
// and the signal mask that says which of them are set.
//
//   bit 2  free event         auto-reset: one waiter per release to free
//   bit 4  sole-owner event   manual-reset: the holders are one owner
//   bit 8  read-open event    manual-reset: a writer left, readers remain
//
// An event is made only when a thread first has to wait for its bit, in the
// state its bit has then. raise_bits and lower_bits touch only the bits that
// change and make no kernel call at all when none does, which is what keeps
// an uncontended lock away from the kernel.
//
// Thread safety: none of its own; TMultiLock uses it under its inner lock.
// The destructor closes whichever events exist.
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
        signal_mask(_ml_common::signal_free) {}
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

  unsigned int signalled() const noexcept { return signal_mask; }
  // Whether the event for `bit` has been made.
  bool has_event(unsigned int bit) const noexcept { return slot(bit).load() != nullptr; }

 private:
  void raise_changed(unsigned int bits) noexcept;
  void lower_changed(unsigned int bits) noexcept;
  std::atomic<HANDLE>& slot(unsigned int bit) noexcept;
  const std::atomic<HANDLE>& slot(unsigned int bit) const noexcept;

  std::atomic<HANDLE> read_open_event;
  std::atomic<HANDLE> sole_owner_event;
  std::atomic<HANDLE> free_event;
  unsigned int signal_mask;
};
