// TThreadPool: order, limits, overflow, waiting, clearing, shutdown, idle
// retirement and the process-wide pool.
#include <qz/errors/exceptions.h>
#include <qz/threads/thread_pool.h>

#include "support/error_code.h"
#include "support/test_threads.h"
#include "threads/threads_test_support.h"

#include <cstdio>
#include <functional>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <vector>

namespace {

using qz_test::Eventually;
using qz_test::WorkerThread;
using threads_test::Field;
using threads_test::LambdaJob;

// Jobs that block until the test opens the gate.
struct Gate {
  TEvent open;
  std::atomic<int> waiting{0};
  SmartPtr<IThreadJob> Job(std::atomic<int>* done = nullptr) {
    return new LambdaJob([this, done] {
      ++waiting;
      open.WaitForSignal();
      if (done) ++*done;
    });
  }
};

// Jobs that throw are logged and harm nothing: the worker stays and runs
// the rest in order.
TEST(ThreadPool, OneWorkerRunsJobsInTheOrderQueuedPastThrowingOnes) {
  qz_test::CapturedStream debug(Debug);
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(1, 0);
  std::vector<int> order, expected(20);
  std::iota(expected.begin(), expected.end(), 0);
  for (int i : expected) {
    pool->QueueJob(new LambdaJob([&order, i] { order.push_back(i); }));
    if (i == 5) pool->QueueJob(new LambdaJob([] { throw std::runtime_error("bad input"); }));
    if (i == 6) pool->QueueJob(new LambdaJob([] { throw 7; }));
  }
  ASSERT_TRUE(pool->WaitForAllJobs(20000));
  EXPECT_EQ(order, expected);
  EXPECT_EQ(debug.text(),
            "(!) Thread pool job failed with exception std::runtime_error:bad input\n"
            "(!) Thread pool job failed with unknown exception\n");
  EXPECT_EQ(Field(*pool, "Threads"), 1);
  pool->Shutdown();
}

// Lets the held jobs go: all `want` of them run, none of the dropped ones,
// and the pool shuts down.
void ReleaseAndExpectRuns(IThreadPool& pool, const std::function<void()>& release, const std::atomic<int>& ran,
                          int want, const std::atomic<int>& dropped_ran) {
  release();
  ASSERT_TRUE(pool.WaitForAllJobs(20000));
  EXPECT_EQ(ran, want);
  EXPECT_EQ(dropped_ran, 0);
  pool.Shutdown();
}

// Also the pool's text form.
TEST(ThreadPool, AFullQueueThrowsWithItsThreeValuesInOrder) {
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(0, 0, 0, 1);
  EXPECT_FALSE(pool->QueueJob(new LambdaJob([] {})));
  try {
    pool->QueueJob(new LambdaJob([] {}));
    FAIL() << "no overflow";
  } catch (const EGeneric& e) {
    EXPECT_EQ(qz_test::ValuesOf(e), "Text=Thread pool overflowed;JobQueueSize=1;ThreadsSize=0;");
  }
  TThreadPool* const raw = static_cast<TThreadPool*>(pool.get());
  EXPECT_FALSE(raw->TryQueueJob(new LambdaJob([] {})));
  char text[200];  // the refused jobs left no trace
  std::snprintf(text, sizeof text,
                "Thread Pool 0x%x RunningJobs=1 Threads=0 Queue=1 Idle=0 MaxTotalThreads=0 MinIdleThreads=0",
                static_cast<unsigned>(reinterpret_cast<uintptr_t>(raw)));
  EXPECT_EQ(pool->ToString(), text);
  EXPECT_THROW(CreateNewThreadPool(1, 0, 0, 0), ESystemException);
}

// With no room for threads, jobs wait in the queue until the limit rises;
// QueueJob's answer says whether a job can start without waiting. Clearing
// a queue with nothing running makes the pool all done at once.
TEST(ThreadPool, JobsWaitForTheLimitAfterZeroOrShutdown) {
  for (const bool shut_down : {false, true}) {
    SCOPED_TRACE(shut_down ? "after Shutdown" : "max total 0");
    SmartPtr<IThreadPool> pool = CreateNewThreadPool(shut_down ? 4 : 0, shut_down ? 1 : 0);
    if (shut_down) {
      pool->QueueJob(new LambdaJob([] {}));  // one worker, then idle
      ASSERT_TRUE(Eventually([&] { return Field(*pool, "Idle") == 1; }));
      pool->Shutdown();
      EXPECT_EQ(Field(*pool, "Threads"), 0);
      EXPECT_EQ(Field(*pool, "Idle"), 0) << "the interrupted worker kept its idle count";
    }
    std::atomic<int> ran{0}, dropped_ran{0};
    for (int i = 0; i < 2; ++i) EXPECT_FALSE(pool->QueueJob(new LambdaJob([&] { ++dropped_ran; })));
    EXPECT_FALSE(pool->WaitForAllJobs(0));
    pool->ClearQueue();
    EXPECT_TRUE(pool->WaitForAllJobs(0));
    for (int i = 0; i < 2; ++i) EXPECT_FALSE(pool->QueueJob(new LambdaJob([&] { ++ran; })));
    Sleep(100);
    EXPECT_EQ(ran, 0);
    EXPECT_EQ(Field(*pool, "Threads"), 0);
    EXPECT_EQ(Field(*pool, "Queue"), 2);
    ReleaseAndExpectRuns(*pool, [&] { pool->SetLimits(2, 0, 0); }, ran, 2, dropped_ran);
  }
}

// Raising the limit starts one worker per waiting job, not one per slot:
// workers just started are not idle yet, and must not look missing.
TEST(ThreadPool, RaisingTheLimitStartsAWorkerPerWaitingJob) {
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(0, 0);
  Gate gate;
  for (int i = 0; i < 2; ++i) pool->QueueJob(gate.Job());
  pool->SetLimits(8, 0, 0);
  ASSERT_TRUE(Eventually([&] { return gate.waiting == 2; }));
  EXPECT_EQ(Field(*pool, "Threads"), 2);
  gate.open.Set();
  pool->Shutdown();
}

// Also WaitForAllJobs before, during and after work.
TEST(ThreadPool, ClearQueueDropsWaitingJobsOnly) {
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(1, 0);
  EXPECT_TRUE(pool->WaitForAllJobs(0));
  Gate gate;
  std::atomic<int> done{0}, dropped_ran{0};
  pool->QueueJob(gate.Job(&done));
  ASSERT_TRUE(Eventually([&] { return gate.waiting == 1; }));
  for (int i = 0; i < 3; ++i) pool->QueueJob(new LambdaJob([&] { ++dropped_ran; }));
  pool->ClearQueue();
  EXPECT_EQ(Field(*pool, "Queue"), 0);
  EXPECT_EQ(Field(*pool, "RunningJobs"), 1);
  EXPECT_FALSE(pool->WaitForAllJobs(50)) << "the running job is not dropped";
  ReleaseAndExpectRuns(*pool, [&] { gate.open.Set(); }, done, 1, dropped_ran);
}

// A pool that holds a worker just after it took a job from the queue,
// until the test lets it go on.
class PausingPool : public TThreadPool {
 public:
  PausingPool() : TThreadPool(4, 0, 0, 100) {}
  ~PausingPool() noexcept override = default;
  SmartPtr<IThreadJob> PopJob() override {
    SmartPtr<IThreadJob> job = TThreadPool::PopJob();
    if (job && pause_next.exchange(false)) {
      taken.Set();
      go_on.WaitForSignal();
    }
    return job;
  }
  std::atomic<bool> pause_next{false};
  TEvent taken, go_on;
};

// The one idle worker has just taken a job when another is queued: the
// second job needs a worker of its own, and gets one although the first
// never ends.
TEST(ThreadPool, AJobQueuedWhileTheIdleWorkerTakesAnotherGetsAWorker) {
  SmartPtr<PausingPool> pool = new PausingPool;
  pool->QueueJob(new LambdaJob([] {}));
  ASSERT_TRUE(Eventually([&] { return Field(*pool, "Idle") == 1 && pool->WaitForAllJobs(0); }));
  Gate gate;
  pool->pause_next = true;
  pool->QueueJob(gate.Job());
  ASSERT_TRUE(pool->taken.Signaled(10000));
  pool->QueueJob(gate.Job());
  pool->go_on.Set();
  EXPECT_TRUE(Eventually([&] { return gate.waiting == 2; }, 3000)) << pool->ToString();
  gate.open.Set();
  pool->Shutdown();
}

// A burst makes six workers; all of them time out together 10 s after the
// burst, and exactly the minimum stays.
TEST(ThreadPool, IdleWorkersRetireAfter10SecondsDownToTheMinimum) {
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(6, 2);
  Gate gate;
  for (int i = 0; i < 6; ++i) pool->QueueJob(gate.Job());
  ASSERT_TRUE(Eventually([&] { return gate.waiting == 6; }));
  EXPECT_EQ(Field(*pool, "Threads"), 6);
  gate.open.Set();
  ASSERT_TRUE(pool->WaitForAllJobs(20000));
  const DWORD start = GetTickCount();
  int fewest = 6;
  for (DWORD spent = 0; spent < 13000; Sleep(50), spent = GetTickCount() - start) {
    fewest = std::min(fewest, Field(*pool, "Threads"));
    EXPECT_TRUE(spent >= 9000 || fewest == 6) << "retired early, at " << spent << " ms";
  }
  EXPECT_EQ(fewest, 2);
  EXPECT_EQ(Field(*pool, "Threads"), 2);
  EXPECT_EQ(Field(*pool, "Idle"), 2);
  pool->Shutdown();
}

TEST(ThreadPool, TheSystemPoolIsOneFromEveryThread) {
  TEvent go;
  IThreadPool* seen[8] = {};
  {
    std::vector<std::unique_ptr<WorkerThread>> callers;
    for (auto& slot : seen) callers.emplace_back(new WorkerThread([&go, &slot] {
      go.WaitForSignal();
      slot = GetSystemThreadPool().get();
    }));
    go.Set();
    for (auto& caller : callers) ASSERT_TRUE(caller->Join(20000));
  }
  SmartPtr<IThreadPool> pool = GetSystemThreadPool();
  for (IThreadPool* p : seen) EXPECT_EQ(p, pool.get());
}

}  // namespace
