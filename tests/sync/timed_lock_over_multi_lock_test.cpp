// TTimedLock over a real TMultiLock: reads from several threads go through
// to the target and all count as the lock being busy. (How holds of every
// kind are counted is in timed_lock_test.cpp.)
#include <qz/sync/multi_lock.h>
#include <qz/sync/timed_lock.h>

#include "sync/multi_lock_test_support.h"

#include <gtest/gtest.h>

namespace {

using namespace multi_lock_test;

TEST(TTimedLockOverMultiLock, ReadersKeepItBusyUntilTheLastLeaves) {
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
}

}  // namespace
