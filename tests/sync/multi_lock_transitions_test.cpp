// The states of TMultiLock and the holds that move it between them, seen
// through the status text.
#include <qz/sync/multi_lock.h>

#include "sync/multi_lock_test_support.h"

#include <gtest/gtest.h>

namespace {

using namespace multi_lock_test;

TEST(TMultiLock, FirstHoldSetsTheStateAndItsReleaseFreesIt) {
  TMultiLock lock;
  lock.ReadLock();
  EXPECT_EQ(lock.GetStatusString(), "locked_read, " + Read(Me()));
  lock.Unlock();
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
  EXPECT_TRUE(lock.WriteLock(0));
  lock.Lock();  // Lock is a write lock
  EXPECT_TRUE(lock.Lock(0));
  EXPECT_EQ(lock.GetStatusString(), "locked_write, " + Write(Me()) + "," + Write(Me()) + "," + Write(Me()));
  for (int i = 0; i < 3; ++i) lock.Unlock();
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
}

TEST(TMultiLock, WriterTakesReadsAndWritesAgainAndReleasesEachMostRecentFirst) {
  TMultiLock lock;
  lock.WriteLock();
  lock.ReadLock();
  EXPECT_TRUE(lock.WriteLock(0));
  EXPECT_TRUE(lock.ReadLock(0));
  const std::string w = Write(Me()), r = Read(Me());
  EXPECT_EQ(lock.GetStatusString(), "locked_write, " + w + "," + r + "," + w + "," + r);
  lock.Unlock();
  EXPECT_EQ(lock.GetStatusString(), "locked_write, " + w + "," + r + "," + w);
  lock.Unlock();
  lock.Unlock();
  EXPECT_EQ(lock.GetStatusString(), "locked_write, " + w);
  lock.Unlock();
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
}

TEST(TMultiLock, OnlyReaderUpgradesAtOnceAndReleasingTheWriteLeavesItRead) {
  TMultiLock lock;
  lock.ReadLock();
  lock.ReadLock();
  EXPECT_TRUE(lock.WriteLock(0));
  const std::string r = Read(Me());
  EXPECT_EQ(lock.GetStatusString(), "locked_write, " + r + "," + r + "," + Write(Me()));
  lock.ReadLock();  // inside the write
  lock.Unlock();
  lock.Unlock();  // the write: only reads remain
  EXPECT_EQ(lock.GetStatusString(), "locked_read, " + r + "," + r);
  lock.Unlock();
  lock.Unlock();
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
}

TEST(TMultiLock, UnlockReleasesOnlyTheCallersOwnHold) {
  TMultiLock lock;
  lock.Unlock();
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
  Actor other;
  ASSERT_TRUE(other.Run([&] { lock.ReadLock(); }));
  lock.Unlock();  // holds nothing: changes nothing
  lock.UnlockThreadIndependent();
  EXPECT_EQ(lock.GetStatusString(), "locked_read, " + Read(other.id()));
  lock.ReadLock();
  ASSERT_TRUE(other.Run([&] { lock.ReadLock(); }));
  lock.Unlock();  // its own hold, wherever it stands
  EXPECT_EQ(lock.GetStatusString(), "locked_read, " + Read(other.id()) + "," + Read(other.id()));
  ASSERT_TRUE(other.Run([&] {
    lock.Unlock();
    lock.Unlock();
  }));
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
}

TEST(TMultiLock, ThirdHoldMovesTheOwnersToTheHeapAndEachFurtherOneGrowsItByOne) {
  ProbedLock lock;
  lock.ReadLock();
  lock.ReadLock();
  EXPECT_TRUE(lock.is_inline());
  EXPECT_EQ(lock.room(), 2);
  lock.ReadLock();
  EXPECT_FALSE(lock.is_inline());
  EXPECT_EQ(lock.room(), 3);
  lock.WriteLock();
  EXPECT_EQ(lock.room(), 4);
  const std::string r = Read(Me());
  EXPECT_EQ(lock.GetStatusString(), "locked_write, " + r + "," + r + "," + r + "," + Write(Me()));
  for (int i = 0; i < 4; ++i) lock.Unlock();
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
  EXPECT_EQ(lock.room(), 4);  // never shrinks
}

TEST(TMultiLock, TimedLocksRefusedAtOnceAndUseWithoutAnyWaitMakeNoEvent) {
  ProbedLock lock;
  EXPECT_EQ(lock.signalled(), 2u);  // free
  lock.ReadLock();
  lock.ReadLock();
  lock.WriteLock();
  lock.Unlock();
  lock.Unlock();
  lock.Unlock();
  Actor other;
  ASSERT_TRUE(other.Run([&] { lock.WriteLock(); }));
  EXPECT_FALSE(lock.ReadLock(0));  // refused without waiting
  EXPECT_FALSE(lock.WriteLock(0));
  EXPECT_FALSE(lock.Lock(0));
  EXPECT_EQ(lock.GetStatusString(), "locked_write, " + Write(other.id()));
  ASSERT_TRUE(other.Run([&] { lock.Unlock(); }));
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
  EXPECT_FALSE(lock.has_event(2));
  EXPECT_FALSE(lock.has_event(4));
  EXPECT_FALSE(lock.has_event(8));
}

}  // namespace
