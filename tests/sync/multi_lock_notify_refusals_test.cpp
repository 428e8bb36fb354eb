// TMultiLockWithNotify: a hold that is refused must tell nothing, since the
// subclass would otherwise see a period begin that never ends; the ILock face
// and the thread-independent forms tell like the others.
#include <qz/sync/multi_lock_with_notify.h>

#include "support/test_threads.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using qz_test::Actor;

class TellingLock : public TMultiLockWithNotify {
 public:
  std::string told;

 protected:
  void OnWriteLock() override { told += "W+ "; }
  void OnReadLock() override { told += "R+ "; }
  void OnWriteUnlock() override { told += "W- "; }
  void OnReadUnlock() override { told += "R- "; }
  void OnWriteAfterReadLock() override { told += "U+ "; }
  void OnWriteAfterReadUnlock() override { told += "U- "; }
};

TEST(TMultiLockWithNotify, RefusedHoldsTellNothing) {
  TellingLock lock;
  Actor other;
  ASSERT_TRUE(other.Run([&] { lock.WriteLockNoNotify(); }));
  EXPECT_FALSE(lock.ReadLock(0));
  EXPECT_FALSE(lock.WriteLock(20));
  EXPECT_FALSE(static_cast<ILock&>(lock).Lock(0));
  EXPECT_FALSE(lock.ReadLockThreadIndependent(0));
  EXPECT_FALSE(lock.WriteLockThreadIndependent(20));
  EXPECT_FALSE(lock.ReadLockNoNotify(0));
  EXPECT_FALSE(lock.ReadLockThreadIndependentNoNotify(0));
  EXPECT_FALSE(lock.WriteLockThreadIndependentNoNotify(0));
  EXPECT_EQ(lock.told, "");
  ASSERT_TRUE(other.Run([&] { lock.UnlockNoNotify(); }));
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
}

TEST(TMultiLockWithNotify, ILockAndIndependentHoldsTellTheirPeriods) {
  TellingLock lock;
  ILock& plain = lock;
  plain.Lock();
  plain.Unlock();
  ASSERT_TRUE(plain.Lock(0));
  plain.Unlock();
  EXPECT_EQ(lock.told, "W+ W- W+ W- ");

  lock.told.clear();
  lock.ReadLockThreadIndependent();
  lock.UnlockThreadIndependent();
  ASSERT_TRUE(lock.WriteLockThreadIndependent(0));
  lock.UnlockThreadIndependent();
  lock.WriteLockThreadIndependent();
  lock.UnlockThreadIndependent();
  lock.ReadLockThreadIndependentNoNotify();
  lock.UnlockThreadIndependentNoNotify();
  lock.WriteLockThreadIndependentNoNotify();
  lock.UnlockThreadIndependentNoNotify();
  lock.WriteLockNoNotify();
  lock.UnlockNoNotify();
  EXPECT_EQ(lock.told, "R+ R- W+ W- W+ W- ");
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
}

}  // namespace
