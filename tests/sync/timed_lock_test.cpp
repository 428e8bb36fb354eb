#include <qz/sync/critical_section.h>
#include <qz/sync/multi_lock.h>
#include <qz/sync/timed_lock.h>
#include <qz/time/pcounter.h>

#include "sync/multi_lock_test_support.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

// A reader/writer lock that takes nothing; timed operations answer `grant`,
// and `fail` makes every operation throw.
class RecordingLock : public IMultiLockEx {
 public:
  bool Lock(unsigned int) override { return Timed(); }
  void Lock() override { Check(); }
  void Unlock() override { Check(); }
  bool ReadLock(unsigned int) override { return Timed(); }
  void ReadLock() override { Check(); }
  bool WriteLock(unsigned int) override { return Timed(); }
  void WriteLock() override { Check(); }
  bool ReadLockThreadIndependent(unsigned int) override { return Timed(); }
  void ReadLockThreadIndependent() override { Check(); }
  bool WriteLockThreadIndependent(unsigned int) override { return Timed(); }
  void WriteLockThreadIndependent() override { Check(); }
  void UnlockThreadIndependent() override { Check(); }

  bool grant = true;
  bool fail = false;

 private:
  void Check() const { fail ? throw std::runtime_error("refused") : void(); }
  bool Timed() const { return Check(), grant; }
};

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

TEST(TTimedLock, NestedAndSharedHoldsKeepItBusyUntilTheLastAndRefusalsCountNothing) {
  RecordingLock target;
  TTimedLock lock(target);
  lock.ReadLock();
  lock.ReadLockThreadIndependent();
  lock.UnlockThreadIndependent();
  EXPECT_TRUE(lock.IsLocked());
  lock.Unlock();
  EXPECT_FALSE(lock.IsLocked());

  // A refused or failing lock counts nothing.
  target.grant = false;
  EXPECT_FALSE(lock.Lock(0));
  EXPECT_FALSE(lock.WriteLockThreadIndependent(0));
  EXPECT_FALSE(lock.IsLocked());

  target.fail = true;
  EXPECT_THROW(lock.ReadLock(), std::runtime_error);
  EXPECT_FALSE(lock.IsLocked());
  target.fail = false;
  target.grant = true;

  // While held, a refused attempt does not add a hold that would outlive
  // the real one.
  lock.WriteLock();
  target.grant = false;
  EXPECT_FALSE(lock.WriteLock(0));
  lock.Unlock();
  EXPECT_FALSE(lock.IsLocked());
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
