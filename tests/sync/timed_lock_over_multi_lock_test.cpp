// TTimedLock over a real TMultiLock: reads from several threads and an
// independent hold released elsewhere all count as the lock being busy.
#include <qz/sync/multi_lock.h>
#include <qz/sync/timed_lock.h>

#include "sync/multi_lock_test_support.h"

#include <gtest/gtest.h>

namespace {

using namespace multi_lock_test;

TEST(TTimedLockOverMultiLock, BusyUntilTheLastReaderOrTheIndependentHoldGoes) {
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

  lock.WriteLockThreadIndependent();
  Sleep(20);
  EXPECT_TRUE(lock.IsLocked());
  ASSERT_TRUE(other.Run([&] { lock.UnlockThreadIndependent(); }));
  EXPECT_FALSE(lock.IsLocked());
  EXPECT_EQ(target.GetStatusString(), "not_locked");
  EXPECT_GT(lock.get_busy(), 0.0);
  EXPECT_LT(lock.get_busy(), 1.0);
}

}  // namespace
