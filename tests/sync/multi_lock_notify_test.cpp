// TMultiLockWithNotify tells its subclass when a locked period begins and
// ends, while the lock is still held (the status each hook sees shows it
// write-locked, so others are kept out).
#include <qz/sync/multi_lock_with_notify.h>

#include "support/raw_event.h"
#include "sync/multi_lock_test_support.h"

#include <gtest/gtest.h>

#include <mutex>
#include <string>

namespace {

using namespace multi_lock_test;

// Logs each hook with the lock's status as the hook saw it:
// "OnReadLock[locked_write, 12:R] ". The hook named `stop_in` signals
// `entered` and waits for `go_on`.
class RecordingLock : public TMultiLockWithNotify {
 public:
  std::string log() {
    std::lock_guard<std::mutex> hold(mutex_);
    return log_;
  }
  std::string stop_in;
  qz_test::RawEvent entered, go_on;

 protected:
  void OnWriteLock() override { Record("OnWriteLock"); }
  void OnReadLock() override { Record("OnReadLock"); }
  void OnWriteUnlock() override { Record("OnWriteUnlock"); }
  void OnReadUnlock() override { Record("OnReadUnlock"); }
  void OnWriteAfterReadLock() override { Record("OnWriteAfterReadLock"); }
  void OnWriteAfterReadUnlock() override { Record("OnWriteAfterReadUnlock"); }

 private:
  void Record(const std::string& name) {
    const std::string entry = name + "[" + GetStatusString() + "] ";
    {
      std::lock_guard<std::mutex> hold(mutex_);
      log_ += entry;
    }
    if (name == stop_in) {
      stop_in.clear();
      SetEvent(entered.h);
      WaitForSingleObject(go_on.h, 10000);
    }
  }

  std::mutex mutex_;
  std::string log_;
};

// Steps as in Do: only the outer hold of a locked period is told, nested
// ones not; an upgrade is told as such; independent holds make periods of
// their own the same way; the NoNotify forms tell nothing.
TEST(TMultiLockWithNotify, OuterHoldsAndUpgradesAreToldInOrder) {
  const std::pair<const char*, const char*> rows[] = {
      {"rwuu",
       "OnReadLock[locked_write, me:R] OnWriteAfterReadLock[locked_write, me:R,me:W] "
       "OnWriteAfterReadUnlock[locked_write, me:R,me:W] OnReadUnlock[locked_read, me:R] "},
      {"lwruuu", "OnWriteLock[locked_write, me:W] OnWriteUnlock[locked_write, me:W] "},
      {"iixxjx",
       "OnReadLock[locked_write, 0:R] OnReadUnlock[locked_read, 0:R] OnWriteLock[locked_write, 0:W] "
       "OnWriteUnlock[locked_write, 0:W] "},
  };
  for (const auto& row : rows) {
    RecordingLock lock;
    Do(lock, row.first);
    EXPECT_EQ(lock.log(), Mine(row.second)) << row.first;
    EXPECT_EQ(lock.GetStatusString(), "not_locked");
  }
  RecordingLock lock;
  lock.ReadLockNoNotify();
  EXPECT_TRUE(lock.WriteLockNoNotify(0));
  lock.UnlockNoNotify();
  lock.UnlockNoNotify();
  EXPECT_EQ(lock.log(), "");
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
}

// The period ends with the last hold, whichever thread gives it up.
TEST(TMultiLockWithNotify, OthersWaitWhileTheFirstReaderIsToldAndThenJoin) {
  RecordingLock lock;
  lock.stop_in = "OnReadLock";
  Actor first, second;
  first.Start([&] { lock.ReadLock(); });
  ASSERT_EQ(WaitForSingleObject(lock.entered.h, 10000), WAIT_OBJECT_0);
  EXPECT_FALSE(lock.ReadLock(0));
  EXPECT_FALSE(lock.WriteLock(0));
  second.Start([&] { lock.ReadLock(); });
  EXPECT_FALSE(second.Finished(50));
  SetEvent(lock.go_on.h);
  ASSERT_TRUE(first.Finished());
  ASSERT_TRUE(second.Finished());
  EXPECT_EQ(lock.GetStatusString(), "locked_read, " + Read(first.id()) + "," + Read(second.id()));
  ASSERT_TRUE(first.Run([&] { lock.Unlock(); }));
  ASSERT_TRUE(second.Run([&] { lock.Unlock(); }));
  EXPECT_EQ(lock.log(), "OnReadLock[locked_write, " + Read(first.id()) + "] OnReadUnlock[locked_read, " +
                            Read(second.id()) + "] ");
}

}  // namespace
