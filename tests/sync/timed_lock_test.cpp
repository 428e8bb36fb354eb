#include <qz/sync/critical_section.h>
#include <qz/sync/timed_lock.h>
#include <qz/time/pcounter.h>

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
  void Check() const {
    if (fail) throw std::runtime_error("refused");
  }
  bool Timed() const {
    Check();
    return grant;
  }
};

TEST(TTimedLock, HeldFromConstructionIsNearlyAlwaysBusy) {
  TCriticalSection section;
  TTimedLock lock(section);
  lock.Lock();
  Sleep(200);
  EXPECT_TRUE(lock.IsLocked());
  EXPECT_GT(lock.get_busy(), 0.5);
  EXPECT_LE(lock.get_busy(), 1.0);
  lock.Unlock();
}

TEST(TTimedLock, BusyShareFallsWhileTheLockIsFree) {
  TCriticalSection section;
  TTimedLock lock(section);
  lock.Lock();
  Sleep(50);
  lock.Unlock();
  const double right_after = lock.get_busy();
  Sleep(50);
  const double later = lock.get_busy();
  EXPECT_GT(later, 0.0);
  EXPECT_LT(later, right_after);
  const __int64 ticks = lock.get_elapsed_ticks();  // covers both states
  EXPECT_GE(ticks / _pcounter_t::frequency, 0.09);
  EXPECT_GE(lock.get_elapsed(), ticks / _pcounter_t::frequency);
  EXPECT_LT(lock.get_elapsed(), 30.0);
}

TEST(TTimedLock, NestedAndSharedHoldsKeepItBusyUntilTheLast) {
  RecordingLock target;
  TTimedLock lock(target);
  lock.Lock();
  lock.Lock();
  lock.Unlock();
  EXPECT_TRUE(lock.IsLocked());
  lock.Unlock();
  EXPECT_FALSE(lock.IsLocked());

  lock.ReadLock();
  lock.ReadLockThreadIndependent();
  lock.UnlockThreadIndependent();
  EXPECT_TRUE(lock.IsLocked());
  lock.Unlock();
  EXPECT_FALSE(lock.IsLocked());
}

TEST(TTimedLock, RefusedOrFailingLockCountsNothing) {
  RecordingLock target;
  TTimedLock lock(target);
  target.grant = false;
  EXPECT_FALSE(lock.WriteLock(0));
  EXPECT_FALSE(lock.Lock(0));
  EXPECT_FALSE(lock.WriteLockThreadIndependent(0));
  EXPECT_FALSE(lock.IsLocked());
  Sleep(10);
  EXPECT_EQ(lock.get_busy(), 0.0);

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

TEST(TTimedLock, CopyKeepsTheMeasurements) {
  TCriticalSection section;
  TTimedLock lock(section);
  lock.Lock();
  TTimedLock copy(lock);
  EXPECT_TRUE(copy.IsLocked());
  copy.Unlock();  // releases the shared target; the original still counts
  EXPECT_FALSE(copy.IsLocked());
  EXPECT_TRUE(lock.IsLocked());
  TTimedLock assigned(section);
  assigned = copy;
  EXPECT_FALSE(assigned.IsLocked());
}

}  // namespace
