#include <qz/sync/internal/multi_lock_inner_lock.h>

#include <windows.h>

// The bookkeeping under this lock is a handful of instructions plus, at
// most, a few event calls, so a thread that finds it taken first only gives
// up its time slice and backs off further the longer it keeps losing. The
// sleeps are alertable: a thread stuck here stays interruptible.
void _ml_interlocked_inner_lock::inner_lock_contended(_ml_common::_owner_id owner) const {
  for (DWORD pause = 0;; ++pause) {
    SleepEx(pause, TRUE);
    _ml_common::_owner_id expected = _ml_common::no_owner;
    if (inner.compare_exchange_strong(expected, owner, std::memory_order_acquire)) return;
  }
}
