// TThreadTask on its failure paths: a Cancel racing the worker that picks
// the task up, a task dropped from the queue, and a worker's controls
// racing its restart.
#include <qz/threads/thread_pool.h>

#include "support/test_threads.h"
#include "threads/threads_test_support.h"

#include <cstdio>
#include <string>
#include <vector>

namespace {

using threads_test::LambdaTask;

// Notes how often its work began and how often it left (by any way), and
// what both counts were when Cancel returned.
class Probe : public TThreadTask {
 public:
  void Execute() override {
    ++entered;
    struct Leave {
      std::atomic<int>& left;
      ~Leave() { ++left; }
    } leave{left};
    for (int i = 0; i < 20; ++i) TThread::Sleep(10, 1);
  }
  void CancelAndNote() {
    Cancel();
    entered_at_cancel = entered.load();
    left_at_cancel = left.load();
  }

  std::atomic<int> entered{0}, left{0};
  int entered_at_cancel = 0, left_at_cancel = 0;
};

// After Cancel returns the work has either never begun or is over, and it
// never begins later. The race is with a worker taking the task from the
// queue at the same moment, so it is tried many times.
TEST(TaskCancel, CancelRightAfterQueueingNeverLeavesTheWorkRunning) {
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(4, 4);
  constexpr int kTries = 10000;
  std::vector<SmartPtr<Probe>> probes;
  probes.reserve(kTries);
  int running_after_cancel = 0, interrupted = 0;
  for (int i = 0; i < kTries; ++i) {
    SmartPtr<Probe> probe = new Probe;
    pool->QueueJob(probe);
    for (int spin = i % 4 == 0 ? i % 200 : 0; spin > 0; --spin) YieldProcessor();  // land at other moments too
    probe->CancelAndNote();
    running_after_cancel += probe->entered_at_cancel != probe->left_at_cancel;
    interrupted += probe->entered_at_cancel;
    probes.push_back(probe);
  }
  ASSERT_TRUE(pool->WaitForAllJobs(60000)) << pool->ToString();
  int started_after_cancel = 0;
  for (const SmartPtr<Probe>& probe : probes) {
    started_after_cancel += probe->entered != probe->entered_at_cancel;
    EXPECT_TRUE(probe->IsFinished());
  }
  EXPECT_EQ(running_after_cancel, 0) << "of " << kTries << " tries";
  EXPECT_EQ(started_after_cancel, 0) << "of " << kTries << " tries";
  std::printf("%d of %d cancels interrupted begun work\n", interrupted, kTries);
  pool->Shutdown();
}

// A dropped task ends as if cancelled before it started: its waiters wake
// and its work never runs, whether ClearQueue or Shutdown dropped it.
TEST(TaskCancel, ATaskDroppedFromTheQueueEndsAsCancelledBeforeItStarted) {
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(0, 0);
  std::atomic<int> ran{0};
  SmartPtr<LambdaTask> cleared = new LambdaTask([&] { ++ran; });
  SmartPtr<LambdaTask> shut_down = new LambdaTask([&] { ++ran; });
  pool->QueueJob(cleared);
  std::atomic<bool> woke{false};
  qz_test::WorkerThread waiter([&] { woke = cleared->WaitForFinish(20000); });
  Sleep(20);
  pool->ClearQueue();
  ASSERT_TRUE(waiter.Join(10000));
  EXPECT_TRUE(woke);
  pool->QueueJob(shut_down);
  pool->Shutdown();
  for (LambdaTask* task : {cleared.get(), shut_down.get()}) {
    EXPECT_TRUE(task->IsFinished());
    EXPECT_FALSE(task->IsStarted());
    EXPECT_FALSE(task->IsException());
  }
  pool->SetLimits(2, 0, 0);
  EXPECT_TRUE(pool->WaitForAllJobs(10000));
  EXPECT_EQ(ran, 0);
  pool->Shutdown();
}

// Two threads cancel one running task whose work takes a while to unwind:
// neither Cancel returns before the work is over.
TEST(TaskCancel, EveryConcurrentCancelWaitsForTheWorkToEnd) {
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(1, 0);
  std::atomic<int> left{0};
  SmartPtr<LambdaTask> task = new LambdaTask([&] {
    struct SlowUnwind {
      std::atomic<int>& left;
      ~SlowUnwind() {
        ::Sleep(300);
        ++left;
      }
    } slow{left};
    for (;;) TThread::Sleep(1000, 1);
  });
  pool->QueueJob(task);
  ASSERT_TRUE(task->WaitForStart(10000));
  std::atomic<int> left_seen[2] = {{-1}, {-1}};
  {
    qz_test::WorkerThread first([&] {
      task->Cancel();
      left_seen[0] = left.load();
    });
    Sleep(20);
    qz_test::WorkerThread second([&] {
      task->Cancel();
      left_seen[1] = left.load();
    });
    ASSERT_TRUE(first.Join(20000) && second.Join(20000));
  }
  EXPECT_EQ(left_seen[0], 1);
  EXPECT_EQ(left_seen[1], 1) << "the second Cancel returned while the work was still unwinding";
  pool->Shutdown();
}

// Hands out the worker it runs on.
class WorkerGrab : public IThreadJob {
 public:
  void Execute() override {}
  void RunOn(IThreadContext& on) override { worker = &on; }
  SmartPtr<IThreadContext> worker;
};

// The worker of a pool of one, learnt from a job it ran.
SmartPtr<IThreadContext> WorkerOf(IThreadPool& pool) {
  SmartPtr<WorkerGrab> grab = new WorkerGrab;
  pool.QueueJob(grab);
  EXPECT_TRUE(pool.WaitForAllJobs(10000));
  return grab->worker;
}

// Another thread suspending, resuming and re-prioritising a worker in a
// loop until stopped.
class Controller {
 public:
  explicit Controller(IThreadContext& worker)
      : caller_([this, &worker] {
          while (!stop_) {
            worker.Suspend();
            worker.Resume();
            worker.SetPriority(THREAD_PRIORITY_NORMAL);
          }
        }) {}
  // Empty when the loop ended cleanly; else what went wrong (a caller that
  // hangs is resumed, in case it suspended itself).
  std::string Stop() {
    stop_ = true;
    if (caller_.Join(10000)) return caller_.error();
    ResumeThread(caller_.handle());
    return "the caller hangs";
  }

 private:
  std::atomic<bool> stop_{false};
  qz_test::WorkerThread caller_;
};

// A worker's controls called while Cancels restart it reach the worker's
// thread or nothing: never the caller's own thread (a restart leaves the
// worker without a thread for a moment) and never a closed handle.
TEST(TaskCancel, ControlsOfAWorkerBeingRestartedReachOnlyItsThread) {
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(1, 1);
  const SmartPtr<IThreadContext> worker = WorkerOf(*pool);
  Controller controller(*worker);
  for (int round = 0; round < 300; ++round) {
    SmartPtr<LambdaTask> task = new LambdaTask([] {
      for (;;) TThread::Sleep(1, 1);
    });
    pool->QueueJob(task);
    ASSERT_TRUE(task->WaitForStart(10000)) << "round " << round;
    task->Cancel();
  }
  EXPECT_EQ(controller.Stop(), "");
  pool->Shutdown();
}

// The same controls while the worker leaves its pool (the limit dropped
// under its job): the worker's last steps must not wait for anything a
// control holds, or a Suspend that catches it waiting leaves the Resume
// waiting behind a suspended thread.
TEST(TaskCancel, ControlsOfAWorkerLeavingItsPoolNeverHang) {
  for (int round = 0; round < 300; ++round) {
    SmartPtr<IThreadPool> pool = CreateNewThreadPool(1, 0);
    const SmartPtr<IThreadContext> worker = WorkerOf(*pool);
    TEvent release;
    pool->QueueJob(new threads_test::LambdaJob([&release] { release.WaitForSignal(); }));
    Controller controller(*worker);
    pool->SetLimits(0, 0, 0);
    release.Set();
    ASSERT_TRUE(qz_test::Eventually([&] { return pool->WaitForAllJobs(0); }, 10000)) << "round " << round;
    Sleep(round % 3);
    const std::string trouble = controller.Stop();
    if (!trouble.empty()) {
      ADD_FAILURE() << trouble << " in round " << round;
      pool->SetLimits(1, 0, 0);
      return;
    }
    pool->Shutdown();
  }
}

// A worker for a task run by hand: its Suspend waits for the test before
// it suspends the thread that ran the task; its Resume resumes that thread.
class HeldWorker : public IThreadContext {
 public:
  ~HeldWorker() noexcept override {}
  void Suspend() override {
    in_suspend.Set();
    go_on.WaitForSignal();
    if (::SuspendThread(thread) != static_cast<DWORD>(-1)) ++suspended;
  }
  void Resume() override {
    if (::ResumeThread(thread) != static_cast<DWORD>(-1)) --suspended;
  }
  void Interrupt() override {}
  std::string GetStack() override { return ""; }
  void SetPriority(int) override {}
  void Start() override {}
  void BeginStop() override {}
  void FinishStop(unsigned long) override {}

  HANDLE thread = nullptr;
  TEvent in_suspend, go_on;
  std::atomic<int> suspended{0};
};

// A task's Suspend and Resume come in pairs. A Suspend that began while
// the task ran and lands after its end, when the worker has gone on (here
// it waits for its next job), is still undone by the task's Resume.
TEST(TaskCancel, ASuspendThatOutlivesItsTaskIsUndoneByTheResume) {
  TEvent gate, next_job;
  std::atomic<bool> task_over{false};
  SmartPtr<LambdaTask> task = new LambdaTask([&gate] { gate.WaitForSignal(); });
  SmartPtr<HeldWorker> worker = new HeldWorker;
  qz_test::WorkerThread runner([&] {
    worker->thread = OpenThread(THREAD_SUSPEND_RESUME, FALSE, GetCurrentThreadId());
    task->RunOn(*worker);
    task_over = true;
    next_job.WaitForSignal();
  });
  ASSERT_TRUE(task->WaitForStart(10000));
  qz_test::WorkerThread controller([&] {
    task->Suspend();
    task->Resume();
  });
  ASSERT_TRUE(worker->in_suspend.Signaled(10000));
  gate.Set();
  ASSERT_TRUE(qz_test::Eventually([&] { return task_over.load(); }));
  worker->go_on.Set();
  ASSERT_TRUE(controller.Join(10000));
  EXPECT_EQ(worker->suspended, 0) << "the worker was left suspended";
  next_job.Set();
  if (!runner.Join(10000)) ::ResumeThread(worker->thread);
  CloseHandle(worker->thread);
}

}  // namespace
