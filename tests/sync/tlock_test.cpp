#include <qz/sync/tlock.h>

#include "support/error_code.h"

#include <gtest/gtest.h>

namespace {

// Counts the calls it gets; timed locks answer `grant`.
class CountingLock : public ILock {
 public:
  bool Lock(unsigned int timeout) override {
    last_timeout = timeout;
    if (grant) ++held;
    return grant;
  }
  void Lock() override { ++held; }
  void Unlock() override {
    ++unlocks;
    --held;
  }

  bool grant = true;
  int unlocks = 0, held = 0;
  unsigned int last_timeout = 0;
};

// The forms differ only in how the target is passed: one of each kind.
TEST(TLock, HoldsForTheBlock) {
  CountingLock lock;
  const CountingLock& constant = lock;
  {
    TLock by_reference(lock), by_const_pointer(&constant), timed(constant, 8u);
    EXPECT_EQ(lock.held, 3);
    EXPECT_EQ(lock.last_timeout, 8u);
  }
  EXPECT_EQ(lock.unlocks, 3);
  EXPECT_EQ(lock.held, 0);
}

TEST(TLock, TimedOutConstructionThrows258AndReleasesNothing) {
  CountingLock lock;
  lock.grant = false;
  EXPECT_EQ(qz_test::CodeThrownBy([&] { TLock hold(lock, 0u); }), 258);
  EXPECT_EQ(lock.unlocks, 0);
}

TEST(TLock, RelockingKeepsOrDropsTheLockAndUnlockReleasesOnce) {
  CountingLock lock;
  {
    TLock hold(lock);
    hold.Lock();
    EXPECT_TRUE(hold.Lock(3));
    EXPECT_EQ(lock.held, 3);
    lock.grant = false;
    EXPECT_FALSE(hold.Lock(3));  // the guard forgets the lock
  }
  EXPECT_EQ(lock.unlocks, 0);
  {
    TLock hold(lock);
    hold.Unlock();
    hold.Unlock();  // releases exactly once, the destructor not again
  }
  EXPECT_EQ(lock.unlocks, 1);
}

TEST(TLock, AssignmentSharesTheLockWithoutLocking) {
  CountingLock first, second;
  {
    TLock a(first), b(second);
    b = a;
    EXPECT_EQ(first.held, 1);
  }
  EXPECT_EQ(first.unlocks, 2);
  EXPECT_EQ(second.unlocks, 0);
}

}  // namespace
