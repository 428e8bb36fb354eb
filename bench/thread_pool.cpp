// Jobs per second through a thread pool, measured in one run. Run it with
// `scripts/bench pool`.
//
// P producer threads (1, 2 and 4) queue empty jobs as fast as they can; a
// figure is jobs per second from the first QueueJob until the last job has
// run. Side by side:
//   qz        the library's pool (4 workers kept, so none is started or
//             retired while measuring)
//   plain-ml  a plain pool written here: a deque under a TMultiLock write
//             lock, one kernel semaphore count per job, 4 workers: the floor
//             the library's design stands on
//   plain-srw the same plain pool under the slim reader/writer lock
//   system    the platform's own pool (TrySubmitThreadpoolCallback)
// The pools take turns round by round (qz and plain-ml always side by side,
// each first in every other round), after one warm-up round each. Rounds
// are short (1000 jobs) and many (61): a throughput is the median of the
// rounds; a ratio is the median of the ratios of the same round, so that a
// burst of other work on a shared machine falls on both sides of it or is
// outvoted.
//
// Goals: the library's pool at least 0.9x the throughput of plain-ml; and
// plain-ml within 1.5x of plain-srw (the multi-lock costs the design little).
#include "bench_support.h"

#include <qz/sync/multi_lock.h>
#include <qz/threads/thread_pool.h>

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <deque>
#include <thread>
#include <vector>

namespace {

constexpr int kWorkers = 4;
constexpr int kJobsPerRound = 1000;
constexpr int kRounds = 61;

class EmptyJob : public IThreadJob {
 public:
  void Execute() override {}
};

// What every pool here answers to: queue one job, wait for all of them.
struct Pool {
  virtual ~Pool() = default;
  virtual void Queue(SmartPtr<IThreadJob> job) = 0;
  virtual void WaitAll() = 0;
};

struct LibraryPool : Pool {
  SmartPtr<IThreadPool> pool = CreateNewThreadPool(kWorkers, kWorkers);
  LibraryPool() {
    for (int i = 0; i < kWorkers; ++i) pool->QueueJob(new EmptyJob);  // start the workers
    WaitAll();
  }
  ~LibraryPool() override { pool->Shutdown(); }
  void Queue(SmartPtr<IThreadJob> job) override { pool->QueueJob(job); }
  void WaitAll() override { pool->WaitForAllJobs(INFINITE); }
};

// The plain pool: the least a pool of this design does per job.
template <class Lock>
struct PlainPool : Pool {
  Lock lock;
  std::deque<SmartPtr<IThreadJob>> queue;
  HANDLE semaphore = CreateSemaphoreW(nullptr, 0, 0x7fffffff, nullptr);
  HANDLE all_done = CreateEventW(nullptr, TRUE, TRUE, nullptr);
  std::atomic<long> running{0};
  std::atomic<bool> stop{false};
  std::vector<std::thread> workers;

  PlainPool() {
    for (int i = 0; i < kWorkers; ++i) workers.emplace_back([this] { Work(); });
  }
  ~PlainPool() override {
    stop = true;
    ReleaseSemaphore(semaphore, kWorkers, nullptr);
    for (auto& w : workers) w.join();
    CloseHandle(semaphore);
    CloseHandle(all_done);
  }
  void Queue(SmartPtr<IThreadJob> job) override {
    lock.Enter();
    if (running.fetch_add(1) == 0) ResetEvent(all_done);
    queue.push_back(job);
    ReleaseSemaphore(semaphore, 1, nullptr);
    lock.Leave();
  }
  void WaitAll() override { WaitForSingleObject(all_done, INFINITE); }
  void Work() {
    for (;;) {
      WaitForSingleObjectEx(semaphore, INFINITE, TRUE);
      if (stop) return;
      lock.Enter();
      SmartPtr<IThreadJob> job = std::move(queue.front());
      queue.pop_front();
      lock.Leave();
      job->Execute();
      job.reset();
      lock.Enter();
      if (running.fetch_sub(1) == 1) SetEvent(all_done);
      lock.Leave();
    }
  }
};

struct MultiLockHold {
  TMultiLock lock{1};
  void Enter() { lock.WriteLock(); }
  void Leave() { lock.Unlock(); }
};

struct SrwHold {
  SRWLOCK lock = SRWLOCK_INIT;
  void Enter() { AcquireSRWLockExclusive(&lock); }
  void Leave() { ReleaseSRWLockExclusive(&lock); }
};

struct SystemPool : Pool {
  std::atomic<long> running{0};
  HANDLE all_done = CreateEventW(nullptr, TRUE, TRUE, nullptr);
  ~SystemPool() override { CloseHandle(all_done); }
  static void CALLBACK Run(PTP_CALLBACK_INSTANCE, void* context) {
    auto* self = static_cast<SystemPool*>(context);
    if (self->running.fetch_sub(1) == 1) SetEvent(self->all_done);
  }
  void Queue(SmartPtr<IThreadJob> job) override {
    job->Execute();  // the same allocation and call as the others pay
    if (running.fetch_add(1) == 0) ResetEvent(all_done);
    if (!TrySubmitThreadpoolCallback(&Run, this, nullptr) && running.fetch_sub(1) == 1) SetEvent(all_done);
  }
  void WaitAll() override { WaitForSingleObject(all_done, INFINITE); }
};

double Seconds() {
  LARGE_INTEGER frequency, counter;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&counter);
  return static_cast<double>(counter.QuadPart) / static_cast<double>(frequency.QuadPart);
}

// Jobs per second of one round with `producers` threads.
double Round(Pool& pool, int producers) {
  const int each = kJobsPerRound / producers;
  std::atomic<bool> go{false};
  std::vector<std::thread> threads;
  for (int p = 0; p < producers; ++p)
    threads.emplace_back([&] {
      while (!go) YieldProcessor();
      for (int i = 0; i < each; ++i) pool.Queue(new EmptyJob);
    });
  Sleep(10);
  const double start = Seconds();
  go = true;
  for (auto& t : threads) t.join();
  pool.WaitAll();
  return each * producers / (Seconds() - start);
}

double Median(std::vector<double> figures) {
  std::sort(figures.begin(), figures.end());
  return figures[figures.size() / 2];
}

// What one producer count yields: each pool's median jobs per second, and
// the medians of the round-by-round ratios qz/ml and srw/ml.
struct Figures {
  std::vector<double> medians;
  double qz_over_ml;
  double srw_over_ml;
};

// `pools` are qz, plain-ml, plain-srw and system, in that order.
Figures Measure(const std::vector<Pool*>& pools, int producers) {
  for (Pool* pool : pools) Round(*pool, producers);  // warm-up
  std::vector<std::vector<double>> rounds(pools.size());
  std::vector<double> qz_over_ml, srw_over_ml;
  for (int r = 0; r < kRounds; ++r) {
    static const size_t kOrders[2][4] = {{0, 1, 2, 3}, {1, 0, 3, 2}};
    double figure[4];
    for (size_t p : kOrders[r % 2]) figure[p] = Round(*pools[p], producers);
    for (size_t p = 0; p < pools.size(); ++p) rounds[p].push_back(figure[p]);
    qz_over_ml.push_back(figure[0] / figure[1]);
    srw_over_ml.push_back(figure[2] / figure[1]);
  }
  Figures figures;
  for (const std::vector<double>& pool_rounds : rounds) figures.medians.push_back(Median(pool_rounds));
  figures.qz_over_ml = Median(qz_over_ml);
  figures.srw_over_ml = Median(srw_over_ml);
  return figures;
}

}  // namespace

int main() {
  std::printf("jobs per second, %d empty jobs a round, %d workers, median of %d rounds (ratios: median of\n"
              "the rounds' own ratios)\n",
              kJobsPerRound, kWorkers, kRounds);
  std::printf("  %-10s %12s %12s %12s %12s %10s %10s\n", "producers", "qz", "plain-ml", "plain-srw", "system",
              "qz/ml", "srw/ml");
  bench::goals goals;
  for (int producers : {1, 2, 4}) {
    const std::vector<Pool*> pools = {new LibraryPool, new PlainPool<MultiLockHold>, new PlainPool<SrwHold>,
                                      new SystemPool};
    const Figures figures = Measure(pools, producers);
    for (Pool* pool : pools) delete pool;
    const std::vector<double>& m = figures.medians;
    std::printf("  %-10d %12.0f %12.0f %12.0f %12.0f %10.2f %10.2f\n", producers, m[0], m[1], m[2], m[3],
                figures.qz_over_ml, figures.srw_over_ml);
    goals.at_least("pool-vs-plain-" + std::to_string(producers) + "p", figures.qz_over_ml, 0.9);
    goals.within("plain-srw-over-multi-lock-" + std::to_string(producers) + "p", figures.srw_over_ml, 1.5);
  }
  goals.print();
  return 0;
}
