// Threads blocked in TMultiLock wake when the holds they wait for go, and
// their waits stay alertable.
#include <qz/errors/exceptions.h>
#include <qz/sync/multi_lock.h>

#include "sync/multi_lock_test_support.h"

#include <gtest/gtest.h>

namespace {

using namespace multi_lock_test;

// Bits of the events, to see that a thread has come to wait.
constexpr unsigned int kFree = 2, kReadOpen = 8;

// Here an independent writer; a thread's own writer waits the same way below,
// and an upgrader (also interrupted) in the dead-lock test; writers after writers are in the
// stress test.
TEST(TMultiLockWaking, WaitingWriterEntersWhenTheLastReaderLeaves) {
  ProbedLock lock;
  Actor reader, writer;
  ReleaseOnExit cleanup(lock);
  lock.ReadLock();
  ASSERT_TRUE(reader.Run([&] { lock.ReadLock(); }));
  writer.Start([&] { lock.WriteLockThreadIndependent(); });
  ASSERT_TRUE(Eventually([&] { return lock.has_event(kFree); }));
  lock.Unlock();
  EXPECT_FALSE(writer.Finished(50));
  ASSERT_TRUE(reader.Run([&] { lock.Unlock(); }));
  ASSERT_TRUE(writer.Finished());
  EXPECT_EQ(lock.GetStatusString(), "locked_write, 0:W");
}

TEST(TMultiLockWaking, WaitingReadersEnterTogetherWhenAWriteOverReadsEnds) {
  ProbedLock lock;
  Actor a, b;
  ReleaseOnExit cleanup(lock);
  lock.ReadLock();
  lock.WriteLock();  // the only reader: an upgrade
  a.Start([&] { lock.ReadLock(); });
  b.Start([&] { lock.ReadLock(); });
  ASSERT_TRUE(Eventually([&] { return lock.has_event(kReadOpen); }));
  lock.Unlock();  // the write: the lock is read-open again
  ASSERT_TRUE(a.Finished());
  ASSERT_TRUE(b.Finished());
  const std::string status = lock.GetStatusString(), me = "locked_read, " + Read(Me()) + ",";
  EXPECT_TRUE(status == me + Read(a.id()) + "," + Read(b.id()) || status == me + Read(b.id()) + "," + Read(a.id()))
      << status;
  lock.Unlock();
  ASSERT_TRUE(a.Run([&] { lock.Unlock(); }));
  ASSERT_TRUE(b.Run([&] { lock.Unlock(); }));
}

// Once a writer has left readers behind (here: its own, after an upgrade),
// a later reader blocked by a writer still waits, and gives up in time.
TEST(TMultiLockWaking, ReaderBlockedByAWriterWaitsEvenAfterAnEarlierWriteEndedOverReads) {
  ProbedLock lock;
  Do(lock, "rwuuw");
  Actor reader;
  ReleaseOnExit cleanup(lock);
  bool taken = true;
  reader.Start([&] { taken = lock.ReadLock(20); });
  const bool gave_up = reader.Finished();
  EXPECT_EQ(lock.GetStatusString(), "locked_write, " + Write(Me()));
  lock.Unlock();
  ASSERT_TRUE(gave_up) << "the reader did not give up while the writer held on";
  EXPECT_FALSE(taken);
  if (taken) reader.Run([&] { lock.Unlock(); });
}

// Unlike a timed mutex wait, a multi-lock wait is not ended by a procedure
// call: the call runs and the wait goes on, timed or not, until the writer
// leaves and the reader enters.
TEST(TMultiLockWaking, ProcedureCallRunsDuringTheWaitAndTheWaitGoesOn) {
  for (const unsigned int timeout : {INFINITE, 60000u}) {
    ProbedLock lock;
    lock.WriteLock();
    Actor reader;
    ReleaseOnExit cleanup(lock);
    bool taken = false;
    reader.Start([&] { taken = lock.ReadLock(timeout); });
    ASSERT_TRUE(Eventually([&] { return lock.has_event(kReadOpen); }));
    std::atomic<bool> ran{false};
    ASSERT_TRUE(QueueUserAPC(MarkRan, reader.handle(), reinterpret_cast<ULONG_PTR>(&ran)));
    ASSERT_TRUE(Eventually([&] { return ran.load(); }));
    EXPECT_FALSE(reader.Finished(50));
    lock.Unlock();
    ASSERT_TRUE(reader.Finished());
    EXPECT_TRUE(taken);
    EXPECT_EQ(lock.GetStatusString(), "locked_read, " + Read(reader.id()));
    ASSERT_TRUE(reader.Run([&] { lock.Unlock(); }));
  }
}

TEST(TMultiLockWaking, InterruptionThrownDuringTheWaitLeavesWithNothingTaken) {
  ProbedLock lock;
  lock.WriteLock();
  Actor writer;
  ReleaseOnExit cleanup(lock);
  writer.Start([&] { lock.WriteLock(60000); });
  ASSERT_TRUE(Eventually([&] { return lock.has_event(kFree); }));
  ASSERT_TRUE(QueueUserAPC(ThrowInterrupt, writer.handle(), 0));
  ASSERT_TRUE(writer.Finished());
  EXPECT_THROW(writer.Rethrow(), EThreadInterrupt);
  EXPECT_EQ(lock.GetStatusString(), "locked_write, " + Write(Me()));
  lock.Unlock();
  ASSERT_TRUE(writer.Run([&] { Do(lock, "Wu"); }));
}

}  // namespace
