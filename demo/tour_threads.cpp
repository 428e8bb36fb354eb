#include "tour.h"

#include <qz/errors/exceptions.h>
#include <qz/errors/generic.h>
#include <qz/threads/thread_class.h>
#include <qz/threads/thread_pool.h>
#include <qz/threads/thread_task.h>

#include <windows.h>

#include <atomic>
#include <string>

namespace {

class Sum : public IThreadJob {
 public:
  Sum(std::atomic<long long>& total, int n) : total_(total), n_(n) {}
  void Execute() override {
    long long sum = 0;
    for (int i = 1; i <= n_; ++i) sum += i;
    total_ += sum;
  }

 private:
  std::atomic<long long>& total_;
  int n_;
};

void pool_running_jobs() {
  section("Thread pool: jobs queued, run, counted");
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(4, 1);
  show("a new pool", pool->ToString());
  std::atomic<long long> total{0};
  for (int n = 1; n <= 100; ++n) pool->QueueJob(new Sum(total, n * 1000));
  show("WaitForAllJobs(10000)", pool->WaitForAllJobs(10000) ? "true" : "false");
  show("sum of the 100 jobs' sums", std::to_string(total.load()));
  show("after the work", pool->ToString());
  try {
    SmartPtr<IThreadPool> tiny = CreateNewThreadPool(0, 0, 0, 1);
    tiny->QueueJob(new Sum(total, 1));
    tiny->QueueJob(new Sum(total, 1));
  } catch (const EGeneric& e) {
    show("a queue of 1 given 2 jobs", "");
    std::printf("%s\n", e.what());
  }
  pool->Shutdown();
  show("after Shutdown", pool->ToString());
}

// Waits alertably for something that never comes, so a Cancel can reach it.
class Download : public TThreadTask {
 public:
  void Execute() override { TThread::Sleep(INFINITE, 1); }
};

void task_cancelled() {
  section("Thread task: started, cancelled, the worker replaced");
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(1, 0);
  SmartPtr<TThreadTask> task = new Download;
  pool->QueueJob(task);
  show("WaitForStart(5000)", task->WaitForStart(5000) ? "true" : "false");
  show("WaitForFinish(100)", task->WaitForFinish(100) ? "true" : "false");
  task->Cancel();
  show("after Cancel: IsFinished", task->IsFinished() ? "true" : "false");
  std::atomic<long long> total{0};
  pool->QueueJob(new Sum(total, 10));
  pool->WaitForAllJobs(5000);
  show("the next job on the new worker: sum 1..10", std::to_string(total.load()));
  pool->Shutdown();
}

void pool_failure_paths() {
  section("Thread pool: bad input, dropped tasks, cancel racing the start");
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(0, 0);  // no workers yet: jobs wait
  try {
    pool->QueueJob(nullptr);
  } catch (const ESystemException& e) {
    show("QueueJob(nullptr) throws, Code", std::to_string(static_cast<int>(e.get_value("Code"))));
  }
  show("and counts nothing", pool->ToString());
  SmartPtr<TThreadTask> dropped = new Download;
  pool->QueueJob(dropped);
  pool->ClearQueue();
  show("a task ClearQueue dropped: IsFinished", dropped->IsFinished() ? "true" : "false");
  show("                           IsStarted", dropped->IsStarted() ? "true" : "false");
  pool->SetLimits(4, 4, 0);
  int ran = 0;
  for (int i = 0; i < 1000; ++i) {
    SmartPtr<TThreadTask> task = new Download;
    pool->QueueJob(task);
    task->Cancel();  // never started, or interrupted and over when it returns
    ran += task->IsStarted();
  }
  show("1000 tasks cancelled right after queueing", std::to_string(ran) + " had started, all are over");
  pool->Shutdown();
  show("after Shutdown", pool->ToString());
}

class Poller : public TThreadClass {
 public:
  ~Poller() override { StopThread(5000); }
  void Execute() override {
    struct Goodbye {
      ~Goodbye() { std::printf("  %-44s %s\n", "the poller's body unwinds", "(destructors run)"); }
    } goodbye;
    for (;;) {
      ++polls;
      TThread::Sleep(10, 1);  // every alertable wait is a way out
    }
  }
  std::atomic<int> polls{0};
};

void thread_interrupted() {
  section("Interruptible thread: EThreadInterrupt at the next wait");
  Poller poller;
  poller.StartThread();
  Sleep(100);
  poller.InterruptThread(0, 5000);
  show("polls before the interruption", poller.polls > 0 ? "some" : "none");
  show("thread ended", WaitForSingleObject(poller, 0) == WAIT_OBJECT_0 ? "yes, without termination" : "no");
}

}  // namespace

void tour_threads() {
  pool_running_jobs();
  task_cancelled();
  pool_failure_paths();
  thread_interrupted();
}
