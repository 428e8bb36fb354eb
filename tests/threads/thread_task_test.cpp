// TThreadTask: the kept exception, and Cancel before and during the work.
#include <qz/errors/exceptions.h>
#include <qz/threads/thread_pool.h>

#include "support/error_code.h"
#include "support/test_threads.h"
#include "threads/threads_test_support.h"

#include <stdexcept>

namespace {

using qz_test::ValuesOf;
using threads_test::LambdaJob;
using threads_test::LambdaTask;

// One worker; shut down (every worker gone) at the end of each test.
class ThreadTask : public ::testing::Test {
 protected:
  ~ThreadTask() override { pool->Shutdown(); }
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(1, 0);
};

TEST_F(ThreadTask, KeepsWhatTheWorkThrewForRethrow) {
  SmartPtr<LambdaTask> system = new LambdaTask([] { throw ESystemException(5); });
  SmartPtr<LambdaTask> standard = new LambdaTask([] { throw std::out_of_range("index 9"); });
  SmartPtr<LambdaTask> other = new LambdaTask([] { throw 1; });
  for (auto* task : {system.get(), standard.get(), other.get()}) pool->QueueJob(task);
  ASSERT_TRUE(pool->WaitForAllJobs(20000));
  // What each rethrows: all EGeneric, with the original's values.
  const auto values = [](TThreadTask& task) {
    try {
      task.RethrowException();
    } catch (const EGeneric& e) {
      return ValuesOf(e);
    }
    return std::string("nothing thrown");
  };
  ASSERT_TRUE(system->IsException());
  EXPECT_EQ(values(*system), ValuesOf(ESystemException(5)));
  EXPECT_NE(values(*standard).find("Text=index 9;"), std::string::npos) << values(*standard);
  EXPECT_NE(values(*standard).find("Type=std::out_of_range;"), std::string::npos) << values(*standard);
  EXPECT_NE(values(*other), "nothing thrown");
}

TEST_F(ThreadTask, CancelledBeforeItStartsItNeverRuns) {
  pool->SetLimits(0, 0, 0);
  std::atomic<bool> ran{false};
  SmartPtr<LambdaTask> task = new LambdaTask([&] { ran = true; });
  pool->QueueJob(task);
  task->Cancel();
  EXPECT_TRUE(task->WaitForFinish(0));
  EXPECT_FALSE(task->IsStarted());
  pool->SetLimits(1, 0, 0);
  ASSERT_TRUE(pool->WaitForAllJobs(20000));
  EXPECT_FALSE(ran);
  EXPECT_FALSE(task->IsStarted());
}

// The work blocks in an alertable wait; Cancel ends it by EThreadInterrupt,
// and a fresh thread takes the worker's place and runs later jobs.
TEST_F(ThreadTask, CancelDuringTheWorkReplacesTheWorker) {
  TEvent never;
  std::atomic<bool> unwound{false};
  SmartPtr<LambdaTask> task = new LambdaTask([&] {
    threads_test::UnwindMark mark{unwound};
    never.WaitForSignal();
  });
  pool->QueueJob(task);
  ASSERT_TRUE(task->WaitForStart(10000));
  Sleep(50);
  const DWORD start = GetTickCount();
  task->Cancel();
  EXPECT_LT(GetTickCount() - start, 4000u) << "the worker was terminated";
  EXPECT_TRUE(unwound);
  EXPECT_TRUE(task->IsFinished());
  EXPECT_FALSE(task->IsException());
  std::atomic<int> ran{0};
  for (int i = 0; i < 3; ++i) pool->QueueJob(new LambdaJob([&] { ++ran; }));
  ASSERT_TRUE(pool->WaitForAllJobs(20000));
  EXPECT_EQ(ran, 3);
  EXPECT_EQ(threads_test::Field(*pool, "Threads"), 1);
}

// Work that returns without waiting after a Cancel began takes the
// interruption on its way out; the next job on that worker runs in peace.
TEST_F(ThreadTask, CancelDuringWorkThatEndsWithoutWaitingSparesTheNextJob) {
  SmartPtr<LambdaTask> task = new LambdaTask([] {
    const DWORD start = GetTickCount();
    while (GetTickCount() - start < 300) YieldProcessor();
  });
  std::atomic<bool> next_done{false};
  pool->QueueJob(task);
  pool->QueueJob(new LambdaJob([&] {
    TEvent never;
    never.Signaled(200);  // an alertable wait: a stray interruption lands here
    next_done = true;
  }));
  ASSERT_TRUE(task->WaitForStart(10000));
  task->Cancel();
  ASSERT_TRUE(pool->WaitForAllJobs(20000));
  EXPECT_TRUE(next_done) << "the cancel interrupted the next job";
}

// Work that never waits cannot be interrupted: the worker is terminated
// after 5000 ms, the job still counts as done, and the pool goes on.
TEST_F(ThreadTask, CancellingWorkThatNeverWaitsTerminatesTheWorker) {
  std::atomic<bool> spin{true};
  SmartPtr<LambdaTask> task = new LambdaTask([&] { while (spin) YieldProcessor(); });
  pool->QueueJob(task);
  ASSERT_TRUE(task->WaitForStart(10000));
  task->Cancel();
  EXPECT_TRUE(task->IsFinished());
  EXPECT_TRUE(pool->WaitForAllJobs(0)) << pool->ToString();
  std::atomic<int> ran{0};
  pool->QueueJob(new LambdaJob([&] { ++ran; }));
  EXPECT_TRUE(pool->WaitForAllJobs(20000));
  EXPECT_EQ(ran, 1);
}

}  // namespace
