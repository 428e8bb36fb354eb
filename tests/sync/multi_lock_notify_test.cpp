// TMultiLockWithNotify tells its subclass when a locked period begins and
// ends, while the lock is still held.
#include <qz/sync/multi_lock_with_notify.h>

#include "sync/multi_lock_test_support.h"

#include <gtest/gtest.h>

#include <mutex>
#include <string>

namespace {

using namespace multi_lock_test;

// Records each hook with the lock's status as the hook saw it. A hook can
// be made to stop until the test lets it go on.
class RecordingLock : public TMultiLockWithNotify {
 public:
  std::string calls() {
    std::lock_guard<std::mutex> hold(mutex_);
    return calls_;
  }
  std::string statuses() {
    std::lock_guard<std::mutex> hold(mutex_);
    return statuses_;
  }
  // The next hook named `name` signals `entered` and waits for `go_on`.
  void StopIn(const char* name, HANDLE entered, HANDLE go_on) {
    stop_in_ = name;
    entered_ = entered;
    go_on_ = go_on;
  }

 protected:
  void OnWriteLock() override { Record("OnWriteLock"); }
  void OnReadLock() override { Record("OnReadLock"); }
  void OnWriteUnlock() override { Record("OnWriteUnlock"); }
  void OnReadUnlock() override { Record("OnReadUnlock"); }
  void OnWriteAfterReadLock() override { Record("OnWriteAfterReadLock"); }
  void OnWriteAfterReadUnlock() override { Record("OnWriteAfterReadUnlock"); }

 private:
  void Record(const std::string& name) {
    const std::string status = GetStatusString();
    {
      std::lock_guard<std::mutex> hold(mutex_);
      calls_ += name + " ";
      statuses_ += "[" + status + "]";
    }
    if (name == stop_in_) {
      stop_in_.clear();
      SetEvent(entered_);
      WaitForSingleObject(go_on_, 10000);
    }
  }

  std::mutex mutex_;
  std::string calls_, statuses_, stop_in_;
  HANDLE entered_ = nullptr, go_on_ = nullptr;
};

// Two manual-reset events for StopIn, closed at the end of the test.
struct HookGate {
  HANDLE entered = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  HANDLE go_on = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  ~HookGate() {
    SetEvent(go_on);
    CloseHandle(entered);
    CloseHandle(go_on);
  }
};

TEST(TMultiLockWithNotify, OverlappingReadersAreToldOnceInAndOnceOut) {
  RecordingLock lock;
  Actor other;
  lock.ReadLock();
  ASSERT_TRUE(other.Run([&] { lock.ReadLock(); }));
  lock.Unlock();
  EXPECT_EQ(lock.calls(), "OnReadLock ");
  ASSERT_TRUE(other.Run([&] { lock.Unlock(); }));
  EXPECT_EQ(lock.calls(), "OnReadLock OnReadUnlock ");
  EXPECT_EQ(lock.statuses(), "[locked_write, " + Read(Me()) + "][locked_read, " + Read(other.id()) + "]");
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
}

// Steps as in Do: only the outer hold of a locked period is told, nested
// ones not; an upgrade is told as such; each with the status the hook saw.
TEST(TMultiLockWithNotify, OuterHoldsAndUpgradesAreToldInOrder) {
  struct Row {
    const char* ops;
    const char* calls;
    const char* statuses;
  };
  const Row rows[] = {
      {"rwuu", "OnReadLock OnWriteAfterReadLock OnWriteAfterReadUnlock OnReadUnlock ",
       "[locked_write, me:R][locked_write, me:R,me:W][locked_write, me:R,me:W][locked_read, me:R]"},
      {"lwruuu", "OnWriteLock OnWriteUnlock ", "[locked_write, me:W][locked_write, me:W]"},
  };
  for (const Row& row : rows) {
    RecordingLock lock;
    Do(lock, row.ops);
    EXPECT_EQ(lock.calls(), row.calls) << row.ops;
    EXPECT_EQ(lock.statuses(), Mine(row.statuses)) << row.ops;
    EXPECT_EQ(lock.GetStatusString(), "not_locked");
  }
}

TEST(TMultiLockWithNotify, NoNotifyFormsTellNothing) {
  RecordingLock lock;
  lock.ReadLockNoNotify();
  EXPECT_TRUE(lock.WriteLockNoNotify(0));
  lock.UnlockNoNotify();
  lock.UnlockNoNotify();
  lock.WriteLockNoNotify();
  EXPECT_TRUE(lock.ReadLockNoNotify(0));
  lock.UnlockNoNotify();
  lock.UnlockNoNotify();
  lock.ReadLockThreadIndependentNoNotify();
  EXPECT_TRUE(lock.ReadLockThreadIndependentNoNotify(0));
  lock.UnlockThreadIndependentNoNotify();
  lock.UnlockThreadIndependentNoNotify();
  EXPECT_TRUE(lock.WriteLockThreadIndependentNoNotify(0));
  lock.UnlockThreadIndependentNoNotify();
  lock.WriteLockThreadIndependentNoNotify();
  lock.UnlockThreadIndependentNoNotify();
  EXPECT_EQ(lock.calls(), "");
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
}

TEST(TMultiLockWithNotify, IndependentHoldsFollowTheSameRules) {
  RecordingLock lock;
  Actor other;
  lock.ReadLockThreadIndependent();
  EXPECT_TRUE(lock.ReadLockThreadIndependent(0));
  ASSERT_TRUE(other.Run([&] { lock.UnlockThreadIndependent(); }));
  EXPECT_EQ(lock.calls(), "OnReadLock ");
  ASSERT_TRUE(other.Run([&] { lock.UnlockThreadIndependent(); }));
  EXPECT_EQ(lock.calls(), "OnReadLock OnReadUnlock ");
  lock.WriteLockThreadIndependent();
  ASSERT_TRUE(other.Run([&] { lock.UnlockThreadIndependent(); }));
  EXPECT_EQ(lock.calls(), "OnReadLock OnReadUnlock OnWriteLock OnWriteUnlock ");
  EXPECT_EQ(lock.statuses(), "[locked_write, 0:R][locked_read, 0:R][locked_write, 0:W][locked_write, 0:W]");
}

TEST(TMultiLockWithNotify, OthersWaitWhileTheFirstReaderIsToldAndThenJoin) {
  RecordingLock lock;
  HookGate gate;
  lock.StopIn("OnReadLock", gate.entered, gate.go_on);
  Actor first, second;
  first.Start([&] { lock.ReadLock(); });
  ASSERT_EQ(WaitForSingleObject(gate.entered, 10000), WAIT_OBJECT_0);
  EXPECT_FALSE(lock.ReadLock(0));
  EXPECT_FALSE(lock.WriteLock(0));
  second.Start([&] { lock.ReadLock(); });
  EXPECT_FALSE(second.Finished(50));
  SetEvent(gate.go_on);
  ASSERT_TRUE(first.Finished());
  ASSERT_TRUE(second.Finished());
  EXPECT_EQ(lock.calls(), "OnReadLock ");
  EXPECT_EQ(lock.GetStatusString(), "locked_read, " + Read(first.id()) + "," + Read(second.id()));
  ASSERT_TRUE(first.Run([&] { lock.Unlock(); }));
  ASSERT_TRUE(second.Run([&] { lock.Unlock(); }));
  EXPECT_EQ(lock.calls(), "OnReadLock OnReadUnlock ");
}

TEST(TMultiLockWithNotify, OthersWaitWhileTheWriterIsToldOfItsRelease) {
  RecordingLock lock;
  HookGate gate;
  lock.StopIn("OnWriteUnlock", gate.entered, gate.go_on);
  Actor writer;
  ASSERT_TRUE(writer.Run([&] { lock.WriteLock(); }));
  writer.Start([&] { lock.Unlock(); });
  ASSERT_EQ(WaitForSingleObject(gate.entered, 10000), WAIT_OBJECT_0);
  EXPECT_FALSE(lock.ReadLock(0));
  EXPECT_EQ(lock.GetStatusString(), "locked_write, " + Write(writer.id()));
  SetEvent(gate.go_on);
  ASSERT_TRUE(writer.Finished());
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
}

}  // namespace
