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
  void Unlock() override { ++unlocks, --held; }

  bool grant = true;
  int unlocks = 0, held = 0;
  unsigned int last_timeout = 0;
};

// The forms differ only in how the target is passed: one of each kind.
TEST(TLock, HoldsForTheBlockAndAssignmentSharesTheLockWithoutLocking) {
  CountingLock lock, other;
  const CountingLock& constant = lock;
  {
    TLock by_reference(lock), by_const_pointer(&constant), timed(constant, 8u), b(other);
    EXPECT_EQ(lock.held, 3);
    EXPECT_EQ(lock.last_timeout, 8u);
    b = by_reference;
  }
  EXPECT_EQ(lock.unlocks, 4);
  EXPECT_EQ(other.unlocks, 0);
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

}  // namespace
