// Four producers queue jobs and tasks (some throwing) while two threads
// cancel tasks at random moments and a third clears the queue and changes
// the limits; then the pool is shut down with work still queued and
// running. Every job runs once or is given up, never both; every task ends
// in exactly one state; the running count balances; Shutdown leaves no
// thread and no handle behind.
//
// Runs QZ_SOAK_SECONDS seconds (3 unless set):
//   QZ_SOAK_SECONDS=600 scripts/wine-run build/bin/qz_threads_tests.exe --gtest_filter='ThreadPoolSoak.*'
#include <qz/errors/exceptions.h>
#include <qz/errors/generic.h>
#include <qz/threads/thread_pool.h>

#include "support/test_threads.h"
#include "threads/threads_test_support.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <random>
#include <type_traits>
#include <vector>

namespace {

using qz_test::Eventually;
using qz_test::WorkerThread;
using threads_test::Field;
using threads_test::LibraryThreads;

struct Tally {
  std::atomic<long long> created{0}, ran{0}, never_ran{0}, ran_twice{0}, abandoned{0}, kept_exceptions{0};
  // How each task ended; `broken` counts those in no single state.
  std::atomic<long long> completed{0}, interrupted{0}, never_started{0}, broken{0};
};

// A job or task that counts its runs and, when it goes, notes whether it ran
// once, never or twice, and how a task ended. Tasks sleep alertably, so
// that a Cancel can reach them.
template <class Base>
class Soak : public Base {
  static constexpr bool kTask = std::is_same<Base, TThreadTask>::value;

 public:
  Soak(Tally& tally, bool throws, DWORD sleep_ms = 1) : tally_(tally), throws_(throws), sleep_ms_(sleep_ms) {
    ++tally_.created;
  }
  ~Soak() override {
    const int runs = runs_;
    ++(runs == 0 ? tally_.never_ran : runs == 1 ? tally_.ran : tally_.ran_twice);
    if constexpr (kTask) {
      tally_.kept_exceptions += this->IsException();
      ++(EndState(runs));
    }
  }
  void Execute() override {
    ++runs_;
    if constexpr (kTask) {
      try {
        TThread::Sleep(sleep_ms_, 1);
      } catch (const EThreadInterrupt&) {
        interrupted_ = true;
        throw;
      }
    }
    if (throws_) throw EGeneric({"Text", "soak"});
  }
  void Abandon() noexcept override {
    ++tally_.abandoned;
    Base::Abandon();
  }

 private:
  std::atomic<long long>& EndState(int runs) {
    TThreadTask& task = *this;
    if (!task.IsFinished() || runs > 1 || task.IsStarted() != (runs == 1)) return tally_.broken;
    if (runs == 0) return tally_.never_started;
    return interrupted_ ? tally_.interrupted : tally_.completed;
  }

  Tally& tally_;
  const bool throws_;
  const DWORD sleep_ms_;
  std::atomic<int> runs_{0};
  std::atomic<bool> interrupted_{false};
};
using SoakJob = Soak<IThreadJob>;
using SoakTask = Soak<TThreadTask>;

TEST(ThreadPoolSoak, EveryJobIsAccountedForAndNothingIsLeftBehind) {
  qz_test::CapturedStream debug(Debug);  // the throwing jobs' lines stay off the debugger
  const char* seconds = std::getenv("QZ_SOAK_SECONDS");
  const DWORD soak_ms = seconds != nullptr ? static_cast<DWORD>(std::atoi(seconds)) * 1000 : 3000;
  Tally tally;
  {
    // One short round first, so that everything made once per process (and
    // not by the pool) exists before the baseline is taken.
    SmartPtr<IThreadPool> warm_up = CreateNewThreadPool(2, 0);
    warm_up->QueueJob(new SoakJob(tally, false));
    warm_up->QueueJob(new SoakTask(tally, true));
    warm_up->WaitForAllJobs(20000);
    warm_up->Shutdown();
  }
  const auto handles = [] {
    DWORD count = 0;
    GetProcessHandleCount(GetCurrentProcess(), &count);
    return count;
  };
  const int threads_before = LibraryThreads();
  const DWORD handles_before = handles();
  std::atomic<long long> refused{0}, cancels{0}, clears{0};
  {
    SmartPtr<IThreadPool> pool = CreateNewThreadPool(8, 2, 0, 200000);
    std::atomic<bool> stop{false};
    std::mutex tasks_lock;
    std::vector<SmartPtr<SoakTask>> recent_tasks;
    const auto produce = [&](unsigned seed) {
      std::mt19937 random(seed);
      for (long long i = 0; !stop; ++i) {
        try {
          if (i % 10 == 0) {
            SmartPtr<SoakTask> task = new SoakTask(tally, random() % 3 == 0, 1 + random() % 8);
            pool->QueueJob(task);
            std::lock_guard<std::mutex> hold(tasks_lock);
            recent_tasks.push_back(task);
          } else {
            pool->QueueJob(new SoakJob(tally, i % 1000 == 1));
          }
        } catch (const EGeneric&) {
          ++refused;  // the job was never queued
          Sleep(1);
        }
      }
    };
    // Cancels a recent task (running when a few picks find one, else queued or
// done) every 0-3 ms.
    const auto cancel = [&](unsigned seed) {
      std::mt19937 random(seed);
      for (; !stop; Sleep(random() % 4)) {
        SmartPtr<SoakTask> task;
        {
          // Running tasks are rare among the recent ones: a few picks find one.
          std::lock_guard<std::mutex> hold(tasks_lock);
          for (int pick = 0; pick < 8 && !recent_tasks.empty() && !(task && task->IsRunning()); ++pick)
            task = recent_tasks[random() % recent_tasks.size()];
          if (recent_tasks.size() > 1000) recent_tasks.clear();
        }
        if (!task) continue;
        task->Cancel();
        ++cancels;
      }
    };
    // Every 20 ms changes the limits or, now and then, clears the queue.
    const auto disturb = [&] {
      std::mt19937 random(7);
      for (; !stop; Sleep(20)) {
        if (random() % 10 == 0) {
          pool->ClearQueue();
          ++clears;
        } else {
          pool->SetLimits(1 + random() % 8, random() % 3, 0);
        }
      }
    };
    std::vector<std::unique_ptr<WorkerThread>> actors;
    for (unsigned i = 0; i < 4; ++i) actors.emplace_back(new WorkerThread([&, i] { produce(i + 1); }));
    for (unsigned i = 0; i < 2; ++i) actors.emplace_back(new WorkerThread([&, i] { cancel(i + 11); }));
    actors.emplace_back(new WorkerThread(disturb));
    Sleep(soak_ms);
    // Sampled until a worker shows: with the limits changing and the queue
    // cleared, the pool may be between a retirement and the next start.
    EXPECT_TRUE(Eventually([&] { return LibraryThreads() > threads_before; })) << "the count does not see the workers";
    stop = true;
    for (auto& actor : actors) {
      ASSERT_TRUE(actor->Join(60000));
      EXPECT_EQ(actor->error(), "");
    }
    // Work is still queued and running here.
    pool->SetLimits(8, 2, 0);
    pool->Shutdown();
    EXPECT_TRUE(pool->WaitForAllJobs(0)) << pool->ToString();
    EXPECT_EQ(Field(*pool, "RunningJobs"), 0);
    EXPECT_EQ(Field(*pool, "Queue"), 0);
    EXPECT_EQ(Field(*pool, "Threads"), 0);
    recent_tasks.clear();
  }
  std::printf("%lld jobs: %lld ran, %lld never ran (%lld given up, %lld refused); tasks: %lld completed, "
              "%lld interrupted, %lld never started, %lld in no single state; %lld cancels, %lld clears\n",
              tally.created.load(), tally.ran.load(), tally.never_ran.load(), tally.abandoned.load(), refused.load(),
              tally.completed.load(), tally.interrupted.load(), tally.never_started.load(), tally.broken.load(),
              cancels.load(), clears.load());
  EXPECT_EQ(tally.ran_twice, 0);
  EXPECT_EQ(tally.broken, 0);
  EXPECT_EQ(tally.created, tally.ran + tally.never_ran);
  EXPECT_LE(tally.abandoned + refused, tally.never_ran) << "given up and run";
  EXPECT_GT(tally.created, 1000);
  EXPECT_GT(tally.ran, 20);  // low enough for a machine busy with other work
  EXPECT_GT(tally.kept_exceptions, 1) << "beyond the warm-up's";
  EXPECT_TRUE(Eventually([&] { return LibraryThreads() == threads_before; }))
      << LibraryThreads() << " library threads, " << threads_before << " before";
  EXPECT_TRUE(Eventually([&] { return handles() <= handles_before; }))
      << handles() << " handles, " << handles_before << " before";
}

}  // namespace
