#include <qz/errors/throw.h>
#include <qz/sync/multi_lock.h>
#include <qz/sync/waitable_timer.h>

#include <windows.h>

namespace {

// The tag of the per-wait timer among the signal bits.
constexpr unsigned int kTimerTag = 1;

constexpr unsigned int kBitsInWaitOrder[] = {_ml_common::signal_sole_owner, _ml_common::signal_read_open,
                                             _ml_common::signal_free};

}  // namespace

bool TMultiLock::holds_all(_owner_id owner) const {
  inner_lock(owner);
  const bool all = is_all_me(owner);
  inner_unlock();
  return all;
}

// The events are made (if need be) under the inner lock, so each starts in
// the state its bit has. The timer is made after the inner lock is left: it
// needs nothing the lock guards, and two kernel calls are long to make other
// threads spin for. A new attempt makes a new timer, so the time-out bounds
// each single wait. Procedure calls queued to the thread run during the wait
// and it goes on; one that throws leaves by the exception, closing the timer.
bool TMultiLock::wait_for(unsigned int mask, _owner_id owner, unsigned int timeout) {
  if (timeout == 0) {
    inner_unlock();
    return false;
  }
  HANDLE objects[4];
  unsigned int tags[4];
  DWORD count = 0;
  for (unsigned int bit : kBitsInWaitOrder) {
    if ((mask & bit) == 0) continue;
    objects[count] = event_for(bit);
    tags[count++] = bit;
  }
  inner_unlock();

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
    return true;
  }
}
