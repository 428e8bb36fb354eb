// Holds that belong to no thread: taken on one thread, released on another.
#include <qz/sync/multi_lock.h>

#include "sync/multi_lock_test_support.h"

#include <gtest/gtest.h>

namespace {

using namespace multi_lock_test;

TEST(TMultiLockIndependent, HoldsAreReleasedByAnotherThreadAndAWriteKeepsEveryThreadOut) {
  TMultiLock lock;
  Actor other;
  ASSERT_TRUE(other.Run([&] { lock.ReadLockThreadIndependent(); }));
  EXPECT_EQ(lock.GetStatusString(), "locked_read, 0:R");
  lock.UnlockThreadIndependent();
  lock.WriteLockThreadIndependent();
  EXPECT_EQ(lock.GetStatusString(), "locked_write, 0:W");
  EXPECT_FALSE(lock.ReadLock(0));  // the taker is not its owner either
  EXPECT_FALSE(lock.WriteLockThreadIndependent(0));  // no recursion
  ASSERT_TRUE(other.Run([&] {
    lock.Unlock();  // holds nothing of its own
    EXPECT_EQ(lock.GetStatusString(), "locked_write, 0:W");
    lock.UnlockThreadIndependent();
  }));
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
}

// An independent read joins thread readers and, like any other reader, keeps
// them from upgrading; it does not join a writer, even on the writer's thread.
TEST(TMultiLockIndependent, ReadJoinsReadersAndHoldsBackTheirUpgradeButNotAWriter) {
  TMultiLock lock;
  Actor reader;
  ASSERT_TRUE(reader.Run([&] { lock.ReadLock(); }));
  EXPECT_TRUE(lock.ReadLockThreadIndependent(0));
  EXPECT_EQ(lock.GetStatusString(), "locked_read, " + Read(reader.id()) + ",0:R");
  ASSERT_TRUE(reader.Run([&] { EXPECT_FALSE(lock.WriteLock(0)); }));
  lock.UnlockThreadIndependent();
  ASSERT_TRUE(reader.Run([&] { EXPECT_TRUE(lock.WriteLock(0)); }));
  EXPECT_EQ(lock.GetStatusString(), "locked_write, " + Read(reader.id()) + "," + Write(reader.id()));
  ASSERT_TRUE(reader.Run([&] { Do(lock, "uu"); }));

  lock.WriteLock();
  EXPECT_FALSE(lock.ReadLockThreadIndependent(0));  // the writer's recursion is not shared
  lock.Unlock();
}

}  // namespace
