#include <qz/sync/tlock.h>

#include "support/error_code.h"

#include <gtest/gtest.h>

namespace {

using qz_test::CodeOf;

// Counts the calls it gets; timed locks answer `grant`.
class CountingLock : public ILock {
 public:
  bool Lock(unsigned int timeout) override {
    ++timed;
    last_timeout = timeout;
    if (grant) ++held;
    return grant;
  }
  void Lock() override {
    ++untimed;
    ++held;
  }
  void Unlock() override {
    ++unlocks;
    --held;
  }

  bool grant = true;
  int timed = 0, untimed = 0, unlocks = 0, held = 0;
  unsigned int last_timeout = 0;
};

TEST(TLock, HoldsForTheBlockThroughEveryForm) {
  CountingLock lock;
  const CountingLock& constant = lock;
  {
    TLock by_reference(lock);
    TLock by_const_reference(constant);
    TLock by_pointer(&lock);
    TLock by_const_pointer(&constant);
    EXPECT_EQ(lock.untimed, 4);
    EXPECT_EQ(lock.unlocks, 0);
  }
  EXPECT_EQ(lock.unlocks, 4);
  {
    TLock a(lock, 5u), b(constant, 6u), c(&lock, 7u), d(&constant, 8u);
    EXPECT_EQ(lock.timed, 4);
    EXPECT_EQ(lock.last_timeout, 8u);
  }
  EXPECT_EQ(lock.held, 0);
}

TEST(TLock, TimedOutConstructionThrows258AndReleasesNothing) {
  CountingLock lock;
  lock.grant = false;
  try {
    TLock hold(lock, 0u);
    FAIL() << "the guard was made without the lock";
  } catch (const ESystemException& e) {
    EXPECT_EQ(CodeOf(e), 258);
  }
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
  EXPECT_EQ(lock.held, 3);
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
    TLock a(first);
    TLock b(second);
    b = a;
    EXPECT_EQ(first.untimed, 1);
  }
  EXPECT_EQ(first.unlocks, 2);
  EXPECT_EQ(second.unlocks, 0);
}

}  // namespace
