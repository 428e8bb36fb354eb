// Every wait of the kernel-object wrappers is alertable. A queued user
// procedure call ends a timed wait with "not taken" and is sat out by an
// untimed one.
#include <qz/sync/event.h>
#include <qz/sync/mutex.h>
#include <qz/sync/semaphore.h>

#include "support/test_threads.h"

#include <gtest/gtest.h>

namespace {

using qz_test::WorkerThread;

// Runs `wait` on a worker and queues a procedure call to it once it is
// about to wait (queued earlier, the call would run before the wait begins).
struct InterruptedWorker {
  TEvent about_to_wait;
  std::atomic<bool> call_ran{false};
  WorkerThread worker;

  explicit InterruptedWorker(std::function<void()> wait)
      : worker([this, wait] {
          about_to_wait.Set();
          wait();
        }) {
    EXPECT_TRUE(about_to_wait.Signaled(10000));
    EXPECT_TRUE(QueueUserAPC(qz_test::MarkRan, worker.handle(), reinterpret_cast<ULONG_PTR>(&call_ran)));
  }
};

TEST(AlertableWait, ProcedureCallEndsATimedWaitWithFalseAndAnUntimedOneGoesOn) {
  // Each wrapper's timed and untimed wait on an object made unavailable
  // here, and what makes it available again.
  struct WaitCase {
    const char* name;
    std::function<bool(unsigned int)> timed;
    std::function<void()> untimed, release;
  };
  TMutex mutex;
  mutex.Lock();
  TSemaphore semaphore(1, 0);
  TEvent event;
  const WaitCase cases[] = {
      {"mutex", [&](unsigned int ms) { return mutex.Lock(ms); }, [&] { mutex.Lock(), mutex.Unlock(); },
       [&] { mutex.Unlock(); }},
      {"semaphore", [&](unsigned int ms) { return semaphore.Lock(ms); }, [&] { semaphore.Lock(); },
       [&] { semaphore.Unlock(); }},
      {"event", [&](unsigned int ms) { return event.Signaled(static_cast<int>(ms)); }, [&] { event.WaitForSignal(); },
       [&] { event.Set(); }},
  };
  for (const WaitCase& c : cases) {
    SCOPED_TRACE(c.name);
    std::atomic<int> result{-1};
    {
      InterruptedWorker w([&] { result = c.timed(60000) ? 1 : 0; });
      ASSERT_TRUE(w.worker.Join(20000)) << "the call did not end the 60 s wait";
      EXPECT_TRUE(w.call_ran);
      EXPECT_EQ(result, 0);
      EXPECT_EQ(w.worker.error(), "");
    }
    InterruptedWorker w([&] {
      c.untimed();
      result = 2;
    });
    ASSERT_TRUE(qz_test::Eventually([&] { return w.call_ran.load(); }));
    EXPECT_FALSE(w.worker.Join(200)) << "the wait ended with the call";
    c.release();
    ASSERT_TRUE(w.worker.Join(20000));
    EXPECT_EQ(result, 2);
    EXPECT_EQ(w.worker.error(), "");
  }
}

}  // namespace
