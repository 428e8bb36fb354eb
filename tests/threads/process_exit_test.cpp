// A process that ends while pool workers are alive, in every state a worker
// can be in, ends. Each round runs this program again as a child that sets
// the workers up and returns from main.
#include <qz/threads/thread_pool.h>

#include "support/test_threads.h"
#include "threads/threads_test_support.h"

#include <windows.h>

#include <stdexcept>
#include <string>

namespace {

using threads_test::LambdaJob;
using threads_test::LambdaTask;
using threads_test::RunChild;

TEST(ProcessExit, EndsWithPoolWorkersAliveInEveryState) {
  for (int round = 0; round < 10; ++round)
    ASSERT_EQ(RunChild("ProcessExit.DISABLED_LeaveWorkersBehind", 60000), 0) << "round " << round;
}

// The child: workers waiting for jobs, inside alertable waits, in work that
// never waits, suspended, being cancelled and restarted, and retiring; then
// the test returns and the process ends with all of them alive.
TEST(ProcessExit, DISABLED_LeaveWorkersBehind) {
  SmartPtr<IThreadPool>* const leaked = new SmartPtr<IThreadPool>(CreateNewThreadPool(12, 2));
  IThreadPool& pool = **leaked;
  // Everything the workers use is leaked: the process ends without
  // destroying it under them.
  TEvent* const never = new TEvent;
  for (int i = 0; i < 2; ++i) pool.QueueJob(new LambdaJob([never] { never->WaitForSignal(); }));
  for (int i = 0; i < 2; ++i)
    pool.QueueJob(new LambdaJob([] {
      for (;;) ::Sleep(1);
    }));
  SmartPtr<LambdaTask> suspended = new LambdaTask([] {
    for (;;) TThread::Sleep(1, 1);
  });
  pool.QueueJob(suspended);
  ASSERT_TRUE(suspended->WaitForStart(10000));
  suspended->Suspend();
  // Cancels and restarts go on while the process ends.
  IThreadPool* const churned = (new SmartPtr<IThreadPool>(CreateNewThreadPool(4, 0)))->get();
  CloseHandle(CreateThread(
      nullptr, 0,
      [](void* argument) -> DWORD {
        IThreadPool& churn = *static_cast<IThreadPool*>(argument);
        for (;;) {
          SmartPtr<LambdaTask> task = new LambdaTask([] { TThread::Sleep(5, 1); });
          churn.QueueJob(task);
          task->Cancel();
          churn.QueueJob(new LambdaJob([] {}));
        }
      },
      churned, 0, nullptr));
  // Jobs that fail and log, on the process-wide pool, which is never
  // destroyed.
  CloseHandle(CreateThread(
      nullptr, 0,
      [](void*) -> DWORD {
        for (;;) {
          GetSystemThreadPool()->QueueJob(new LambdaJob([] { throw std::runtime_error("late"); }));
          ::Sleep(0);
        }
      },
      nullptr, 0, nullptr));
  Sleep(200);
}

}  // namespace
