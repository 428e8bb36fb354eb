// The states of TMultiLock and the holds that move it between them, seen
// through the status text.
#include <qz/sync/multi_lock.h>

#include "sync/multi_lock_test_support.h"

#include <gtest/gtest.h>

namespace {

using namespace multi_lock_test;

// One thread's holds, each row's steps (see Do) followed by the status they
// leave: nested holds of every kind, releases most recent first, an upgrade
// of the only reader, and independent holds released most recent first.
TEST(TMultiLock, HoldsOfOneThreadStackAndReleaseMostRecentFirst) {
  const std::pair<const char*, const char*> rows[] = {
      {"WlL", "locked_write, me:W,me:W,me:W"},  // Lock is a write lock
      {"uuu", "not_locked"},
      {"wrWR", "locked_write, me:W,me:R,me:W,me:R"},
      {"u", "locked_write, me:W,me:R,me:W"},
      {"uuu", "not_locked"},
      {"rrW", "locked_write, me:R,me:R,me:W"},  // the only reader upgrades at once
      {"ruu", "locked_read, me:R,me:R"},        // releasing the write leaves it read
      {"uu", "not_locked"},
      {"irix", "locked_read, 0:R,me:R"},
      {"xx", "locked_read, me:R"},  // no independent hold left: ignored
      {"uu", "not_locked"},         // holds nothing: ignored
  };
  TMultiLock lock;
  for (const auto& row : rows) {
    Do(lock, row.first);
    EXPECT_EQ(lock.GetStatusString(), Mine(row.second)) << "after " << row.first;
  }
}

TEST(TMultiLock, UnlockReleasesTheCallersOwnHoldWhereverItStands) {
  TMultiLock lock;
  Actor other;
  ASSERT_TRUE(other.Run([&] { lock.ReadLock(); }));
  lock.ReadLock();
  ASSERT_TRUE(other.Run([&] { lock.ReadLock(); }));
  lock.Unlock();
  EXPECT_EQ(lock.GetStatusString(), "locked_read, " + Read(other.id()) + "," + Read(other.id()));
  ASSERT_TRUE(other.Run([&] { Do(lock, "uu"); }));
}

TEST(TMultiLock, RefusedTimedLocksAndUseWithoutAnyWaitMakeNoEvent) {
  ProbedLock lock;
  EXPECT_EQ(lock.signalled(), 2u);  // free
  Do(lock, "rrwuuu");
  Actor other;
  ASSERT_TRUE(other.Run([&] { lock.WriteLock(); }));
  EXPECT_FALSE(lock.ReadLock(0));  // refused without waiting
  EXPECT_FALSE(lock.WriteLock(0));
  ASSERT_TRUE(other.Run([&] { lock.Unlock(); }));
  for (const unsigned int bit : {2u, 4u, 8u}) EXPECT_FALSE(lock.has_event(bit)) << bit;
}

}  // namespace
