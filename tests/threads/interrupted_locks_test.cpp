// An interruption leaves every lock whole: whatever wait of a lock call
// it lands in, the lock's counts and holds are as if the call had never
// waited, and the lock serves everybody afterwards.
#include <qz/errors/generic.h>
#include <qz/sync/multi_lock.h>
#include <qz/sync/mutex.h>
#include <qz/sync/semaphore.h>

#include "support/test_threads.h"
#include "threads/threads_test_support.h"

#include <cstdio>
#include <memory>
#include <random>
#include <vector>

namespace {

using qz_test::Actor;
using qz_test::WorkerThread;
using threads_test::InterruptWhileWaiting;

// Releases the calling thread's most recent hold when it goes.
struct Release {
  ILock& lock;
  ~Release() { lock.Unlock(); }
};

std::string Me(const char* hold) { return std::to_string(GetCurrentThreadId()) + ":" + hold; }

// Read, then wait to upgrade (`timeout` 0: without a bound).
void Upgrade(TMultiLock& l, DWORD timeout) {
  l.ReadLock();
  Release read{l};
  timeout == 0 ? l.WriteLock() : (void)l.WriteLock(timeout);
}

// A timed wait is the same wait with a bound: one of them is enough.
TEST(InterruptedLocks, MultiLockWaitersLeaveNoTrace) {
  // What the test thread holds (a write, else a read) and what the other waits for.
  const struct { const char* name; bool holder_writes; std::function<void(TMultiLock&)> wait; } cases[] = {
      {"read behind a writer", true, [](TMultiLock& l) { l.ReadLock(); }},
      {"independent read behind a writer", true, [](TMultiLock& l) { l.ReadLockThreadIndependent(); }},
      {"write behind a reader", false, [](TMultiLock& l) { l.WriteLock(); }},
      {"upgrade beside a reader", false, [](TMultiLock& l) { Upgrade(l, 0); }},
      {"timed upgrade beside a reader", false, [](TMultiLock& l) { Upgrade(l, 60000); }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TMultiLock lock;
    c.holder_writes ? lock.WriteLock() : lock.ReadLock();
    InterruptWhileWaiting([&] { c.wait(lock); });
    EXPECT_EQ(lock.GetStatusString(), c.holder_writes ? "locked_write, " + Me("W") : "locked_read, " + Me("R"));

    // Later use: another reader beside the holder, an upgrade attempt that
    // waits for it (no dead-lock), then everything free again.
    Actor other;
    if (!c.holder_writes) {
      ASSERT_TRUE(other.Run([&] { EXPECT_TRUE(lock.ReadLock(0)); }));
      EXPECT_FALSE(lock.WriteLock(50)) << "upgrade went past a reader";
      ASSERT_TRUE(other.Run([&] { lock.Unlock(); }));
      EXPECT_TRUE(lock.WriteLock(0)) << "the only reader could not upgrade";
      lock.Unlock();
    }
    lock.Unlock();
    EXPECT_EQ(lock.GetStatusString(), "not_locked");
    ASSERT_TRUE(other.Run([&] {
      EXPECT_TRUE(lock.WriteLock(0));
      lock.Unlock();
      EXPECT_TRUE(lock.ReadLockThreadIndependent(0));
      lock.UnlockThreadIndependent();
    }));
    EXPECT_EQ(lock.GetStatusString(), "not_locked");
  }
}

// Sleeps are interrupted in thread_class_test.cpp.
TEST(InterruptedLocks, KernelObjectWaitersTakeNothing) {
  TMutex mutex;
  mutex.Lock();
  InterruptWhileWaiting([&] { mutex.Lock(); });
  InterruptWhileWaiting([&] { mutex.Lock(60000); });
  mutex.Unlock();
  Actor other;
  ASSERT_TRUE(other.Run([&] {
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0) << "abandoned by an interrupted waiter";
    mutex.Unlock();
  }));
  TSemaphore semaphore(1, 0);
  InterruptWhileWaiting([&] { semaphore.Lock(); });
  semaphore.Unlock();
  EXPECT_TRUE(semaphore.Lock(0)) << "the interrupted waiter took the unit";
  TEvent event(false, false);
  InterruptWhileWaiting([&] { event.WaitForSignal(); });
  event.Set();
  EXPECT_TRUE(event.Signaled(0)) << "the interrupted waiter took the signal";
}

// Readers, writers and upgraders on one lock while interruptions land at
// random moments, in every wait and back-off of theirs. No waiter may be
// left asleep beside a free lock, no hold or count may be left behind, and
// writers stay alone.
TEST(InterruptedLocks, RandomInterruptionsLeaveTheMultiLockWhole) {
  TMultiLock lock;
  std::atomic<bool> stop{false};
  std::atomic<int> readers{0}, writers{0}, violations{0}, interrupted{0}, completed{0};
  const auto spin = [] { for (int i = 0; i < 2000; ++i) YieldProcessor(); };
  // Counts a thread inside for as long as it lives, however it leaves.
  struct Inside {
    std::atomic<int>& count;
    explicit Inside(std::atomic<int>& c) : count(c) { ++count; }
    ~Inside() { --count; }
  };
  std::atomic<int> started{0};
  const auto worker_body = [&](unsigned seed) {
    ++started;
    std::mt19937 random(seed);
    while (!stop) {
      try {
        const unsigned op = random() % 4;
        if (op == 1 || op == 2) {
          if (op == 1 ? lock.WriteLock(random() % 3) : (lock.WriteLock(), true)) {
            Release w{lock};
            Inside writing(writers);
            if (writers != 1 || readers != 0) ++violations;
            SleepEx(random() % 2, TRUE);  // a long hold, interruptible inside
          }
        } else {
          lock.ReadLock();
          Release r{lock};
          Inside reading(readers);
          if (writers != 0) ++violations;
          if (op == 3) {  // an upgrade; of two upgraders, the second is told so
            try {
              lock.WriteLock();
              Release w{lock};
              Inside writing(writers);
              if (writers != 1 || readers != 1) ++violations;
            } catch (const EGeneric&) {
            }
          }
          spin();
        }
        ++completed;
      } catch (const EThreadInterrupt&) {
        ++interrupted;
      }
    }
  };
  std::vector<std::unique_ptr<WorkerThread>> workers;
  for (unsigned i = 0; i < 6; ++i) workers.emplace_back(new WorkerThread([&, i] { worker_body(i + 1); }));
  // A call queued to a thread that has not started yet runs while the
  // thread starts, outside every handler.
  ASSERT_TRUE(qz_test::Eventually([&] { return started == 6; }));
  std::mt19937 random(42);
  const DWORD start = GetTickCount();
  while (GetTickCount() - start < 3000) {
    QueueUserAPC(qz_test::ThrowInterrupt, workers[random() % workers.size()]->handle(), 0);
    Sleep(random() % 3);
  }
  stop = true;
  for (auto& worker : workers) {
    EXPECT_TRUE(worker->Join(20000)) << "a waiter was left asleep";
    EXPECT_EQ(worker->error(), "");
  }
  EXPECT_EQ(violations, 0);
  EXPECT_GT(interrupted, 10);
  EXPECT_GT(completed, 100);  // low enough for a machine busy with other work
  std::printf("%d interruptions, %d lock calls completed\n", interrupted.load(), completed.load());
  EXPECT_EQ(lock.GetStatusString(), "not_locked");
}

}  // namespace
