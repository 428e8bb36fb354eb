// Two readers that both want to write would wait for each other for ever;
// the second one is told instead.
#include <qz/errors/exceptions.h>
#include <qz/errors/generic.h>
#include <qz/sync/multi_lock.h>

#include "sync/multi_lock_test_support.h"

#include <gtest/gtest.h>

namespace {

using namespace multi_lock_test;

// A timed upgrade that gives up no longer counts as waiting, so the same
// reader may wait to upgrade again instead of being told off.
TEST(TMultiLockDeadLock, SecondUpgraderGetsTheErrorAndGivenUpUpgradesNoLongerCount) {
  ProbedLock lock;
  Actor first;
  ReleaseOnExit cleanup(lock);
  ASSERT_TRUE(first.Run([&] { lock.ReadLock(); }));
  lock.ReadLock();
  EXPECT_FALSE(lock.WriteLock(0));  // an attempt without waiting counts no waiter
  bool upgraded = true;
  ASSERT_TRUE(first.Run([&] { upgraded = lock.WriteLock(30); }));
  EXPECT_FALSE(upgraded);
  EXPECT_EQ(lock.waiting_upgraders(), 0);
  EXPECT_EQ(lock.GetStatusString(), "locked_read, " + Read(first.id()) + "," + Read(Me()));

  first.Start([&] { lock.WriteLock(); });
  ASSERT_TRUE(Eventually([&] { return lock.waiting_upgraders() == 1 && lock.has_event(4); }));
  const std::string status = "locked_read, " + Read(first.id()) + "," + Read(Me()) + ", 1 r->w waiters";
  try {
    lock.WriteLock();
    FAIL() << "the second upgrade was let wait";
  } catch (const EGeneric& e) {
    EXPECT_EQ(std::string(e.get_value("Text")), "Dead-lock in multilock");
    EXPECT_EQ(std::string(e.get_value("Status")), status);
    EXPECT_EQ(e.values().front().first, "Status");
  }
  // The loser keeps its read. An interrupted upgrader keeps its read too and
  // no longer counts as waiting; the loser giving up its read lets a new
  // upgrade in.
  EXPECT_FALSE(first.Finished(50));
  EXPECT_EQ(lock.GetStatusString(), status);
  ASSERT_TRUE(QueueUserAPC(ThrowInterrupt, first.handle(), 0));
  ASSERT_TRUE(first.Finished());
  EXPECT_THROW(first.Rethrow(), EThreadInterrupt);
  EXPECT_EQ(lock.waiting_upgraders(), 0);
  EXPECT_EQ(lock.GetStatusString(), "locked_read, " + Read(first.id()) + "," + Read(Me()));
  first.Start([&] { lock.WriteLock(); });
  ASSERT_TRUE(Eventually([&] { return lock.waiting_upgraders() == 1; }));
  lock.Unlock();
  ASSERT_TRUE(first.Finished());
  first.Rethrow();
  EXPECT_EQ(lock.GetStatusString(), "locked_write, " + Read(first.id()) + "," + Write(first.id()));
  EXPECT_EQ(lock.waiting_upgraders(), 0);
  ASSERT_TRUE(first.Run([&] { Do(lock, "uu"); }));
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
}

}  // namespace
