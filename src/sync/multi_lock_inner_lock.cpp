#include <qz/sync/internal/multi_lock_inner_lock.h>

#include <windows.h>

namespace {

// Pause instructions spun before the first sleep. The inner lock is held
// for a handful of instructions plus, rarely, an event call; a pause costs
// about 20 ns (`scripts/bench multi`), so this waits out a holder that is
// running without burning a time slice on one that was preempted.
constexpr int kSpinsBeforeSleep = 128;

}  // namespace

// Spins first, reading the word before trying the exchange so that spinning
// threads do not keep stealing the cache line from the holder; then backs
// off by sleeping, longer after each failed attempt.
void _ml_interlocked_inner_lock::inner_lock_contended(_ml_common::_owner_id owner,
                                                      _backoff backoff) const {
  for (int spin = 0; spin < kSpinsBeforeSleep; ++spin) {
    YieldProcessor();
    if (inner.load(std::memory_order_relaxed) == _ml_common::no_owner && try_inner_lock(owner)) return;
  }
  for (DWORD pause = 0;; ++pause) {
    SleepEx(pause, backoff == _backoff::alertable ? TRUE : FALSE);
    if (try_inner_lock(owner)) return;
  }
}
