#include <qz/errors/generic.h>
#include <qz/sync/critical_section.h>
#include <qz/sync/multi_lock.h>
#include <qz/sync/timed_lock.h>
#include <qz/time/pcounter.h>

#include "sync/multi_lock_test_support.h"

#include <gtest/gtest.h>

namespace {

// Held from construction it is nearly always busy; once free, the busy share
// falls, and the elapsed time covers both states.
TEST(TTimedLock, BusyShareFollowsTheHoldsAndElapsedCoversBothStates) {
  TCriticalSection section;
  TTimedLock lock(section);
  lock.Lock();
  Sleep(100);
  EXPECT_TRUE(lock.IsLocked());
  EXPECT_GT(lock.get_busy(), 0.5);
  EXPECT_LE(lock.get_busy(), 1.0);
  lock.Unlock();
  const double right_after = lock.get_busy();
  Sleep(50);
  const double later = lock.get_busy();
  EXPECT_GT(later, 0.0);
  EXPECT_LT(later, right_after);
  const __int64 ticks = lock.get_elapsed_ticks();
  EXPECT_GE(ticks / _pcounter_t::frequency, 0.14);
  EXPECT_GE(lock.get_elapsed(), ticks / _pcounter_t::frequency);
  EXPECT_LT(lock.get_elapsed(), 30.0);
}

// Nested and shared holds keep it busy until the last; a refused or failing
// lock call counts nothing, so no hold outlives the real ones.
TEST(TTimedLock, NestedAndSharedHoldsKeepItBusyUntilTheLastAndRefusalsCountNothing) {
  using namespace multi_lock_test;
  ProbedLock target;
  TTimedLock lock(target);
  lock.ReadLock();
  lock.ReadLockThreadIndependent();
  lock.UnlockThreadIndependent();
  EXPECT_TRUE(lock.IsLocked());
  lock.Unlock();
  EXPECT_FALSE(lock.IsLocked());

  lock.WriteLock();
  EXPECT_FALSE(lock.WriteLockThreadIndependent(0));  // refused beside the writer
  lock.Unlock();
  EXPECT_FALSE(lock.IsLocked());

  Actor other;
  ReleaseOnExit cleanup(target);
  ASSERT_TRUE(other.Run([&] { target.ReadLock(); }));
  lock.ReadLock();
  other.Start([&] { target.WriteLock(); });  // waits for this thread's read
  ASSERT_TRUE(Eventually([&] { return target.waiting_upgraders() == 1; }));
  EXPECT_THROW(lock.WriteLock(), EGeneric);  // the dead-lock error
  lock.Unlock();
  EXPECT_FALSE(lock.IsLocked());
  ASSERT_TRUE(other.Finished());
  ASSERT_TRUE(other.Run([&] { Do(target, "uu"); }));
}

// Over a real multi-lock, reads from several threads all count as the lock
// being busy. Copies share the target and keep the measurements.
TEST(TTimedLock, ReadersKeepItBusyUntilTheLastLeavesAndCopiesKeepTheMeasurements) {
  using namespace multi_lock_test;
  TMultiLock target;
  TTimedLock lock(target);
  Actor other;
  lock.ReadLock();
  ASSERT_TRUE(other.Run([&] { EXPECT_TRUE(lock.ReadLock(0)); }));
  EXPECT_EQ(target.GetStatusString(), "locked_read, " + Read(Me()) + "," + Read(other.id()));
  lock.Unlock();
  EXPECT_TRUE(lock.IsLocked());
  ASSERT_TRUE(other.Run([&] { lock.Unlock(); }));
  EXPECT_FALSE(lock.IsLocked());
  EXPECT_EQ(target.GetStatusString(), "not_locked");
  EXPECT_GT(lock.get_busy(), 0.0);

  lock.Lock();
  TTimedLock copy(lock);
  EXPECT_TRUE(copy.IsLocked());
  copy.Unlock();  // releases the shared target; the original still counts
  EXPECT_FALSE(copy.IsLocked());
  EXPECT_TRUE(lock.IsLocked());
  EXPECT_EQ(target.GetStatusString(), "not_locked");
}

}  // namespace
