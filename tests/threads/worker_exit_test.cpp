// A worker that leaves its pool finishes its thread's end by itself, however
// long that end takes: nobody else waits for it or terminates it there. A
// thread's end runs the runtime's per-thread teardown (thread-local
// destructors, the runtime's own data) under the loader lock and the heap
// lock; a thread terminated inside it leaves those locks held or the heap
// half-updated, and the process crashes or hangs later.
//
// The round runs in a child process, since the fault hangs the process.
#include <qz/sync/event.h>
#include <qz/threads/thread_pool.h>

#include "support/test_threads.h"
#include "threads/threads_test_support.h"

#include <atomic>

namespace {

using qz_test::Eventually;
using threads_test::Field;
using threads_test::LambdaJob;
using threads_test::RunChild;

// Longer than anybody would wait for a thread before giving up on it.
constexpr DWORD kSlowEndMs = 6000;

std::atomic<int> slow_ends{0};

// Makes the end of every thread that arms it take kSlowEndMs.
struct SlowThreadEnd {
  bool armed = false;
  ~SlowThreadEnd() {
    if (!armed) return;
    Sleep(kSlowEndMs);
    ++slow_ends;
  }
};
thread_local SlowThreadEnd slow_end;

TEST(WorkerExit, RetiringWorkersEndTheirThreadsUnterminated) {
  EXPECT_EQ(RunChild("WorkerExit.DISABLED_TwoWorkersRetireWhileEndingSlowly", 40000), 0);
}

// The child: two workers arm their thread's end, then retire one after the
// other while the first is still ending.
TEST(WorkerExit, DISABLED_TwoWorkersRetireWhileEndingSlowly) {
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(2, 0);
  std::atomic<int> armed{0};
  for (int i = 0; i < 2; ++i)
    pool->QueueJob(new LambdaJob([&armed] {
      slow_end.armed = true;
      ++armed;
      Eventually([&armed] { return armed == 2; });  // one job per worker
    }));
  ASSERT_TRUE(pool->WaitForAllJobs(10000));
  ASSERT_EQ(armed, 2);
  // One worker holds a job while the other, with no room left for it,
  // leaves after a job of its own; then the holder leaves too, while the
  // first is still ending.
  TEvent release(true, false);
  std::atomic<bool> holding{false};
  pool->QueueJob(new LambdaJob([&] {
    holding = true;
    release.Signaled(20000);
  }));
  ASSERT_TRUE(Eventually([&] { return holding.load(); }));
  pool->SetLimits(1, 0, 0);
  pool->QueueJob(new LambdaJob([] {}));
  ASSERT_TRUE(Eventually([&] { return Field(*pool, "Threads") == 1; })) << pool->ToString();
  pool->SetLimits(0, 0, 0);
  release.Set();
  ASSERT_TRUE(pool->WaitForAllJobs(10000)) << pool->ToString();
  EXPECT_TRUE(Eventually([] { return slow_ends == 2; }, 2 * kSlowEndMs + 5000))
      << slow_ends << " of 2 thread ends ran to their end";
  pool->Shutdown();
}

}  // namespace
