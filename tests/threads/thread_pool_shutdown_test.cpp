// TThreadPool on its failure paths: bad input, waits that procedure calls
// cross, Shutdown racing a Cancel, and workers that have to be terminated.
#include <qz/errors/exceptions.h>
#include <qz/threads/thread_pool.h>

#include "support/error_code.h"
#include "support/test_threads.h"
#include "threads/threads_test_support.h"

#include <memory>
#include <vector>

namespace {

using qz_test::Actor;
using qz_test::Eventually;
using qz_test::WorkerThread;
using threads_test::Field;
using threads_test::LambdaJob;
using threads_test::LambdaTask;

// A null job is refused before it is counted, however often it comes; the
// pool goes on as before.
TEST(ThreadPoolInput, ANullJobIsRefusedAndChangesNothing) {
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(2, 0);
  TThreadPool& raw = static_cast<TThreadPool&>(*pool);
  const std::string before = pool->ToString();
  int refused = 0;
  for (int i = 0; i < 10000; ++i) {
    refused += qz_test::CodeThrownBy([&] { pool->QueueJob(nullptr); }) == ERROR_INVALID_PARAMETER;
    refused += qz_test::CodeThrownBy([&] { raw.TryQueueJob(nullptr); }) == ERROR_INVALID_PARAMETER;
  }
  EXPECT_EQ(refused, 20000);
  EXPECT_EQ(pool->ToString(), before);
  EXPECT_TRUE(pool->WaitForAllJobs(0));
  std::atomic<int> ran{0};
  for (int i = 0; i < 4; ++i) pool->QueueJob(new LambdaJob([&] { ++ran; }));
  ASSERT_TRUE(pool->WaitForAllJobs(20000)) << pool->ToString();
  EXPECT_EQ(ran, 4);
  pool->Shutdown();
}

// A procedure call that returns does not end the wait; one that throws
// (an interruption) leaves it by its exception.
TEST(ThreadPool, WaitForAllJobsOutlastsProcedureCallsThatReturn) {
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(1, 0);
  TEvent gate;
  pool->QueueJob(new LambdaJob([&] { gate.WaitForSignal(); }));
  std::atomic<int> answer{-1};
  std::atomic<bool> call_ran{false};
  {
    WorkerThread waiter([&] { answer = pool->WaitForAllJobs(20000); });
    Sleep(50);
    ASSERT_TRUE(QueueUserAPC(&qz_test::MarkRan, waiter.handle(), reinterpret_cast<ULONG_PTR>(&call_ran)));
    ASSERT_TRUE(Eventually([&] { return call_ran.load(); }));
    Sleep(50);
    EXPECT_EQ(answer, -1) << "the wait ended with the procedure call";
    gate.Set();
    ASSERT_TRUE(waiter.Join(20000));
    EXPECT_EQ(answer, 1);
  }
  pool->QueueJob(new LambdaJob([&] { gate.Reset(), gate.WaitForSignal(); }));
  std::atomic<bool> interrupted{false};
  WorkerThread waiter([&] {
    try {
      pool->WaitForAllJobs(20000);
    } catch (const EThreadInterrupt&) {
      interrupted = true;
    }
  });
  Sleep(50);
  ASSERT_TRUE(QueueUserAPC(&qz_test::ThrowInterrupt, waiter.handle(), 0));
  ASSERT_TRUE(waiter.Join(10000));
  EXPECT_TRUE(interrupted);
  gate.Set();
  pool->Shutdown();
}

// Cancel interrupts the task's worker and restarts it while Shutdown stops
// the same worker. Whichever comes first, neither waits on a handle the
// other replaced, and no restart brings a worker back after Shutdown: the
// pool keeps no thread then, so a job queued afterwards waits.
TEST(ThreadPoolShutdown, ACancelRacingShutdownRevivesNoWorker) {
  const int threads_before = threads_test::LibraryThreads();
  std::atomic<int> ran_after_shutdown{0};
  Actor canceller, stopper;
  for (int i = 0; i < 200; ++i) {
    SmartPtr<IThreadPool> pool = CreateNewThreadPool(1, 0);
    SmartPtr<LambdaTask> task = new LambdaTask([] {
      for (;;) TThread::Sleep(1000, 1);
    });
    pool->QueueJob(task);
    ASSERT_TRUE(task->WaitForStart(10000));
    canceller.Start([&] { task->Cancel(); });
    stopper.Start([&] { pool->Shutdown(); });
    ASSERT_TRUE(canceller.Finished(20000) && stopper.Finished(20000));
    ASSERT_NO_THROW(canceller.Rethrow());
    ASSERT_NO_THROW(stopper.Rethrow());
    EXPECT_TRUE(task->IsFinished());
    pool->QueueJob(new LambdaJob([&] { ++ran_after_shutdown; }));
    EXPECT_EQ(Field(*pool, "Threads"), 0);
  }
  Sleep(200);
  EXPECT_EQ(ran_after_shutdown, 0) << "a worker came back after Shutdown";
  EXPECT_TRUE(Eventually([&] { return threads_test::LibraryThreads() <= threads_before; }, 2000))
      << threads_test::LibraryThreads() << " library threads, " << threads_before << " before";
}

// Eight workers busy in work that never waits alertably: Shutdown asks all
// of them to stop at once and terminates them together after 5000 ms, not
// one after another. Every job they held counts as done, and every task
// they held is finished.
TEST(ThreadPoolShutdown, StopsEveryBusyWorkerWithinOneBoundAndFinishesTheirTasks) {
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(8, 0);
  std::atomic<int> busy{0};
  const auto work = [&busy] {
    ++busy;
    for (;;) ::Sleep(5);  // not alertable: only termination ends it
  };
  std::vector<SmartPtr<LambdaTask>> tasks;
  for (int i = 0; i < 4; ++i) {
    tasks.push_back(new LambdaTask(work));
    pool->QueueJob(tasks.back());
    pool->QueueJob(new LambdaJob(work));
  }
  ASSERT_TRUE(Eventually([&] { return busy == 8; }));
  const DWORD start = GetTickCount();
  pool->Shutdown();
  const DWORD spent = GetTickCount() - start;
  EXPECT_GE(spent, 4500u);
  EXPECT_LT(spent, 9000u) << "the workers were stopped one after another";
  for (const SmartPtr<LambdaTask>& task : tasks) EXPECT_TRUE(task->IsFinished());
  EXPECT_TRUE(pool->WaitForAllJobs(0)) << pool->ToString();
  EXPECT_EQ(Field(*pool, "RunningJobs"), 0);
  EXPECT_EQ(Field(*pool, "Threads"), 0);
}

}  // namespace
